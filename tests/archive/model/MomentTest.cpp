#include "archive/model/Moment.h"

#include <gtest/gtest.h>

namespace tarn::archive {
namespace {

constexpr uint64_t kTicksInASecond = 10000000;

TEST(MomentTest, TakesFileTimes) {
  // 2024-05-01T10:34:56Z, and 0.9 seconds that are dropped.
  const uint64_t time = (1714559696u + 11644473600u) * kTicksInASecond + 9000000;
  const std::optional<Moment> moment = MomentOfFileTime(time);
  ASSERT_TRUE(moment.has_value());
  EXPECT_EQ(moment->seconds, 1714559696);
  EXPECT_EQ(moment->offsetMinutes, std::nullopt);
  EXPECT_EQ(Iso8601(*moment), "2024-05-01T10:34:56Z");
}

TEST(MomentTest, TakesTimesBefore1970) {
  const std::optional<Moment> moment = MomentOfFileTime(1);
  ASSERT_TRUE(moment.has_value());
  EXPECT_EQ(Iso8601(*moment), "1601-01-01T00:00:00Z");
}

TEST(MomentTest, HasNoMomentForFileTimesThatMeanNone) {
  EXPECT_EQ(MomentOfFileTime(0), std::nullopt);
  EXPECT_EQ(MomentOfFileTime(UINT64_MAX), std::nullopt);
  // The value that stands for no date in tasks: 1.1.4501 is a date like any other.
  EXPECT_TRUE(MomentOfFileTime(0x0CB34557A3DD4000).has_value());
}

TEST(MomentTest, KeepsYearsAtFourDigits) {
  EXPECT_EQ(Iso8601({INT64_MAX, {}}), "9999-12-31T23:59:59Z");
  EXPECT_EQ(Iso8601({INT64_MIN, {}}), "0000-01-01T00:00:00Z");
  EXPECT_EQ(ShortDate({INT64_MAX - 60, 1}), "9999-12-31 23:59");
}

TEST(MomentTest, ShowsTheSendersOwnClock) {
  const Moment inBerlin{1714559696, 120};
  EXPECT_EQ(Iso8601(inBerlin), "2024-05-01T10:34:56Z");
  EXPECT_EQ(ShortDate(inBerlin), "2024-05-01 12:34");
  EXPECT_EQ(ShortDate({1714559696, -600}), "2024-05-01 00:34");
  EXPECT_EQ(ShortDate({1714559696, std::nullopt}), "2024-05-01 10:34");
}

TEST(MomentTest, KeepsTheOffsetBesideTheSendersOwnClock) {
  EXPECT_EQ(Iso8601WithOffset({1714559696, 120}), "2024-05-01T12:34:56+02:00");
  EXPECT_EQ(Iso8601WithOffset({1714559696, -210}), "2024-05-01T07:04:56-03:30");
  EXPECT_EQ(Iso8601WithOffset({1714559696, std::nullopt}), "2024-05-01T10:34:56Z");
  // "-00:00" would be a clock that nobody knows (RFC 3339, section 4.3).
  EXPECT_EQ(Iso8601WithOffset({1714559696, 0}), "2024-05-01T10:34:56+00:00");
}

}  // namespace
}  // namespace tarn::archive
