// Dates of mails as ISO 8601.

#include "tarnmail/pages/MailDates.h"

#include <gtest/gtest.h>

namespace tarn::host {
namespace {

TEST(IsoFromMailDate, KeepsTheZone) {
  EXPECT_EQ(IsoFromMailDate("Sat, 21 Nov 2026 10:00:00 +0100"), "2026-11-21T10:00:00+01:00");
  EXPECT_EQ(IsoFromMailDate("Sat, 21 Nov 2026 10:00:00 -0330"), "2026-11-21T10:00:00-03:30");
  EXPECT_EQ(IsoFromMailDate("Sat, 21 Nov 2026 10:00:00 GMT"), "2026-11-21T10:00:00+00:00");
  EXPECT_EQ(IsoFromMailDate("Sat, 21 Nov 2026 10:00:00 EST"), "2026-11-21T10:00:00-05:00");
  EXPECT_EQ(IsoFromMailDate("Sat, 21 Nov 2026 10:00:00 pdt"), "2026-11-21T10:00:00-07:00");
  EXPECT_EQ(IsoFromMailDate("Sat, 21 Nov 2026 10:00:00"), "2026-11-21T10:00:00+00:00");
  EXPECT_EQ(IsoFromMailDate("Sat, 21 Nov 2026 10:00:00 +9900"), "2026-11-21T10:00:00+00:00");
  EXPECT_EQ(IsoFromMailDate("Sat, 21 Nov 2026 10:00:00 K"), "2026-11-21T10:00:00+00:00");
}

TEST(IsoFromMailDate, TakesWhatMailsHave) {
  EXPECT_EQ(IsoFromMailDate("1 Jan 2000 00:00 +0000"), "2000-01-01T00:00:00+00:00");
  EXPECT_EQ(IsoFromMailDate(" Mon,  6 Apr 2026 18:05:00 +0900 (JST)"), "2026-04-06T18:05:00+09:00");
  EXPECT_EQ(IsoFromMailDate("(a (b) c) 6 April 26 8:05:00 +0000"), "2026-04-06T08:05:00+00:00");
  EXPECT_EQ(IsoFromMailDate("Tue, 7 Sep 99 1:02:03 +0000"), "1999-09-07T01:02:03+00:00");
  EXPECT_EQ(IsoFromMailDate("Tue, 7 Sep 102 1:02:03 +0000"), "2002-09-07T01:02:03+00:00");
  EXPECT_EQ(IsoFromMailDate("Sat, 31 Dec 2016 23:59:60 +0000"), "2016-12-31T23:59:59+00:00");
  EXPECT_EQ(IsoFromMailDate("29 Feb 2024 12:00:00 +0000"), "2024-02-29T12:00:00+00:00");
}

TEST(IsoFromMailDate, IsEmptyForWhatIsNoDate) {
  for (const char* text :
       {"", "yesterday", "Sat, 21 Nov 2026", "21 Nov 2026 10", "32 Jan 2026 10:00:00 +0000",
        "29 Feb 2023 10:00:00 +0000", "0 Jan 2026 10:00:00 +0000", "1 Foo 2026 10:00:00 +0000",
        "1 Jan 2026 24:00:00 +0000", "1 Jan 2026 10:60:00 +0000", "1 Jan 2026 10:00:61 +0000",
        "1 Jan 20266 10:00:00 +0000", "1 Jan -200 10:00:00 +0000", "((((1 Jan 2026 10:00:00 +0000",
        "2026-11-21T10:00:00Z"}) {
    EXPECT_EQ(IsoFromMailDate(text), "") << text;
  }
}

TEST(IsoFromFileTime, IsInUtc) {
  EXPECT_EQ(IsoFromFileTime(116444736000000000), "1970-01-01T00:00:00+00:00");
  EXPECT_EQ(IsoFromFileTime(134081928009999999), "2025-11-21T10:00:00+00:00");
  EXPECT_EQ(IsoFromFileTime(0), "1601-01-01T00:00:00+00:00");
  EXPECT_EQ(IsoFromFileTime(INT64_MAX), "");
  EXPECT_EQ(IsoFromFileTime(INT64_MIN), "");
}

}  // namespace
}  // namespace tarn::host
