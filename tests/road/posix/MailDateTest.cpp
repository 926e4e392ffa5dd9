// What this system's runtime makes of local times that Windows' takes otherwise
// (win32/MailDateTest.cpp).

#include "FileFormats/Pst/MailDate.h"

#include <gtest/gtest.h>

#include "support/LocalZone.h"

namespace tarn {
namespace {

TEST(MailDateRuntime, KnowsTheYearsBeyond3000) {
  const test::LocalZone utc;
  EXPECT_EQ(ParseMailDate(u"Wed, 31 Dec 3000 23:59:59 GMT"), 32535215999);
  EXPECT_EQ(ParseMailDate(u"Fri, 2 Jan 3001 00:00:00 GMT"), 32535302400);
  EXPECT_EQ(ParseMailDate(u"Fri, 31 Dec 9999 23:59:59 GMT"), 253402300799);
}

TEST(MailDateRuntime, CountsFromDaysBefore1970) {
  const test::LocalZone utc;
  EXPECT_EQ(ParseMailDate(u"Wed, 33 Dec 1969 00:00:00 GMT"), 86400);
}

// 02:30 does not exist on that day: the clocks go from 02:00 to 03:00.
TEST(MailDateRuntime, TakesASkippedHourAsStandardTime) {
  test::LocalZone zone;
  zone.use("EST5EDT,M3.2.0,M11.1.0");
  EXPECT_EQ(ParseMailDate(u"Sun, 8 Mar 2026 02:30:00 -0500"), 1772955000);  // 07:30 UTC
}

// 01:30 comes twice on that day. Which one the runtime means depends on what it was asked before.
TEST(MailDateRuntime, TakesARepeatedHourAsEither) {
  test::LocalZone zone;
  zone.use("EST5EDT,M3.2.0,M11.1.0");
  const int64_t seconds = ParseMailDate(u"Sun, 1 Nov 2026 01:30:00 -0500");
  EXPECT_TRUE(seconds == 1793511000 || seconds == 1793514600) << seconds;  // 05:30, 06:30 UTC
}

}  // namespace
}  // namespace tarn
