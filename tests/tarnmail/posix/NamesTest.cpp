// Names and directories as only POSIX has them. On Windows links need a right, and Wine makes none:
// win32/NamesTest.cpp has hard links in their place. What forbids to write into a directory there
// is its access list alone, which Wine as root does not follow.

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "support/SampleMails.h"
#include "tarnmail/TarnmailFixture.h"

namespace tarn::test {
namespace {

using Names = TarnmailTest;
namespace fs = std::filesystem;

TEST_F(Names, MayHaveQuotesAndLineEnds) {
  const std::string file = mail(kPlainMail, "a \"quoted\"\nn\u00E4me.eml");
  EXPECT_EQ(nlohmann::json::parse(output({"info", file, "--json"}))["file"], file);
}

TEST_F(Names, MayHaveABackslash) {
  EXPECT_EQ(output({"document", mail(kPlainMail, "to\\bob.eml")}), kPlainMailDocument + '\0');
}

TEST_F(Names, MayBeLinks) {
  mail(kPlainMail);
  fs::create_symlink("mail.eml", directory_.path() / "link");
  EXPECT_EQ(output({"document", "link"}), kPlainMailDocument + '\0');
}

TEST_F(Names, OfADirectoryThatCannotBeWrittenTo) {
  fs::create_directory(directory_.path() / "sealed");
  fs::permissions(directory_.path() / "sealed", fs::perms::owner_read | fs::perms::owner_exec);
  const std::string file = Example("html-inline-image.eml");
  EXPECT_EQ(failure(1, {"document", "--temp", "sealed", file}),
            file + ": a temporary file or directory could not be made (-1490)");
}

}  // namespace
}  // namespace tarn::test
