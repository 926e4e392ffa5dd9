#include <gtest/gtest.h>

#include <string>

#include "Tarnbase/PlainKernel.h"
#include "render/HeaderLabels.h"
#include "support/LocalZone.h"

namespace tarn {
namespace {

class SentText : public ::testing::Test {
 protected:
  // The text of a time, without its terminating NUL, which has to be there.
  static std::string Format(int64_t fileTime) {
    SizedBytes text;
    EXPECT_EQ(FormatFileTime(fileTime, text), StatusOk);
    EXPECT_EQ(text.view().size(), text.text().size() + 1);
    return std::string(text.text());
  }

  test::LocalZone zone_;
};

constexpr int64_t kSecond = 10000000;
constexpr int64_t k1970 = 116444736000000000;

TEST_F(SentText, WritesDateAndTimeOfDay) {
  // 1 600 000 000 seconds after the start of 1970.
  EXPECT_EQ(Format(132444736000000000), "Sun Sep 13, 2020 12:26 PM");
}

TEST_F(SentText, DaysAndHoursHaveTwoDigits) {
  EXPECT_EQ(Format(k1970), "Thu Jan 01, 1970 12:00 AM");
  EXPECT_EQ(Format(k1970 + 3600 * kSecond), "Thu Jan 01, 1970 01:00 AM");
  EXPECT_EQ(Format(k1970 + 13 * 3600 * kSecond), "Thu Jan 01, 1970 01:00 PM");
}

TEST_F(SentText, IsTheLocalTimeOfTheMachine) {
  zone_.use("XST-5:30");
  EXPECT_EQ(Format(132444736000000000), "Sun Sep 13, 2020 05:56 PM");
  zone_.use("XST8");
  EXPECT_EQ(Format(k1970), "Wed Dec 31, 1969 04:00 PM");
}

TEST_F(SentText, FollowsDaylightSaving) {
  zone_.use("EST5EDT,M3.2.0,M11.1.0");
  EXPECT_EQ(Format(132444736000000000), "Sun Sep 13, 2020 08:26 AM");
  EXPECT_EQ(Format(k1970), "Wed Dec 31, 1969 07:00 PM");
}

// Below a second the division truncates towards zero, so that the last second before 1970 counts as
// its first.
TEST_F(SentText, FractionsOfASecondAreCutTowardsZero) {
  EXPECT_EQ(Format(k1970 + 60 * kSecond - 1), "Thu Jan 01, 1970 12:00 AM");
  EXPECT_EQ(Format(k1970 + 60 * kSecond), "Thu Jan 01, 1970 12:01 AM");
  EXPECT_EQ(Format(k1970 - 1), "Thu Jan 01, 1970 12:00 AM");
  EXPECT_EQ(Format(k1970 - kSecond + 1), "Thu Jan 01, 1970 12:00 AM");
  EXPECT_EQ(Format(k1970 - kSecond), "Wed Dec 31, 1969 11:59 PM");
}

TEST_F(SentText, TheFirstTimeOfAll) { EXPECT_EQ(Format(0), "Mon Jan 01, 1601 12:00 AM"); }

TEST_F(SentText, TimesAreSigned) { EXPECT_EQ(Format(-kSecond), "Sun Dec 31, 1600 11:59 PM"); }

TEST_F(SentText, YearsHaveAsManyDigitsAsTheyNeed) {
  constexpr int64_t kDay = 86400 * kSecond;
  constexpr int64_t kFourCenturies = 146097 * kDay;
  EXPECT_EQ(Format(21 * kFourCenturies - kSecond), "Sun Dec 31, 10000 11:59 PM");
  EXPECT_EQ(Format(-4 * kFourCenturies), "Mon Jan 01, 1 12:00 AM");
  EXPECT_EQ(Format(-4 * kFourCenturies - kSecond), "Sun Dec 31, 0 11:59 PM");
  EXPECT_EQ(Format(-4 * kFourCenturies - 366 * kDay - kSecond), "Fri Dec 31, -1 11:59 PM");
}

TEST_F(SentText, TheLargestTime) { EXPECT_EQ(Format(INT64_MAX), "Thu Sep 14, 30828 02:48 AM"); }

// INT64_MIN - 116444736000000000 wraps to 9106927300854775808, in the second of the largest time.
TEST_F(SentText, TheDifferenceWraps) { EXPECT_EQ(Format(INT64_MIN), "Thu Sep 14, 30828 02:48 AM"); }

// The words of the date do not come from the label set.
TEST_F(SentText, StaysEnglishInAGermanEnvironment) {
  PlainKernelSetLanguage(0x0407);
  EXPECT_EQ(Format(132444736000000000), "Sun Sep 13, 2020 12:26 PM");
}

TEST_F(SentText, GoesAfterTheText) {
  SizedBytes text;
  ASSERT_EQ(text.append("at "), StatusOk);
  ASSERT_EQ(FormatFileTime(k1970, text), StatusOk);
  EXPECT_EQ(text.view(), std::string("at Thu Jan 01, 1970 12:00 AM\0", 29));
}

TEST_F(SentText, WithoutMemory) {
  SizedBytes text;
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_EQ(FormatFileTime(k1970, text), StatusOutOfMemory);
  EXPECT_EQ(text.data(), nullptr);
  EXPECT_EQ(text.length(), 0u);
}

}  // namespace
}  // namespace tarn
