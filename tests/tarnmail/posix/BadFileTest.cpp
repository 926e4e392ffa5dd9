// Files that only POSIX has, and the system's own words there. Links and permissions exist on
// Windows too, but Wine makes no links, and follows no permissions when it runs as root: there
// win32/SystemErrorsTest.cpp has the words for a link to itself, and a file that another program
// holds takes the place of one that cannot be read.

#include "tarnmail/BadFileFixture.h"

#include "support/SampleMails.h"

namespace tarn::test {
namespace {

TEST_F(BadFile, Device) {
  EXPECT_EQ(failureOfAll(2, "/dev/null"), "/dev/null: is neither a file nor a pipe");
  EXPECT_EQ(failureOfAll(2, "/dev/zero"), "/dev/zero: is neither a file nor a pipe");
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

// Messages escape what is no text in a name.
TEST_F(BadFile, NameThatIsNoUtf8) {
  EXPECT_EQ(failureOfAll(2, "caf\xE9.eml"), "caf\\xe9.eml: no such file");
  EXPECT_EQ(failureOfAll(1, mail("", "caf\xE9.eml")), "caf\\xe9.eml: is empty (-7)");
}

TEST_F(BadFile, NameThatIsTooLong) {
  const std::string name(300, 'n');
  EXPECT_EQ(failureOfAll(2, name), name + ": File name too long");
}

}  // namespace
}  // namespace tarn::test
