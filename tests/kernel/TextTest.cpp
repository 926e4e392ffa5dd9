#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Tarnbase/PlainKernel.h"

namespace tarn::test {
namespace {

using namespace std::string_literals;

// Both convert into a destination of exactly `room`, so that sanitizers see one too many.
std::string ToUtf8(const std::u16string& text, int64_t room) {
  std::vector<char> out(static_cast<size_t>(room), '#');
  const std::vector<char16_t> source(text.begin(), text.end());
  const int64_t bytes =
      KernelWideToUtf8(source.data(), static_cast<int64_t>(source.size()), out.data(), room);
  return std::string(out.data(), static_cast<size_t>(bytes));
}
std::string ToUtf8(const std::u16string& text) {
  return ToUtf8(text, static_cast<int64_t>(text.size()) * 3 + 1);
}
std::u16string ToWide(const std::string& text, int64_t room) {
  std::vector<char16_t> out(static_cast<size_t>(room), u'#');
  const std::vector<char> source(text.begin(), text.end());
  const int64_t units =
      KernelUtf8ToWide(source.data(), static_cast<int64_t>(source.size()), out.data(), room);
  return std::u16string(out.data(), static_cast<size_t>(units));
}
std::u16string ToWide(const std::string& text) {
  return ToWide(text, static_cast<int64_t>(text.size()) + 1);
}

TEST(Text, EachLengthOfSequence) {
  EXPECT_EQ(ToUtf8(u"A\u007F"), "A\x7F");
  EXPECT_EQ(ToUtf8(u"\u0080\u07FF"), "\xC2\x80\xDF\xBF");
  EXPECT_EQ(ToUtf8(u"\u0800\uD7FF\uE000\uFFFF"),
            "\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF");
  EXPECT_EQ(ToUtf8(u"\U00010000\U0010FFFF"), "\xF0\x90\x80\x80\xF4\x8F\xBF\xBF");
  EXPECT_EQ(ToWide("A\x7F"), u"A\u007F");
  EXPECT_EQ(ToWide("\xC2\x80\xDF\xBF"), u"\u0080\u07FF");
  EXPECT_EQ(ToWide("\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF"),
            u"\u0800\uD7FF\uE000\uFFFF");
  EXPECT_EQ(ToWide("\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"), u"\U00010000\U0010FFFF");
}

TEST(Text, SurrogatePairsAreWrittenUnitByUnit) {
  EXPECT_EQ(ToWide("\xF0\x9F\x98\x80"), u"\xD83D\xDE00");
  EXPECT_EQ(ToUtf8(u"\xD83D\xDE00"), "\xF0\x9F\x98\x80");
}

TEST(Text, NulsAreConvertedLikeAnyOther) {
  EXPECT_EQ(ToUtf8(u"a\0b\0"s), "a\0b\0"s);
  EXPECT_EQ(ToWide("a\0b\0"s), u"a\0b\0"s);
  EXPECT_EQ(ToUtf8(u"\0"s), "\0"s);
}

TEST(Text, ALoneSurrogateBecomesTheReplacementCharacter) {
  const std::string mark = "\xEF\xBF\xBD";
  EXPECT_EQ(ToUtf8(u"\xD800"), mark);
  EXPECT_EQ(ToUtf8(u"\xDBFFz"), mark + "z");
  EXPECT_EQ(ToUtf8(u"\xDC00"), mark);
  EXPECT_EQ(ToUtf8(u"a\xDFFF"), "a" + mark);
  EXPECT_EQ(ToUtf8(u"\xD83D\xD83D\xDE00"), mark + "\xF0\x9F\x98\x80");
  EXPECT_EQ(ToUtf8(u"\xDE00\xD83D"), mark + mark);
}

// A pair that the given length cuts is a lone high surrogate.
TEST(Text, LooksAtTheUnitsGivenOnly) {
  char out[8];
  EXPECT_EQ(KernelWideToUtf8(u"\xD83D\xDE00", 1, out, 8), 3);
  EXPECT_EQ(std::string(out), "\xEF\xBF\xBD");
  char16_t wide[8];
  EXPECT_EQ(KernelUtf8ToWide("\xC3\xA4", 1, wide, 8), 0);
}

TEST(Text, MalformedUtf8GivesNothing) {
  const std::vector<std::string> malformed = {"\x80",
                                              "\xBF",  // continuation bytes alone
                                              "\xC0\x80",
                                              "\xC1\xBF",  // overlong, two bytes
                                              "\xE0\x80\x80",
                                              "\xE0\x9F\xBF",  // overlong, three bytes
                                              "\xF0\x80\x80\x80",
                                              "\xF0\x8F\xBF\xBF",  // overlong, four bytes
                                              "\xED\xA0\x80",
                                              "\xED\xAF\xBF",  // high surrogates
                                              "\xED\xB0\x80",
                                              "\xED\xBF\xBF",              // low surrogates
                                              "\xED\xA0\xBD\xED\xB8\x80",  // a pair of them
                                              "\xF4\x90\x80\x80",
                                              "\xF5\x80\x80\x80",  // above U+10FFFF
                                              "\xF8\x88\x80\x80\x80",
                                              "\xFE",
                                              "\xFF",  // no lead bytes
                                              "\xC3",
                                              "\xE2\x82",  // cut at the end
                                              "\xE2",
                                              "\xF0\x9F\x98",
                                              "\xF0\x9F",
                                              "\xF0",
                                              "\xC3"
                                              "A",
                                              "\xE2\x82"
                                              "A",  // cut in the middle
                                              "\xE2"
                                              "A\x82",
                                              "\xF0\x9F\x98"
                                              "A",
                                              "\xC3\xC3\xA4",
                                              "\xE2\x82\xE2\x82\xAC"};
  for (const std::string& sequence : malformed) {
    EXPECT_EQ(ToWide(sequence), u"") << ::testing::PrintToString(sequence);
    EXPECT_EQ(ToWide("before " + sequence), u"") << ::testing::PrintToString(sequence);
    EXPECT_EQ(ToWide(sequence + " and a long ASCII run after it"), u"");
  }
}

TEST(Text, ATerminatorFollowsWhereThereIsRoom) {
  char bytes[4] = {'#', '#', '#', '#'};
  EXPECT_EQ(KernelWideToUtf8(u"ab", 2, bytes, 4), 2);
  EXPECT_EQ(std::string(bytes, 4), "ab\0#"s);
  bytes[2] = '#';
  EXPECT_EQ(KernelWideToUtf8(u"xy", 2, bytes, 2), 2);
  EXPECT_EQ(std::string(bytes, 4), "xy##"s);

  char16_t units[4] = {u'#', u'#', u'#', u'#'};
  EXPECT_EQ(KernelUtf8ToWide("ab", 2, units, 4), 2);
  EXPECT_EQ(std::u16string(units, 4), u"ab\0#"s);
  units[2] = u'#';
  EXPECT_EQ(KernelUtf8ToWide("xy", 2, units, 2), 2);
  EXPECT_EQ(std::u16string(units, 4), u"xy##"s);
}

TEST(Text, ATerminatorInTheSourceIsCountedAndFollowedByAnother) {
  char bytes[4] = {'#', '#', '#', '#'};
  EXPECT_EQ(KernelWideToUtf8(u"a", 2, bytes, 4), 2);
  EXPECT_EQ(std::string(bytes, 4), "a\0\0#"s);
}

TEST(Text, FitsExactlyOrNotAtAll) {
  const std::u16string wide = u"a\u00E4\u20AC\U0001F600";
  const std::string utf8 = "a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80";
  EXPECT_EQ(ToUtf8(wide, 10), utf8);
  for (int64_t room = 0; room < 10; ++room) EXPECT_EQ(ToUtf8(wide, room), "") << room;
  EXPECT_EQ(ToWide(utf8, 5), wide);
  for (int64_t room = 0; room < 5; ++room) EXPECT_EQ(ToWide(utf8, room), u"") << room;
}

// Around the length of the runs that go over at once.
TEST(Text, AsciiRunsOfEveryLengthFitExactly) {
  for (size_t length = 1; length <= 70; ++length) {
    const std::string ascii(length, 'q');
    const std::u16string wide(length, u'q');
    const int64_t room = static_cast<int64_t>(length);
    EXPECT_EQ(ToUtf8(wide, room), ascii);
    EXPECT_EQ(ToUtf8(wide, room - 1), "");
    EXPECT_EQ(ToWide(ascii, room), wide);
    EXPECT_EQ(ToWide(ascii, room - 1), u"");
    EXPECT_EQ(ToUtf8(wide + u"\u00FC" + wide), ascii + "\xC3\xBC" + ascii);
    EXPECT_EQ(ToWide(ascii + "\xC3\xBC" + ascii), wide + u"\u00FC" + wide);
    EXPECT_EQ(ToWide(ascii + "\xFC" + ascii), u"");
  }
}

TEST(Text, NothingComesOfNothing) {
  char bytes[4] = {'#', '#', '#', '#'};
  char16_t units[4] = {u'#', u'#', u'#', u'#'};
  EXPECT_EQ(KernelWideToUtf8(u"ab", 0, bytes, 4), 0);
  EXPECT_EQ(KernelWideToUtf8(u"ab", -1, bytes, 4), 0);
  EXPECT_EQ(KernelWideToUtf8(u"ab", 2, bytes, 0), 0);
  EXPECT_EQ(KernelWideToUtf8(u"ab", 2, bytes, -4), 0);
  EXPECT_EQ(KernelWideToUtf8(nullptr, 2, bytes, 4), 0);
  EXPECT_EQ(KernelWideToUtf8(u"ab", 2, nullptr, 4), 0);
  EXPECT_EQ(KernelUtf8ToWide("ab", 0, units, 4), 0);
  EXPECT_EQ(KernelUtf8ToWide("ab", -1, units, 4), 0);
  EXPECT_EQ(KernelUtf8ToWide("ab", 2, units, 0), 0);
  EXPECT_EQ(KernelUtf8ToWide("ab", 2, units, -4), 0);
  EXPECT_EQ(KernelUtf8ToWide(nullptr, 2, units, 4), 0);
  EXPECT_EQ(KernelUtf8ToWide("ab", 2, nullptr, 4), 0);
  EXPECT_EQ(std::string(bytes, 4), "####");
  EXPECT_EQ(std::u16string(units, 4), u"####");
}

TEST(Text, EveryCodePointComesBack) {
  for (char32_t point = 0; point <= 0x10FFFF; ++point) {
    if (point >= 0xD800 && point <= 0xDFFF) continue;
    char16_t wide[3] = {static_cast<char16_t>(point), 0, 0};
    int64_t units = 1;
    if (point > 0xFFFF) {
      wide[0] = static_cast<char16_t>(0xD7C0 + (point >> 10));
      wide[1] = static_cast<char16_t>(0xDC00 | (point & 0x3FF));
      units = 2;
    }
    const int64_t expected = point < 0x80 ? 1 : point < 0x800 ? 2 : point < 0x10000 ? 3 : 4;
    char bytes[5];
    char16_t back[3];
    ASSERT_EQ(KernelWideToUtf8(wide, units, bytes, 5), expected) << static_cast<uint32_t>(point);
    ASSERT_EQ(KernelUtf8ToWide(bytes, expected, back, 3), units) << static_cast<uint32_t>(point);
    ASSERT_EQ(std::u16string(back, static_cast<size_t>(units)),
              std::u16string(wide, static_cast<size_t>(units)));
  }
}

TEST(Text, EverySurrogateAloneBecomesTheReplacementCharacter) {
  for (unsigned unit = 0xD800; unit <= 0xDFFF; ++unit) {
    const char16_t wide = static_cast<char16_t>(unit);
    char bytes[4];
    ASSERT_EQ(KernelWideToUtf8(&wide, 1, bytes, 4), 3);
    ASSERT_STREQ(bytes, "\xEF\xBF\xBD");
  }
}

}  // namespace
}  // namespace tarn::test
