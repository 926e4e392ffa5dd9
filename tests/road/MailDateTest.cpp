#include "FileFormats/Pst/MailDate.h"

#include <gtest/gtest.h>

#include <string>

#include "Common/ApiUtils.h"
#include "Tarnbase/PlainKernel.h"
#include "support/LocalZone.h"

namespace tarn {
namespace {

class MailDate : public ::testing::Test {
 protected:
  test::LocalZone zone_;
};

TEST_F(MailDate, ReadsTheUsualForm) {
  EXPECT_EQ(ParseMailDate(u"Sat, 21 Nov 2026 10:00:00 +0000"), 1795255200);
  EXPECT_EQ(ParseMailDate(u"Sat, 21 Nov 2026 10:00:00 GMT"), 1795255200);
  EXPECT_EQ(ParseMailDate(u"  Sat,   21  nOV  2026  10:00:00  whatever-this-is"), 1795255200);
  EXPECT_EQ(ParseMailDate(u"Thu, 1 Jan 1970 00:00:01 GMT"), 1);
}

TEST_F(MailDate, KnowsAllMonths) {
  const char16_t* const months[] = {u"Jan", u"Feb", u"Mar", u"Apr", u"May", u"Jun",
                                    u"Jul", u"Aug", u"Sep", u"Oct", u"Nov", u"Dec"};
  const int64_t days[] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
  for (int i = 0; i < 12; ++i) {
    const std::u16string text = std::u16string(u"Mon, 2 ") + months[i] + u" 1970 00:00:00 GMT";
    EXPECT_EQ(ParseMailDate(text.c_str()), (days[i] + 1) * 86400) << i;
  }
}

TEST_F(MailDate, AppliesNoZone) {
  EXPECT_EQ(ParseMailDate(u"Sat, 21 Nov 2026 10:00:00 +0900"), 1795255200);
  zone_.use("AAA-2");  // two hours east
  EXPECT_EQ(ParseMailDate(u"Sat, 21 Nov 2026 10:00:00 GMT"), 1795255200 - 7200);
}

TEST_F(MailDate, LetsTheRuntimeDecideOnDaylightSaving) {
  zone_.use("EST5EDT,M3.2.0,M11.1.0");
  EXPECT_EQ(ParseMailDate(u"Wed, 1 Jul 2026 12:00:00 +0200"), 1782921600);  // 16:00 UTC
  EXPECT_EQ(ParseMailDate(u"Thu, 1 Jan 2026 12:00:00 +0100"), 1767286800);  // 17:00 UTC
}

TEST_F(MailDate, LeavesFieldsOutOfRangeToTheRuntime) {
  EXPECT_EQ(ParseMailDate(u"Mon, 32 Jan 1970 25:61:61 GMT"), 31 * 86400 + 25 * 3600 + 61 * 60 + 61);
}

TEST_F(MailDate, GivesZeroForAnythingElse) {
  EXPECT_EQ(ParseMailDate(nullptr), 0);
  EXPECT_EQ(ParseMailDate(u""), 0);
  EXPECT_EQ(ParseMailDate(u"21 Nov 2026 10:00:00 GMT"), 0);       // no weekday
  EXPECT_EQ(ParseMailDate(u"Sat, 21 Nov 2026 10:00:00"), 0);      // no zone
  EXPECT_EQ(ParseMailDate(u"Sat, 21 Nov 2026 10:00 GMT"), 0);     // no seconds
  EXPECT_EQ(ParseMailDate(u"Sat, 21 Foo 2026 10:00:00 GMT"), 0);  // no month
  EXPECT_EQ(ParseMailDate(u"Sat, 21 Nove 2026 10:00:00 GMT"), 0);
  EXPECT_EQ(ParseMailDate(u"Sat, 21 No 2026 10:00:00 GMT"), 0);
  EXPECT_EQ(ParseMailDate(u"Wed, 31 Dec 1969 23:59:58 GMT"), 0);  // negative
  EXPECT_EQ(ParseMailDate(u"Sat, x Nov 2026 10:00:00 GMT"), 0);
}

TEST_F(MailDate, ReadsNumbersAsTheyMayBeWritten) {
  EXPECT_EQ(ParseMailDate(u"Sat, +21 Nov +2026 +10:+0:+0 GMT"), 1795255200);
  EXPECT_EQ(ParseMailDate(u"Sat, 00000000000021 Nov 2026 010:000:000 GMT"), 1795255200);
  EXPECT_EQ(ParseMailDate(u"Sat,\t21\nNov\v2026\f10:\r00: 00 GMT"), 1795255200);
  EXPECT_EQ(ParseMailDate(u"Sat, 21Nov2026 10:00:00GMT"), 1795255200);
  EXPECT_EQ(ParseMailDate(u"Sun, 22 Nov 2026 -14:00:00 GMT"), 1795255200);
  for (const char16_t* text :
       {u"Sat, +-21 Nov 2026 10:00:00 GMT", u"Sat, -+21 Nov 2026 10:00:00 GMT",
        u"Sat, + 21 Nov 2026 10:00:00 GMT", u"Sat, 21 Nov 2026 10 :00:00 GMT",
        u"Sat, 21 Nov 2026 10:00 :00 GMT", u"Sat, 0x15 Nov 2026 10:00:00 GMT",
        u"Sat, 21 Nov 2026 10:00:00 ", u"Sat, 21 Nov 2026 10:00: GMT", u"Sat, 21 Nov", u"Sat,"}) {
    EXPECT_EQ(ParseMailDate(text), 0) << std::string(text, text + WideLength(text));
  }
}

// The most that a field holds is read; one more is no number, however much that is.
TEST_F(MailDate, TakesNoNumberBeyondItsField) {
  EXPECT_EQ(ParseMailDate(u"Thu, 1 Jan 1970 00:00:2147483647 GMT"), 2147483647);
  EXPECT_EQ(ParseMailDate(u"Sun, 19 Jan 2106 00:00:-2147483648 GMT"), 4293302400 - 2147483648);
  for (const char16_t* number :
       {u"2147483648", u"-2147483649", u"4294967297", u"9223372036854775807",
        u"9223372036854775808", u"18446744073709551617", u"99999999999999999999999999"}) {
    const std::u16string text(number);
    EXPECT_EQ(ParseMailDate((u"Thu, " + text + u" Jan 1970 00:00:01 GMT").c_str()), 0);
    EXPECT_EQ(ParseMailDate((u"Thu, 2 Jan " + text + u" 00:00:01 GMT").c_str()), 0);
    EXPECT_EQ(ParseMailDate((u"Thu, 2 Jan 1970 " + text + u":00:01 GMT").c_str()), 0);
    EXPECT_EQ(ParseMailDate((u"Thu, 2 Jan 1970 00:" + text + u":01 GMT").c_str()), 0);
    EXPECT_EQ(ParseMailDate((u"Thu, 2 Jan 1970 00:00:" + text + u" GMT").c_str()), 0);
  }
}

TEST_F(MailDate, IsEmptyWhenTheTextCannotBeConverted) {
  PlainKernelFailAt(PlainKernelFaultText, 1);
  EXPECT_EQ(ParseMailDate(u"Sat, 21 Nov 2026 10:00:00 GMT"), 0);
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_EQ(ParseMailDate(u"Sat, 21 Nov 2026 10:00:00 GMT"), 0);
}

TEST(ParseDecimal, ReadsTheDigitsAtTheStart) {
  EXPECT_EQ(ParseDecimal(u""), 0u);
  EXPECT_EQ(ParseDecimal(u"x1"), 0u);
  EXPECT_EQ(ParseDecimal(u"1234567890x"), 1234567890u);
  EXPECT_EQ(ParseDecimal(u"18446744073709551615"), 18446744073709551615u);
}

}  // namespace
}  // namespace tarn
