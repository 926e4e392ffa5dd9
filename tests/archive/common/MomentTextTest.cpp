#include "archive/common/MomentText.h"

#include <gtest/gtest.h>

#include <utility>

#include "support/LocalZone.h"

namespace tarn::archive {
namespace {

using Seconds = std::pair<int64_t, int64_t>;

std::optional<Seconds> Parsed(std::string_view text) {
  const std::optional<Span> span = ParseSpan(text);
  return span ? std::optional(Seconds(span->first, span->last)) : std::nullopt;
}

constexpr int64_t kMay = 1714521600;  // 2024-05-01T00:00:00Z
constexpr int64_t kDay = 86400;

TEST(ParseSpan, TakesAsMuchAsIsNamed) {
  const test::LocalZone zone;
  EXPECT_EQ(Parsed("2024"), Seconds(1704067200, 1704067200 + 366 * kDay - 1));
  EXPECT_EQ(Parsed("2024-05"), Seconds(kMay, kMay + 31 * kDay - 1));
  EXPECT_EQ(Parsed("2024-12"), Seconds(1733011200, 1733011200 + 31 * kDay - 1));
  EXPECT_EQ(Parsed("2024-05-01"), Seconds(kMay, kMay + kDay - 1));
  EXPECT_EQ(Parsed("2024-02-29"), Seconds(1709164800, 1709164800 + kDay - 1));
  EXPECT_EQ(Parsed("2024-05-01T12:34"), Seconds(kMay + 45240, kMay + 45299));
  EXPECT_EQ(Parsed("2024-05-01 12:34:56"), Seconds(kMay + 45296, kMay + 45296));
  EXPECT_EQ(Parsed("1601-01-01T00:00:00"), Seconds(-11644473600, -11644473600));
}

TEST(ParseSpan, GoesByTheMachinesClockUnlessAnOffsetIsThere) {
  test::LocalZone zone;
  zone.use("IST-5:30");
  EXPECT_EQ(Parsed("2024-05-01"), Seconds(kMay - 19800, kMay - 19800 + kDay - 1));
  EXPECT_EQ(Parsed("2024-05-01T00:00Z"), Seconds(kMay, kMay + 59));
  EXPECT_EQ(Parsed("2024-05-01t00:00:00z"), Seconds(kMay, kMay));
  EXPECT_EQ(Parsed("2024-05-01T00:00+02:00"), Seconds(kMay - 7200, kMay - 7200 + 59));
  EXPECT_EQ(Parsed("2024-05-01T00:00-0330"), Seconds(kMay + 12600, kMay + 12600 + 59));
}

// 23 and 25 hours.
TEST(ParseSpan, KnowsDaysOnWhichTheClockIsChanged) {
  test::LocalZone zone;
  zone.use("EST5EDT,M3.2.0,M11.1.0");
  const std::optional<Seconds> spring = Parsed("2024-03-10");
  const std::optional<Seconds> autumn = Parsed("2024-11-03");
  ASSERT_TRUE(spring && autumn);
  EXPECT_EQ(spring->second - spring->first + 1, 23 * 3600);
  EXPECT_EQ(autumn->second - autumn->first + 1, 25 * 3600);
}

TEST(ParseSpan, RefusesAllElse) {
  for (const char* text : {"",
                           "x",
                           "24",
                           "20240501",
                           "2024-",
                           "2024-5",
                           "2024-13",
                           "2024-00",
                           "2024-02-30",
                           "2023-02-29",
                           "2024-05-01T",
                           "2024-05-01T12",
                           "2024-05-01T24:00",
                           "2024-05-01T12:60",
                           "2024-05-01T12:34:61",
                           "2024-05-01Z",
                           "2024-05-01T12:34+",
                           "2024-05-01T12:34+2",
                           "2024-05-01T12:34+24:00",
                           "2024-05-01T12:34+02:60",
                           "2024-05-01T12:34+02:00x",
                           "2024-05-01T12:34 ",
                           "2024/05/01",
                           " 2024",
                           "0000-01-01",
                           "2024-05-01T12:34:5",
                           "2024-05-01T12:34x"}) {
    EXPECT_EQ(Parsed(text), std::nullopt) << text;
  }
}

TEST(LocalMinute, IsByTheMachinesClock) {
  test::LocalZone zone;
  EXPECT_EQ(LocalMinute({kMay + 45296, 120}), "2024-05-01 12:34");
  zone.use("EST5EDT,M3.2.0,M11.1.0");
  EXPECT_EQ(LocalMinute({kMay, std::nullopt}), "2024-04-30 20:00");
  EXPECT_EQ(LocalMinute({1704067200, std::nullopt}), "2023-12-31 19:00");
}

TEST(LongDate, IsByTheSendersClockWhereItIsKnown) {
  test::LocalZone zone;
  EXPECT_EQ(LongDate({kMay + 38096, 120}), "Wed, 1 May 2024 12:34:56 +0200");
  EXPECT_EQ(LongDate({kMay, -210}), "Tue, 30 Apr 2024 20:30:00 -0330");
  EXPECT_EQ(LongDate({kMay, std::nullopt}), "Wed, 1 May 2024 00:00:00 +0000");
  zone.use("IST-5:30");
  EXPECT_EQ(LongDate({kMay, std::nullopt}), "Wed, 1 May 2024 05:30:00 +0530");
  EXPECT_EQ(LongDate({-11644473600, 0}), "Mon, 1 Jan 1601 00:00:00 +0000");
}

TEST(MomentText, HasNoYearsBeyondFourDigits) {
  const test::LocalZone zone;
  for (const int64_t seconds :
       {INT64_MIN, int64_t{-62135596801}, int64_t{253402300800}, INT64_MAX}) {
    const Moment moment{seconds, std::nullopt};
    EXPECT_EQ(LocalMinute(moment), Iso8601(moment));
    EXPECT_EQ(LongDate(moment), Iso8601(moment));
  }
}

}  // namespace
}  // namespace tarn::archive
