#include "Platform/LocalTime.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "support/LocalZone.h"

namespace tarn::platform {
namespace {

class LocalTime : public testing::Test {
 protected:
  // Year, day of the year from 0, weekday from Sunday, and time of day.
  static std::string Show(int64_t seconds) {
    std::tm fields = {};
    if (!BreakDownLocalTime(seconds, fields)) return "none";
    const auto number = [](int value) { return std::to_string(value); };
    return number(fields.tm_year + 1900) + "-" + number(fields.tm_mon + 1) + "-" +
           number(fields.tm_mday) + " " + number(fields.tm_hour) + ":" + number(fields.tm_min) +
           ":" + number(fields.tm_sec) + ", day " + number(fields.tm_yday) + ", weekday " +
           number(fields.tm_wday);
  }

  test::LocalZone zone_;
};

TEST_F(LocalTime, BreaksAMomentDown) {
  EXPECT_EQ(Show(0), "1970-1-1 0:0:0, day 0, weekday 4");
  EXPECT_EQ(Show(1779208305), "2026-5-19 16:31:45, day 138, weekday 2");
  EXPECT_EQ(Show(951782400), "2000-2-29 0:0:0, day 59, weekday 2");
}

TEST_F(LocalTime, AgreesWithTheRuntimeBothWays) {
  for (const int64_t seconds : {int64_t{0}, int64_t{1600000000}, int64_t{4102444800}}) {
    std::tm fields = {};
    ASSERT_TRUE(BreakDownLocalTime(seconds, fields));
    EXPECT_EQ(static_cast<int64_t>(std::mktime(&fields)), seconds);
  }
}

TEST_F(LocalTime, GoesBackBefore1970) {
  EXPECT_EQ(Show(-1), "1969-12-31 23:59:59, day 364, weekday 3");
  EXPECT_EQ(Show(-11644473600), "1601-1-1 0:0:0, day 0, weekday 1");
  EXPECT_EQ(Show(-11644473601), "1600-12-31 23:59:59, day 365, weekday 0");
  EXPECT_EQ(Show(-62135596800), "1-1-1 0:0:0, day 0, weekday 1");
  EXPECT_EQ(Show(-62167219201), "-1-12-31 23:59:59, day 364, weekday 5");
}

TEST_F(LocalTime, GoesBeyondTheYear3000) {
  EXPECT_EQ(Show(32503679999), "2999-12-31 23:59:59, day 364, weekday 2");
  EXPECT_EQ(Show(32503680000), "3000-1-1 0:0:0, day 0, weekday 3");
  EXPECT_EQ(Show(253402300800), "10000-1-1 0:0:0, day 0, weekday 6");
  EXPECT_EQ(Show(910692730085), "30828-9-14 2:48:5, day 257, weekday 4");
}

TEST_F(LocalTime, FollowsTheZoneAndItsSummerTime) {
  zone_.use("EST5EDT,M3.2.0,M11.1.0");
  EXPECT_EQ(Show(1779208305), "2026-5-19 12:31:45, day 138, weekday 2");
  EXPECT_EQ(Show(1768435200), "2026-1-14 19:0:0, day 13, weekday 3");
  EXPECT_EQ(Show(0), "1969-12-31 19:0:0, day 364, weekday 3");
  zone_.use("IST-5:30");
  EXPECT_EQ(Show(1779208305), "2026-5-19 22:1:45, day 138, weekday 2");
  EXPECT_EQ(Show(-11644473600), "1601-1-1 5:30:0, day 0, weekday 1");
}

// Their years do not fit the record.
TEST_F(LocalTime, RefusesMomentsBeyondTheRuntime) {
  EXPECT_EQ(Show(INT64_MAX), "none");
  EXPECT_EQ(Show(INT64_MIN), "none");
}

}  // namespace
}  // namespace tarn::platform
