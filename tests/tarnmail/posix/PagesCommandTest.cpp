// tarnmail pages without its helpers, and places that cannot be written to.

#include <gtest/gtest.h>

#include "support/SampleMails.h"
#include "tarnmail/TarnmailFixture.h"

namespace tarn::test {
namespace {

namespace fs = std::filesystem;

class PagesCommandOnPosix : public TarnmailTest {
 protected:
  const std::string file_ = Example("plain-7bit.eml");
};

TEST_F(PagesCommandOnPosix, SaysWhatToInstallWhereTheHelpersAreMissing) {
  useFilter(FILTER_PATH);
  const std::string line =
      "the programs that make pages are not installed: install the package tarnpst-pages, or let "
      "./run pages of the sources build them";
  EXPECT_EQ(failure(3, {"pages", file_, "-o", "out"}), line);
  EXPECT_EQ(failure(3, {"pages", file_, "--pdf", "-o", "out.pdf"}), line);
  EXPECT_EQ(failure(3, {"pages", file_, "--pdf", "-o", "-"}), line);
  EXPECT_EQ(failure(3, {"pages", file_, "--no-sandbox", "-o", "out"}), line);
  EXPECT_EQ(failure(3, {"info", "--pages", file_}), line);
  EXPECT_EQ(directory_.listing(), "");
  // All else works.
  EXPECT_NE(output({"info", file_}).find("Pages:       unknown"), std::string::npos);
  EXPECT_FALSE(output({"document", file_}).empty());
}

TEST_F(PagesCommandOnPosix, RefusesPlacesThatPagesCannotGoTo) {
  directory_.write("plain", "p");
  fs::create_directory(directory_.path() / "locked");
  fs::permissions(directory_.path() / "locked", fs::perms::owner_read | fs::perms::owner_exec);
  const auto refusal = [this](const std::string& place) {
    return failure(2, {"pages", file_, "-o", place});
  };
  EXPECT_EQ(refusal("plain"), "plain: is not a folder");
  EXPECT_EQ(refusal("plain/out"), "plain/out: Not a directory");
  EXPECT_EQ(refusal("none/out"), "none/out: No such file or directory");
  EXPECT_EQ(refusal("locked"), "locked: Permission denied");
  EXPECT_EQ(refusal("locked/out"), "locked/out: Permission denied");
  EXPECT_EQ(refusal(""), "empty name of the output folder");
  EXPECT_EQ(refusal("-"), "standard output takes a PDF alone (--pdf)");
  EXPECT_EQ(directory_.listing(), "locked plain");
}

}  // namespace
}  // namespace tarn::test
