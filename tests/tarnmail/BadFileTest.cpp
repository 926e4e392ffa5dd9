// Files that are not what a command needs: one line with the name, and the right exit status.

#include <sys/stat.h>

#include "TarnmailFixture.h"
#include "support/SampleMails.h"

namespace tarn::test {
namespace {

class BadFile : public TarnmailTest {
 protected:
  // The line that all four commands give for the file.
  std::string failureOfAll(int exitStatus, const std::string& file) {
    const std::string line = failure(exitStatus, {"info", file});
    EXPECT_EQ(failure(exitStatus, {"info", "--json", file}), line);
    EXPECT_EQ(failure(exitStatus, {"document", file}), line);
    EXPECT_EQ(failure(exitStatus, {"document", "--text", "--in-memory", file, "-o", "out"}), line);
    EXPECT_EQ(failure(exitStatus, {"attachments", file}), line);
    EXPECT_EQ(failure(exitStatus, {"extract", file, "1", "-o", "out"}), line);
    EXPECT_FALSE(std::filesystem::exists(directory_.path() / "out"));
    return line;
  }
};

TEST_F(BadFile, Missing) {
  EXPECT_EQ(failureOfAll(2, "none.eml"), "none.eml: no such file");
  EXPECT_EQ(failureOfAll(2, "none/none.eml"), "none/none.eml: no such file");
  EXPECT_EQ(failureOfAll(2, ""), "empty file name");
}

TEST_F(BadFile, BelowAFile) {
  mail(kPlainMail);
  EXPECT_EQ(failureOfAll(2, "mail.eml/x"), "mail.eml/x: no such file");
}

TEST_F(BadFile, Directory) {
  std::filesystem::create_directory(directory_.path() / "folder");
  EXPECT_EQ(failureOfAll(2, "folder"), "folder: is a directory");
}

TEST_F(BadFile, Pipe) {
  ASSERT_EQ(mkfifo((directory_.path() / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(failureOfAll(2, "pipe"), "pipe: is not a regular file");
  EXPECT_EQ(failureOfAll(2, "/dev/null"), "/dev/null: is not a regular file");
}

TEST_F(BadFile, LinkToItself) {
  std::filesystem::create_symlink("loop", directory_.path() / "loop");
  EXPECT_EQ(failureOfAll(2, "loop"), "loop: Too many levels of symbolic links");
}

TEST_F(BadFile, Unreadable) {
  mail(kPlainMail);
  std::filesystem::permissions(directory_.path() / "mail.eml", std::filesystem::perms::none);
  EXPECT_EQ(failureOfAll(2, "mail.eml"), "mail.eml: Permission denied");
}

TEST_F(BadFile, NameThatIsNoUtf8) {
  mail(kPlainMail, "caf\xE9.eml");
  EXPECT_EQ(failureOfAll(2, "caf\xE9.eml"), "caf\\xe9.eml: the name is not UTF-8");
}

TEST_F(BadFile, NameThatIsTooLong) {
  const std::string name(300, 'n');
  EXPECT_EQ(failureOfAll(2, name), name + ": File name too long");
}

TEST_F(BadFile, NameWithControlCharacters) {
  EXPECT_EQ(failureOfAll(2, "two\nlines\x1b[2J"), "two\\nlines\\x1b[2J: no such file");
}

TEST_F(BadFile, FewerThanTwelveBytes) {
  for (const char* bytes : {"", "F", "!BDN1234567", "From: a@b.c"}) {
    EXPECT_EQ(failureOfAll(1, mail(bytes)),
              "mail.eml: shorter than 12 bytes, or a read came short (-7)");
  }
}

TEST_F(BadFile, NoMail) {
  EXPECT_EQ(failureOfAll(1, mail("Hello, world", "note.txt")),
            "note.txt: not a mail file the filter takes, or one without a body it can show (-9)");
  EXPECT_EQ(failureOfAll(1, mail(std::string(100, '\0'), "zeros")),
            "zeros: not a mail file the filter takes, or one without a body it can show (-9)");
}

}  // namespace
}  // namespace tarn::test
