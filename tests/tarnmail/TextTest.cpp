// Text for terminals, JSON and the filter; numbers of the command line.

#include "console/Text.h"

#include <gtest/gtest.h>

#include "support/LocalZone.h"

namespace tarn::host {
namespace {

using namespace std::literals;

TEST(Utf8FromWide, MakesValidUtf8OfAnything) {
  EXPECT_EQ(Utf8FromWide(u""), "");
  EXPECT_EQ(Utf8FromWide(u"a\u00E9\u20AC\U0001F600"), "a\u00E9\u20AC\U0001F600");
  EXPECT_EQ(Utf8FromWide(std::u16string(1, char16_t{0xD800})), "\xEF\xBF\xBD");
  EXPECT_EQ(Utf8FromWide(u"a\0b"sv), "a\0b"sv);
}

TEST(WideFromUtf8, RefusesWhatNoPathCanBe) {
  EXPECT_EQ(WideFromUtf8(""), u""s);
  EXPECT_EQ(WideFromUtf8("a\u20AC\U0001F600"), u"a\u20AC\U0001F600"s);
  EXPECT_EQ(WideFromUtf8("caf\xE9"), std::nullopt);
  EXPECT_EQ(WideFromUtf8("a\0b"sv), std::nullopt);
}

TEST(Printable, KeepsOrdinaryText) {
  EXPECT_EQ(Printable(""), "");
  EXPECT_EQ(Printable("a b~\\x1b \u00E9\u20AC\u4F1A\U0001F600"),
            "a b~\\x1b \u00E9\u20AC\u4F1A\U0001F600");
}

TEST(Printable, EscapesControlCharacters) {
  EXPECT_EQ(Printable("\0\x01\x1b\x1f\x7f\r"sv), "\\x00\\x01\\x1b\\x1f\\x7f\\x0d");
  EXPECT_EQ(Printable("a\tb\nc"), "a\\tb\\nc");
  EXPECT_EQ(Printable("\u0080\u009B\u009F\u00A0"), "\\u0080\\u009b\\u009f\u00A0");
}

TEST(Printable, EscapesLineSeparatorsAndDirections) {
  EXPECT_EQ(Printable("\u2028\u2029\u202A\u202E\u2066\u2069\u200E\u200F\u061C\uFEFF"),
            "\\u2028\\u2029\\u202a\\u202e\\u2066\\u2069\\u200e\\u200f\\u061c\\ufeff");
}

TEST(Printable, EscapesBytesThatAreNoUtf8) {
  EXPECT_EQ(Printable("a\x80z"), "a\\x80z");
  EXPECT_EQ(Printable("\xC0\xAF"), "\\xc0\\xaf");                    // overlong
  EXPECT_EQ(Printable("\xE0\x80\xAF"), "\\xe0\\x80\\xaf");           // overlong
  EXPECT_EQ(Printable("\xED\xA0\x80"), "\\xed\\xa0\\x80");           // surrogate
  EXPECT_EQ(Printable("\xF4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80");  // beyond U+10FFFF
  EXPECT_EQ(Printable("\xE2\x82"), "\\xe2\\x82");                    // cut off
  EXPECT_EQ(Printable("\xE2\x82z"), "\\xe2\\x82z");
  EXPECT_EQ(Printable("\xFF\xF5"), "\\xff\\xf5");
}

TEST(ShowableJson, EscapesWhatIsMoreThanText) {
  EXPECT_EQ(ShowableJson(""), "");
  EXPECT_EQ(ShowableJson("{\n  \"a\": \"\u00E9\u4F1A\U0001F600\"\n}"),
            "{\n  \"a\": \"\u00E9\u4F1A\U0001F600\"\n}");
  EXPECT_EQ(ShowableJson("[\"\x7F\u009B2J\u202E\u2028\uFEFF\"]"),
            R"(["\u007f\u009b2J\u202e\u2028\ufeff"])");
}

TEST(IsPlainText, IsWhatATerminalShowsAsItIs) {
  for (const char* text :
       {"", "a\tb\r\nc\f", "Gr\u00FC\u00DFe \u4F1A\u8B70 \U0001F600", "\uFEFF", "\u00A0"}) {
    EXPECT_TRUE(IsPlainText(text)) << text;
  }
  using namespace std::literals;
  for (const std::string_view text :
       {"\0"sv, "a\x1b[2J"sv, "\b"sv, "\x7f"sv, "\xFF"sv, "caf\xE9"sv, "\u0085"sv, "\u009B"sv,
        "\xC0\x80"sv, "cut\xE4\xBC"sv, "a\u202Eb"sv, "\u2066"sv, "\u2028"sv, "\u200F"sv,
        "\u061C"sv}) {
    EXPECT_FALSE(IsPlainText(text)) << Printable(text);
  }
}

TEST(DisplayWidth, CountsColumns) {
  EXPECT_EQ(DisplayWidth(""), 0u);
  EXPECT_EQ(DisplayWidth("abc"), 3u);
  EXPECT_EQ(DisplayWidth("\u00E9\u20AC"), 2u);
  EXPECT_EQ(DisplayWidth("e\u0301"), 1u);
  EXPECT_EQ(DisplayWidth("\u4F1A\u8B70.pdf"), 8u);
  EXPECT_EQ(DisplayWidth("\uFF21\uAC00\U0001F600"), 6u);
  EXPECT_EQ(DisplayWidth("\u05D0\u05B8\u0915\u0941"), 2u);  // vowel signs of two scripts
  EXPECT_EQ(DisplayWidth("a\u200Bb\u200Dc"), 3u);
  EXPECT_EQ(DisplayWidth("\xFF\xE4\xBC"), 3u);  // no UTF-8: byte by byte
}

TEST(LocalTimeText, CountsFromTheEpoch) {
  const test::LocalZone utc;
  EXPECT_EQ(LocalTimeText(0), "1970-01-01T00:00:00");
  EXPECT_EQ(LocalTimeText(-1), "1969-12-31T23:59:59");
  EXPECT_EQ(LocalTimeText(951782400), "2000-02-29T00:00:00");
  EXPECT_EQ(LocalTimeText(1779208305), "2026-05-19T16:31:45");
  EXPECT_EQ(LocalTimeText(-11644473600), "1601-01-01T00:00:00");
}

TEST(LocalTimeText, FollowsTheZoneAndItsSummerTime) {
  test::LocalZone zone;
  zone.use("EST5EDT,M3.2.0,M11.1.0");
  EXPECT_EQ(LocalTimeText(1779208305), "2026-05-19T12:31:45");
  EXPECT_EQ(LocalTimeText(1768435200), "2026-01-14T19:00:00");
  EXPECT_EQ(LocalTimeText(0), "1969-12-31T19:00:00");
  zone.use("IST-5:30");
  EXPECT_EQ(LocalTimeText(1779208305), "2026-05-19T22:01:45");
}

TEST(LocalTimeText, KnowsTheYearsOfFourDigits) {
  test::LocalZone zone;
  EXPECT_EQ(LocalTimeText(253402300799), "9999-12-31T23:59:59");
  EXPECT_EQ(LocalTimeText(253402300800), std::nullopt);
  EXPECT_EQ(LocalTimeText(-62135596800), "0001-01-01T00:00:00");
  EXPECT_EQ(LocalTimeText(-62135596801), std::nullopt);
  EXPECT_EQ(LocalTimeText(INT64_MAX), std::nullopt);
  EXPECT_EQ(LocalTimeText(INT64_MIN), std::nullopt);
  // The year that counts is that of the zone.
  zone.use("EST5");
  EXPECT_EQ(LocalTimeText(253402300800), "9999-12-31T19:00:00");
  EXPECT_EQ(LocalTimeText(-62135596800), std::nullopt);
}

TEST(IsNumber, TakesDecimalDigitsOnly) {
  for (const char* text : {"0", "010", "-1", "2147483648", "99999999999999999999999"}) {
    EXPECT_TRUE(IsNumber(text)) << text;
  }
  for (const char* text : {"", " 1", "1 ", "+1", "0x1", "1e3", "-", "--1", "1-"}) {
    EXPECT_FALSE(IsNumber(text)) << text;
  }
}

TEST(ParseNumber, TakesDecimalDigitsOnly) {
  EXPECT_EQ(ParseNumber("0"), 0);
  EXPECT_EQ(ParseNumber("010"), 10);
  EXPECT_EQ(ParseNumber("-2147483648"), INT32_MIN);
  for (const char* text : {"", " 1", "1 ", "+1", "0x1", "2147483648", "-2147483649", "1e3", "-"}) {
    EXPECT_EQ(ParseNumber(text), std::nullopt) << text;
  }
}

TEST(ParseLangId, TakesDecimalAndHexadecimal) {
  EXPECT_EQ(ParseLangId("1031"), 0x0407u);
  EXPECT_EQ(ParseLangId("01031"), 0x0407u);
  EXPECT_EQ(ParseLangId("0x0407"), 0x0407u);
  EXPECT_EQ(ParseLangId("0X2c01"), 0x2C01u);
  EXPECT_EQ(ParseLangId("0xFFFF"), 0xFFFFu);
  for (const char* text : {"", "0x", "0x10000", "65536", "-1", "0x-1", "4e", "de", "0x 1"}) {
    EXPECT_EQ(ParseLangId(text), std::nullopt) << text;
  }
}

}  // namespace
}  // namespace tarn::host
