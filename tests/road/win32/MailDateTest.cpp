// What Windows' runtime makes of local times that other runtimes take otherwise
// (posix/MailDateTest.cpp).

#include "FileFormats/Pst/MailDate.h"

#include <gtest/gtest.h>

#include "support/LocalZone.h"

namespace tarn {
namespace {

// Its last moment is the end of the year 3000; what it refuses is no date.
TEST(MailDateRuntime, RefusesTheYearsBeyond3000) {
  const test::LocalZone utc;
  EXPECT_EQ(ParseMailDate(u"Wed, 31 Dec 3000 23:59:59 GMT"), 32535215999);
  EXPECT_EQ(ParseMailDate(u"Fri, 2 Jan 3001 00:00:00 GMT"), 0);
  EXPECT_EQ(ParseMailDate(u"Fri, 31 Dec 9999 23:59:59 GMT"), 0);
}

// 02:30 does not exist on that day: the clocks go from 02:00 to 03:00.
TEST(MailDateRuntime, TakesASkippedHourAsSummerTime) {
  test::LocalZone zone;
  zone.use("EST5EDT,M3.2.0,M11.1.0");
  EXPECT_EQ(ParseMailDate(u"Sun, 8 Mar 2026 02:30:00 -0500"), 1772951400);  // 06:30 UTC
}

// 01:30 comes twice on that day.
TEST(MailDateRuntime, TakesARepeatedHourAsStandardTime) {
  test::LocalZone zone;
  zone.use("EST5EDT,M3.2.0,M11.1.0");
  EXPECT_EQ(ParseMailDate(u"Sun, 1 Nov 2026 01:30:00 -0500"), 1793514600);  // 06:30 UTC
}

}  // namespace
}  // namespace tarn
