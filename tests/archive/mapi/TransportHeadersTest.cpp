#include "archive/mapi/TransportHeaders.h"

#include <gtest/gtest.h>

namespace tarn::archive::mapi {
namespace {

TEST(HeaderFieldTest, FindsTheFirstOfAName) {
  const std::string headers =
      "Received: from a\r\n by b\r\nDATE : Wed, 1 May 2024\r\n\t12:34:56 +0200  \r\n"
      "Date: never\r\nX-Date: no\r\n";
  EXPECT_EQ(HeaderField(headers, "Date"), "Wed, 1 May 2024 12:34:56 +0200");
  EXPECT_EQ(HeaderField(headers, "received"), "from a by b");
  EXPECT_EQ(HeaderField(headers, "Subject"), "");
  EXPECT_EQ(HeaderField("", "Date"), "");
  EXPECT_EQ(HeaderField(" Date: x\nFrom: y", "Date"), "");
  EXPECT_EQ(HeaderField(" Date: x\nFrom: y", "From"), "y");
}

TEST(HeaderFieldTest, TakesNothingOfTheText) {
  const std::string mail = "\r\nSubject: x\r\n\r\nDate: never\r\n";
  EXPECT_EQ(HeaderField(mail, "Subject"), "x");
  EXPECT_EQ(HeaderField(mail, "Date"), "");
}

constexpr int64_t kMoment = 1714559696;  // 2024-05-01T10:34:56Z

void ExpectDate(const char* date, int64_t seconds, std::optional<int32_t> offset) {
  const std::optional<Moment> moment = ParseMailDate(date);
  ASSERT_TRUE(moment.has_value()) << date;
  EXPECT_EQ(moment->seconds, seconds) << date;
  EXPECT_EQ(moment->offsetMinutes, offset) << date;
}

TEST(ParseMailDateTest, ReadsTheUsualForm) {
  ExpectDate("Wed, 1 May 2024 12:34:56 +0200", kMoment, 120);
  ExpectDate("1 May 2024 12:34:56 +0200 (CEST)", kMoment, 120);
  ExpectDate("Wed, 01 May 2024 05:04:56 -0530", kMoment, -330);
  ExpectDate("Wednesday, 1 May 2024 10:34:56 +0000", kMoment, 0);
}

TEST(ParseMailDateTest, ReadsObsoleteForms) {
  ExpectDate("Wed, 1 May 24 10:34:56 GMT", kMoment, 0);
  ExpectDate("Wed, 1 May 124 10:34:56 UT", kMoment, 0);
  ExpectDate("Wed, 1-May-2024 06:34:56 EDT", kMoment, -240);
  ExpectDate("Wed, 1 (the first) May 2024 10:34 Z", kMoment - 56, 0);
  ExpectDate("Sat, 31 Dec 99 23:59:59 GMT", 946684799, 0);
}

TEST(ParseMailDateTest, KnowsWhereTheOffsetIsUnknown) {
  ExpectDate("Wed, 1 May 2024 10:34:56 -0000", kMoment, std::nullopt);
  ExpectDate("Wed, 1 May 2024 10:34:56", kMoment, std::nullopt);
  ExpectDate("Wed, 1 May 2024 10:34:56 CET", kMoment, std::nullopt);
  ExpectDate("Wed, 1 May 2024 10:34:56 +9999", kMoment, std::nullopt);
}

TEST(ParseMailDateTest, RefusesWhatIsNoDate) {
  for (const char* date :
       {"", "yesterday", "1 May 2024", "32 May 2024 10:34:56 GMT", "30 Feb 2024 10:34:56 GMT",
        "1 Foo 2024 10:34:56 GMT", "1 May 2024 24:00:00 GMT", "1 May 2024 10:60 GMT",
        "1 May 20245 10:34 GMT", "((((", "1 May 2024 x:y GMT"}) {
    EXPECT_EQ(ParseMailDate(date), std::nullopt) << date;
  }
}

TEST(AddressOfFieldTest, TakesAddresses) {
  EXPECT_EQ(AddressOfField("Ann <ann@example.com>"), "ann@example.com");
  EXPECT_EQ(AddressOfField("\"a <b>\" < ann@example.com >"), "ann@example.com");
  EXPECT_EQ(AddressOfField("ann@example.com"), "ann@example.com");
  EXPECT_EQ(AddressOfField("Ann"), "");
  EXPECT_EQ(AddressOfField("ann@example.com, bob@example.com"), "");
  EXPECT_EQ(AddressOfField("Ann <ann"), "");
  EXPECT_EQ(AddressOfField(""), "");
}

}  // namespace
}  // namespace tarn::archive::mapi
