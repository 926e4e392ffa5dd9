#include <gtest/gtest.h>

#include <cstdint>

#include "Platform/LocalTime.h"

namespace tarn::platform {
namespace {

// Two days in, every time zone has reached the second or third of January.
TEST(LocalTime, BreaksAMomentDown) {
  std::tm fields = {};
  ASSERT_TRUE(BreakDownLocalTime(2 * 86400, fields));
  EXPECT_EQ(fields.tm_year, 70);
  EXPECT_EQ(fields.tm_mon, 0);
  EXPECT_GE(fields.tm_mday, 2);
  EXPECT_LE(fields.tm_mday, 3);
}

TEST(LocalTime, AgreesWithTheRuntimeBothWays) {
  for (const int64_t seconds : {int64_t{0}, int64_t{1600000000}, int64_t{4102444800}}) {
    std::tm fields = {};
    ASSERT_TRUE(BreakDownLocalTime(seconds, fields));
    EXPECT_EQ(static_cast<int64_t>(std::mktime(&fields)), seconds);
  }
}

// Their years do not fit the record.
TEST(LocalTime, RefusesMomentsBeyondTheRuntime) {
  std::tm fields = {};
  EXPECT_FALSE(BreakDownLocalTime(INT64_MAX, fields));
  EXPECT_FALSE(BreakDownLocalTime(INT64_MIN, fields));
}

}  // namespace
}  // namespace tarn::platform
