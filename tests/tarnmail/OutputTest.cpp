// Where the bytes go: whole to their place, or nowhere.

#include "ExampleDocuments.h"
#include "OutputFixture.h"
#include "support/SampleMails.h"

namespace tarn::test {
namespace {

namespace fs = std::filesystem;

TEST_F(Output, ReportsAStandardOutputThatIsClosedOrBroken) {
  for (const auto& arguments : allCommands()) {
    EXPECT_EQ(failure(1, arguments, StandardOutput::Closed),
              "standard output: Bad file descriptor");
    EXPECT_EQ(failure(1, arguments, StandardOutput::BrokenPipe), "standard output: Broken pipe");
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

TEST_F(Output, TakesADashForStandardOutput) {
  EXPECT_EQ(output({"extract", file_, "2", "-o", "-"}), kRooms);
  EXPECT_EQ(output({"document", "-o", "-", Example("plain-7bit.eml")}), kSevenBitDocument + '\0');
  EXPECT_EQ(directory_.listing(), "");
}

TEST_F(Output, ReplacesAFileWhole) {
  directory_.write("out", std::string(10000, 'x'));
  output({"extract", file_, "2", "-o", "out"});
  EXPECT_EQ(ReadWholeFile(directory_.path() / "out"), kRooms);
  EXPECT_EQ(directory_.listing(), "out");
}

TEST_F(Output, RefusesPlacesThatCannotBeWrittenTo) {
  fs::create_directory(directory_.path() / "folder");
  EXPECT_EQ(extractTo(2, "folder"), "folder: is a directory");
  EXPECT_EQ(extractTo(2, "folder/"), "folder/: is a directory");
  EXPECT_EQ(extractTo(2, "none/out"), "none/out: No such file or directory");
  EXPECT_EQ(extractTo(2, "new/"), "new/: No such file or directory");
  EXPECT_EQ(extractTo(2, ""), "empty name of the output file");
  EXPECT_EQ(directory_.listing(), "folder");
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
