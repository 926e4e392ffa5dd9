// Pages are made on Linux alone.

#include "tarnmail/TarnmailFixture.h"

namespace tarn::test {
namespace {

using PagesCommandOnWindows = TarnmailTest;

TEST_F(PagesCommandOnWindows, SaysWherePagesAreMade) {
  const std::string file = Example("plain-7bit.eml");
  const std::string line = "pages are made on Linux only";
  EXPECT_EQ(failure(3, {"pages", file, "-o", "out"}), line);
  EXPECT_EQ(failure(3, {"pages", file, "--pdf", "-o", "-"}), line);
  EXPECT_EQ(failure(3, {"info", "--pages", file}), line);
  EXPECT_EQ(directory_.listing(), "");
}

}  // namespace
}  // namespace tarn::test
