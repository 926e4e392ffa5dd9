// Files that are not what a command needs: one line with the name, and the right exit status.

#include "BadFileFixture.h"
#include "support/SampleMails.h"

namespace tarn::test {
namespace {

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

TEST_F(BadFile, NameWithControlCharacters) {
  EXPECT_EQ(failureOfAll(2, "two\nlines\x1b[2J"), "two\\nlines\\x1b[2J: no such file");
}

TEST_F(BadFile, FewerThanTwelveBytes) {
  EXPECT_EQ(failureOfAll(1, mail("")), "mail.eml: is empty (-7)");
  for (const char* bytes : {"F", "!BDN1234567", "From: a@b.c"}) {
    EXPECT_EQ(failureOfAll(1, mail(bytes)),
              "mail.eml: is too short: no mail file has fewer than 12 bytes (-7)");
  }
}

TEST_F(BadFile, NoMail) {
  EXPECT_EQ(failureOfAll(1, mail("Hello, world", "note.txt")),
            "note.txt: not a mail file: no From, Date, To, Cc or Bcc line in its header (-9)");
  EXPECT_EQ(failureOfAll(1, mail(std::string(100, '\0'), "zeros")),
            "zeros: not a mail file: no From, Date, To, Cc or Bcc line in its header (-9)");
}

}  // namespace
}  // namespace tarn::test
