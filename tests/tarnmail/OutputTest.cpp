// Where the bytes go: whole to their place, or nowhere.

#include <sys/stat.h>

#include "ExampleDocuments.h"
#include "TarnmailFixture.h"
#include "support/SampleMails.h"

namespace tarn::test {
namespace {

namespace fs = std::filesystem;

class Output : public TarnmailTest {
 protected:
  const std::string file_ = Example("nested-attachments.eml");

  std::string extractTo(int exitStatus, const std::string& place) {
    return failure(exitStatus, {"extract", file_, "2", "-o", place});
  }
};

TEST_F(Output, ReportsAStandardOutputThatTakesNothing) {
  for (const auto& arguments : std::vector<std::vector<std::string>>{{"info", file_},
                                                                     {"document", file_},
                                                                     {"attachments", file_},
                                                                     {"extract", file_, "1"},
                                                                     {"--help"},
                                                                     {"--version"}}) {
    EXPECT_EQ(failure(1, arguments, StandardOutput::Closed),
              "standard output: Bad file descriptor");
    EXPECT_EQ(failure(1, arguments, StandardOutput::BrokenPipe), "standard output: Broken pipe");
    EXPECT_EQ(failure(1, arguments, StandardOutput::FullDevice),
              "standard output: No space left on device");
  }
}

TEST_F(Output, ReportsADocumentThatIsLargerThanAnyBuffer) {
  const std::string large = mail(kSampleFields + "\r\n" + std::string(1000000, 'x'));
  EXPECT_EQ(output({"document", large}).size(), 1000000 + kSampleTextBlock.size() + 1);
  EXPECT_EQ(failure(1, {"document", large}, StandardOutput::BrokenPipe),
            "standard output: Broken pipe");
}

TEST_F(Output, NeedsNoStandardOutputForAFile) {
  EXPECT_EQ(run({"extract", file_, "2", "-o", "out"}, StandardOutput::Closed).exitStatus, 0);
  EXPECT_EQ(ReadWholeFile(directory_.path() / "out"), kRooms);
}

TEST_F(Output, ReplacesAFileWhole) {
  directory_.write("out", std::string(10000, 'x'));
  output({"extract", file_, "2", "-o", "out"});
  EXPECT_EQ(ReadWholeFile(directory_.path() / "out"), kRooms);
  EXPECT_EQ(directory_.listing(), "out");
}

TEST_F(Output, ReplacesTheFileThatALinkNames) {
  fs::create_directory(directory_.path() / "sub");
  directory_.write("sub/out", "old");
  fs::create_symlink("sub/out", directory_.path() / "link");
  output({"extract", file_, "2", "-o", "link"});
  EXPECT_TRUE(fs::is_symlink(directory_.path() / "link"));
  EXPECT_EQ(ReadWholeFile(directory_.path() / "sub/out"), kRooms);
  EXPECT_EQ(directory_.listing(), "link sub sub/out");
}

TEST_F(Output, WritesToADevice) {
  output({"extract", file_, "2", "-o", "/dev/null"});
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
  EXPECT_EQ(extractTo(1, "/dev/full"), "/dev/full: No space left on device");
}

TEST_F(Output, RefusesPlacesThatCannotBeWrittenTo) {
  fs::create_directory(directory_.path() / "folder");
  directory_.write("plain", "p");
  EXPECT_EQ(extractTo(2, "folder"), "folder: is a directory");
  EXPECT_EQ(extractTo(2, "none/out"), "none/out: No such file or directory");
  EXPECT_EQ(extractTo(2, "plain/out"), "plain/out: Not a directory");
  EXPECT_EQ(extractTo(2, "new/"), "new/: No such file or directory");
  EXPECT_EQ(extractTo(2, ""), "empty name of the output file");
  EXPECT_EQ(extractTo(2, std::string(300, 'n')), std::string(300, 'n') + ": File name too long");
  fs::permissions(directory_.path() / "folder", fs::perms::owner_read | fs::perms::owner_exec);
  EXPECT_EQ(extractTo(2, "folder/out"), "folder/out: Permission denied");
  EXPECT_EQ(directory_.listing(), "folder plain");
}

TEST_F(Output, DoesNotOverwriteTheMail) {
  const std::string name = mail(kPlainMail);
  EXPECT_EQ(failure(2, {"document", name, "-o", "./mail.eml"}),
            "./mail.eml: is the mail file itself");
  EXPECT_EQ(ReadWholeFile(directory_.path() / "mail.eml"), kPlainMail);
}

TEST_F(Output, LeavesAnOldFileAloneWhenTheFilterRefuses) {
  directory_.write("out", "old");
  failure(1, {"document", mail("Hello, world"), "-o", "out"});
  failure(1, {"extract", file_, "9", "-o", "out"});
  EXPECT_EQ(ReadWholeFile(directory_.path() / "out"), "old");
}

}  // namespace
}  // namespace tarn::test
