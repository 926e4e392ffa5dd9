#include "Platform/Utf8.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

namespace tarn::platform {
namespace {

template <typename Text>
void ExpectFirst(Text text, char32_t codePoint, size_t size, bool isWellFormed) {
  const Character character = FirstCharacter(text);
  EXPECT_EQ(character.codePoint, codePoint) << ::testing::PrintToString(text);
  EXPECT_EQ(character.size, size) << ::testing::PrintToString(text);
  EXPECT_EQ(character.isWellFormed, isWellFormed) << ::testing::PrintToString(text);
}

void ExpectMalformed(std::string_view text, size_t size) { ExpectFirst(text, 0xFFFD, size, false); }

TEST(FirstCharacter, IsNotWhatFollows) {
  ExpectFirst(std::string_view("az"), U'a', 1, true);
  ExpectFirst(std::string_view("\0z", 2), 0, 1, true);
  ExpectFirst(std::string_view("\xC3\xA9\x80"), 0xE9, 2, true);
  ExpectFirst(std::u16string_view(u"az"), U'a', 1, true);
  ExpectFirst(std::u16string_view(u"\xD83D\xDE00\xDE00"), 0x1F600, 2, true);
}

TEST(FirstCharacter, TakesATruncatedSequenceAsFarAsItCouldGoOn) {
  ExpectMalformed("\xC3", 1);
  ExpectMalformed("\xE2\x82", 2);
  ExpectMalformed("\xF0\x9F\x98", 3);
  ExpectMalformed("\xE2\x82z", 2);
  ExpectMalformed("\xF0\x9F\xC3\xA9", 2);
  ExpectMalformed(std::string_view("\xC3\0", 2), 1);
}

TEST(FirstCharacter, TakesAnyOtherByteAlone) {
  for (const std::string_view text :
       {"\x80", "\xBF\x80", "\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xED\xA0\x80",
        "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80", "\xF8\x88", "\xFE", "\xFF"}) {
    ExpectMalformed(text, 1);
  }
}

TEST(FirstCharacter, TakesHalfAPairAlone) {
  for (const std::u16string_view text :
       {u"\xD83D", u"\xD83Dz", u"\xD83D\xD83D", u"\xDE00\xD83D", u"\xDFFF", u"\xDBFF\xE000"}) {
    ExpectFirst(text, 0xFFFD, 1, false);
  }
}

TEST(FirstCharacter, LooksNoFurtherThanTheText) {
  ExpectMalformed(std::string_view("\xF0\x9F\x98\x80", 3), 3);
  ExpectFirst(std::u16string_view(u"\xD83D\xDE00", 1), 0xFFFD, 1, false);
}

// A character in a destination of so many units.
template <typename Unit>
std::basic_string<Unit> Written(char32_t codePoint, size_t room) {
  std::basic_string<Unit> units(room, Unit{'#'});
  const size_t size = WriteCharacter(codePoint, std::span<Unit>(units));
  EXPECT_EQ(units.substr(size), std::basic_string<Unit>(room - size, Unit{'#'}));
  return units.substr(0, size);
}

TEST(WriteCharacter, WritesTheFormsOfTheStandard) {
  EXPECT_EQ(Written<char>(0x24, 4), "\x24");
  EXPECT_EQ(Written<char>(0xA3, 4), "\xC2\xA3");
  EXPECT_EQ(Written<char>(0x20AC, 4), "\xE2\x82\xAC");
  EXPECT_EQ(Written<char>(0x10348, 5), "\xF0\x90\x8D\x88");
  EXPECT_EQ(Written<char16_t>(0x20AC, 2), u"\x20AC");
  EXPECT_EQ(Written<char16_t>(0x10437, 3), u"\xD801\xDC37");
}

TEST(WriteCharacter, FitsWholeOrNotAtAll) {
  size_t size = 0;
  for (const char32_t codePoint : std::initializer_list<char32_t>{0x24, 0xA3, 0x20AC, 0x10348}) {
    EXPECT_EQ(Written<char>(codePoint, size), "");
    EXPECT_EQ(Written<char>(codePoint, ++size).size(), size);
  }
  EXPECT_EQ(Written<char16_t>(0x20AC, 0), u"");
  EXPECT_EQ(Written<char16_t>(0x10437, 1), u"");
  EXPECT_EQ(Written<char16_t>(0x10437, 2).size(), 2u);
}

TEST(WriteCharacter, IsReadBack) {
  for (char32_t point = 0; point <= 0x10FFFF; ++point) {
    if (point == 0xD800) point = 0xE000;
    char bytes[4];
    const size_t size = WriteCharacter(point, std::span<char>(bytes));
    const Character narrow = FirstCharacter(std::string_view(bytes, size));
    ASSERT_TRUE(narrow.isWellFormed) << uint32_t{point};
    ASSERT_EQ(narrow.codePoint, point);
    ASSERT_EQ(narrow.size, size);
    char16_t units[2];
    const size_t pair = WriteCharacter(point, std::span<char16_t>(units));
    const Character wide = FirstCharacter(std::u16string_view(units, pair));
    ASSERT_TRUE(wide.isWellFormed) << uint32_t{point};
    ASSERT_EQ(wide.codePoint, point);
    ASSERT_EQ(wide.size, pair);
  }
}

TEST(IsWellFormed, WantsBothHalvesOfEveryPair) {
  EXPECT_TRUE(IsWellFormed(u""));
  EXPECT_TRUE(IsWellFormed(u"a\xD83D\xDE00z"));
  EXPECT_TRUE(IsWellFormed(u"\xD7FF\xE000"));
  EXPECT_FALSE(IsWellFormed(u"a\xD83D"));
  EXPECT_FALSE(IsWellFormed(u"\xDE00z"));
  EXPECT_FALSE(IsWellFormed(u"\xD83D\xDE00\xDE00"));
}

}  // namespace
}  // namespace tarn::platform
