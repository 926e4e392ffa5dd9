// Files that only Windows has, and names that are none there.

#include "tarnmail/BadFileFixture.h"

#include "support/SampleMails.h"
#include "tarnmail/win32/LockedFile.h"

namespace tarn::test {
namespace {

TEST_F(BadFile, Device) {
  EXPECT_EQ(failureOfAll(2, "NUL"), "NUL: is neither a file nor a pipe");
  EXPECT_EQ(failureOfAll(2, "nul"), "nul: is neither a file nor a pipe");
  EXPECT_EQ(failureOfAll(2, "\\\\.\\NUL"), "\\\\.\\NUL: is neither a file nor a pipe");
  EXPECT_EQ(failureOfAll(2, "CON"), "CON: is neither a file nor a pipe");
}

TEST_F(BadFile, OpenInAnotherProgram) {
  mail(kPlainMail);
  const LockedFile lock(directory_.path() / "mail.eml");
  EXPECT_EQ(failureOfAll(2, "mail.eml"), "mail.eml: in use by another program");
}

// A name that no file can have is that of no file.
TEST_F(BadFile, NameThatIsNone) {
  EXPECT_EQ(failureOfAll(2, "what?.eml"), "what?.eml: no such file");
  EXPECT_EQ(failureOfAll(2, "<>|*\".eml"), "<>|*\".eml: no such file");
  EXPECT_EQ(failureOfAll(2, "Q:\\none\\mail.eml"), "Q:\\none\\mail.eml: no such file");
  const std::string name(300, 'n');
  EXPECT_EQ(failureOfAll(2, name), name + ": no such file");
}

// In these bytes the test's own way of starting a program hands over a lone surrogate.
TEST_F(BadFile, NameThatIsNoUtf16) {
  EXPECT_EQ(failureOfAll(2, "caf\xED\xA0\x80.eml"),
            "caf\uFFFD.eml: the argument is not UTF-16 text");
  EXPECT_EQ(failureOfAll(2, "\xED\xB0\x80"), "\uFFFD: the argument is not UTF-16 text");
  EXPECT_EQ(failureOfAll(2, "\xED\xB0\x80\xED\xA0\x80"),
            "\uFFFD\uFFFD: the argument is not UTF-16 text");
}

// The system's text has a place for the name.
TEST_F(BadFile, FilterThatIsNoLibrary) {
  useFilter(directory_.write("no-library", "MZ"));
  const std::string line = failure(3, {"info", mail(kPlainMail)});
  const std::string front = FILTER_FILE_NAME ": cannot be loaded: ";
  ASSERT_TRUE(line.starts_with(front)) << line;
  EXPECT_NE(line.find(FILTER_FILE_NAME, front.size()), std::string::npos) << line;
}

}  // namespace
}  // namespace tarn::test
