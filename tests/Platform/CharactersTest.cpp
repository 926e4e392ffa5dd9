#include "Platform/Characters.h"

#include <gtest/gtest.h>

#include <initializer_list>

namespace tarn::platform {
namespace {

void ExpectRisingAndApart(std::span<const CodePointRange> ranges) {
  for (size_t i = 0; i < ranges.size(); ++i) {
    EXPECT_LE(ranges[i].first, ranges[i].last);
    if (i > 0) {
      EXPECT_GT(ranges[i].first, ranges[i - 1].last + 1);
    }
  }
}

TEST(CharacterRanges, RiseAndDoNotTouch) {
  ExpectRisingAndApart(kCombiningMarks);
  ExpectRisingAndApart(kZeroWidth);
  ExpectRisingAndApart(kDoubleWidth);
}

TEST(CharacterRanges, HaveOneWidthForEachCharacter) {
  for (const CodePointRange& range : kZeroWidth) {
    for (char32_t point = range.first; point <= range.last; ++point) {
      EXPECT_FALSE(IsIn(kDoubleWidth, point)) << std::hex << uint32_t{point};
    }
  }
}

// Documents are cut after combining marks: another set of them means other documents.
TEST(CombiningMarks, AreThoseOfUnicode14) {
  uint32_t count = 0;
  uint64_t sum = 0;
  for (uint32_t point = 0; point <= 0x10FFFF; ++point) {
    if (!IsCombiningMark(point)) continue;
    ++count;
    sum += point;
  }
  EXPECT_EQ(count, 2408u);  // Mn 1950, Mc 445, Me 13
  EXPECT_EQ(sum, 309510979u);
}

TEST(CombiningMarks, AreOfThreeCategories) {
  EXPECT_TRUE(IsCombiningMark(0x0301));   // Mn
  EXPECT_TRUE(IsCombiningMark(0x0903));   // Mc
  EXPECT_TRUE(IsCombiningMark(0x20DD));   // Me
  EXPECT_TRUE(IsCombiningMark(0x302A));   // East Asian wide, and a mark
  EXPECT_FALSE(IsCombiningMark(0x200D));  // Cf
  EXPECT_FALSE(IsCombiningMark(0x00B4));  // Sk
  EXPECT_FALSE(IsCombiningMark(0x4E00));
  EXPECT_FALSE(IsCombiningMark(0x1E08F));  // a mark from Unicode 15 on
}

TEST(TerminalColumns, AreTwoForWideCharacters) {
  for (const char32_t point : std::initializer_list<char32_t>{
           0x1100, 0x115F, 0x2E80, 0x3000, 0x3042,  0x4E00,  0x9FFF,  0xAC00,  0xD7A3,  0xF900,
           0xFE30, 0xFF01, 0xFF60, 0xFFE6, 0x1F300, 0x1F600, 0x20000, 0x2FFFD, 0x30000, 0x3FFFD}) {
    EXPECT_EQ(TerminalColumns(point), 2u) << std::hex << uint32_t{point};
  }
}

TEST(TerminalColumns, AreNoneForMarksWithoutRoomAndForJoiners) {
  for (const char32_t point :
       std::initializer_list<char32_t>{0x0300, 0x036F, 0x0489, 0x05B0, 0x0E31, 0x20DD, 0x302A,
                                       0x3099, 0xFE0F, 0xFE20, 0xE0100, 0x200B, 0x200C, 0x200D}) {
    EXPECT_EQ(TerminalColumns(point), 0u) << std::hex << uint32_t{point};
  }
}

TEST(TerminalColumns, AreOneForAllOthers) {
  for (const char32_t point : std::initializer_list<char32_t>{
           0x00, 0x41, 0xE9, 0x02FF, 0x0370, 0x0903, 0x1160, 0x20AC, 0x303F, 0xFF61, 0xFFFD,
           0x1F321, 0x3FFFE, 0xE000, 0x10FFFF}) {
    EXPECT_EQ(TerminalColumns(point), 1u) << std::hex << uint32_t{point};
  }
}

TEST(MisleadsTerminals, IsWhatIsMoreThanText) {
  for (const char32_t point : std::initializer_list<char32_t>{
           0x00, 0x09, 0x0A, 0x1B, 0x1F, 0x7F, 0x80, 0x9B, 0x9F, 0x061C, 0x200E, 0x200F, 0x2028,
           0x2029, 0x202A, 0x202E, 0x2066, 0x2069, 0xFEFF}) {
    EXPECT_TRUE(MisleadsTerminals(point)) << std::hex << uint32_t{point};
  }
  for (const char32_t point : std::initializer_list<char32_t>{
           0x20, 0x7E, 0xA0, 0xAD, 0x061B, 0x061D, 0x200D, 0x2010, 0x2027, 0x202F, 0x2065, 0x206A,
           0x4E00, 0xFEFE, 0xFF00, 0x1F600, 0x10FFFF}) {
    EXPECT_FALSE(MisleadsTerminals(point)) << std::hex << uint32_t{point};
  }
}

}  // namespace
}  // namespace tarn::platform
