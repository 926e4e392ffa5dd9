#include "eml/Jis0208Rows.h"

#include <gtest/gtest.h>

#include <string_view>

#include "Platform/CodePages.h"

namespace tarn {
namespace {

constexpr char16_t kNone = 0xFFFD;

// The row of a first byte, by the table in the header.
uint32_t RowOf(unsigned first) {
  if (first <= 0x28) return first - 0x21;
  if (first == 0x2C) return 8;
  return first - 0x27;
}

char16_t Cell(unsigned first, unsigned second) {
  const Jis0208Row& row = Jis0208Rows[RowOf(first)];
  return second - 0x21 < row.length ? row.cells[second - 0x21] : kNone;
}

// What code page 932 has for the pair, kNone for its default character.
char16_t CodePageCell(unsigned first, unsigned second) {
  // The formula of JIS X 0208, appendix 1.
  const unsigned lead = (first + 1) / 2 + (first < 0x5F ? 0x70 : 0xB0);
  const unsigned trail = first % 2 == 0 ? second + 0x7E : second + (second < 0x60 ? 0x1F : 0x20);
  const char pair[2] = {static_cast<char>(lead), static_cast<char>(trail)};
  char16_t unit[2] = {};
  EXPECT_EQ(platform::BytesToUtf16(932, {pair, 2}, unit), 1u);
  const bool isDefault = unit[0] == 0x30FB && !(first == 0x21 && second == 0x26);
  return isDefault ? kNone : unit[0];
}

TEST(Jis0208Rows, HasRowsOfTheStatedLengths) {
  ASSERT_EQ(kJis0208RowCount, 78U);
  for (uint32_t row = 0; row < kJis0208RowCount; ++row) {
    uint32_t length = 94;
    if (row == 5) length = 56;
    if (row == 6) length = 81;
    if (row == 7) length = 32;
    if (row == 40) length = 51;
    if (row == 77) length = 6;
    EXPECT_EQ(Jis0208Rows[row].length, length) << row;
  }
}

TEST(Jis0208Rows, HasTheCharactersOfTheStandard) {
  EXPECT_EQ(Cell(0x21, 0x21), u'\u3000');
  EXPECT_EQ(Cell(0x21, 0x22), u'\u3001');
  EXPECT_EQ(Cell(0x21, 0x26), u'\u30FB');
  EXPECT_EQ(Cell(0x22, 0x21), u'\u25C6');
  EXPECT_EQ(Cell(0x23, 0x30), u'\uFF10');
  EXPECT_EQ(Cell(0x23, 0x7A), u'\uFF5A');
  EXPECT_EQ(Cell(0x24, 0x22), u'\u3042');
  EXPECT_EQ(Cell(0x24, 0x73), u'\u3093');
  EXPECT_EQ(Cell(0x25, 0x22), u'\u30A2');
  EXPECT_EQ(Cell(0x25, 0x76), u'\u30F6');
  EXPECT_EQ(Cell(0x26, 0x21), u'\u0391');
  EXPECT_EQ(Cell(0x26, 0x58), u'\u03C9');
  EXPECT_EQ(Cell(0x27, 0x21), u'\u0410');
  EXPECT_EQ(Cell(0x27, 0x71), u'\u044F');
  EXPECT_EQ(Cell(0x28, 0x21), u'\u2500');
  EXPECT_EQ(Cell(0x28, 0x40), u'\u2542');
  EXPECT_EQ(Cell(0x30, 0x21), u'\u4E9C');
  EXPECT_EQ(Cell(0x46, 0x7C), u'\u65E5');
  EXPECT_EQ(Cell(0x4B, 0x5C), u'\u672C');
  EXPECT_EQ(Cell(0x4F, 0x53), u'\u8155');
  EXPECT_EQ(Cell(0x50, 0x21), u'\u5F0C');
  EXPECT_EQ(Cell(0x5D, 0x21), u'\u6A97');
  EXPECT_EQ(Cell(0x5F, 0x21), u'\u6F3E');
  EXPECT_EQ(Cell(0x73, 0x7E), u'\u9FA0');
  EXPECT_EQ(Cell(0x74, 0x21), u'\u582F');
  EXPECT_EQ(Cell(0x74, 0x26), u'\u7199');
}

// Where the code page goes its own way, the table follows it.
TEST(Jis0208Rows, FollowsTheCodePageWhereMappingsDiffer) {
  EXPECT_EQ(Cell(0x21, 0x31), u'\uFFE3');
  EXPECT_EQ(Cell(0x21, 0x40), u'\uFF3C');
  EXPECT_EQ(Cell(0x21, 0x41), u'\uFF5E');
  EXPECT_EQ(Cell(0x21, 0x42), u'\u2225');
  EXPECT_EQ(Cell(0x21, 0x5D), u'\uFF0D');
  EXPECT_EQ(Cell(0x21, 0x6F), u'\uFFE5');
  EXPECT_EQ(Cell(0x21, 0x71), u'\uFFE0');
  EXPECT_EQ(Cell(0x21, 0x72), u'\uFFE1');
  EXPECT_EQ(Cell(0x22, 0x4C), u'\uFFE2');
}

TEST(Jis0208Rows, HasNothingInEmptyCells) {
  EXPECT_EQ(Cell(0x22, 0x2F), kNone);
  EXPECT_EQ(Cell(0x23, 0x21), kNone);
  EXPECT_EQ(Cell(0x23, 0x7E), kNone);
  EXPECT_EQ(Cell(0x24, 0x74), kNone);
  EXPECT_EQ(Cell(0x25, 0x77), kNone);
  EXPECT_EQ(Cell(0x26, 0x39), kNone);
  EXPECT_EQ(Cell(0x27, 0x42), kNone);
}

TEST(Jis0208Rows, HasTheCircledDigitsOf2DAt2C) {
  EXPECT_EQ(Cell(0x2C, 0x21), u'\u2460');
  EXPECT_EQ(Cell(0x2C, 0x34), u'\u2473');
  EXPECT_EQ(Cell(0x2C, 0x35), u'\u2160');
  EXPECT_EQ(Cell(0x2C, 0x3F), kNone);
  EXPECT_EQ(Cell(0x2C, 0x40), u'\u3349');
  EXPECT_EQ(Cell(0x2C, 0x62), u'\u2116');
  EXPECT_EQ(Cell(0x2C, 0x70), u'\u2252');
  EXPECT_EQ(Cell(0x2C, 0x7C), u'\u222A');
  EXPECT_EQ(Cell(0x2C, 0x7D), kNone);
}

// The row whose cells from 0x3B on differ from the code page.
TEST(Jis0208Rows, KeepsTheOrderOfRow5E) {
  EXPECT_EQ(Cell(0x5E, 0x21), u'\u6CBA');
  EXPECT_EQ(Cell(0x5E, 0x3A), u'\u6D85');
  EXPECT_EQ(Cell(0x5E, 0x3B), u'\u6DB5');
  EXPECT_EQ(Cell(0x5E, 0x3C), u'\u6DC7');
  EXPECT_EQ(Cell(0x5E, 0x7B), u'\u6ECC');
  EXPECT_EQ(Cell(0x5E, 0x7C), u'\u6DF9');
  EXPECT_EQ(Cell(0x5E, 0x7D), u'\u6E15');
  EXPECT_EQ(Cell(0x5E, 0x7E), u'\u6E0A');
}

TEST(Jis0208Rows, AgreesWithTheCodePageInEveryCell) {
  for (unsigned first = 0x21; first <= 0x74; ++first) {
    if (first >= 0x29 && first <= 0x2F && first != 0x2C) continue;
    for (unsigned second = 0x21; second <= 0x7E; ++second) {
      char16_t expected = CodePageCell(first == 0x2C ? 0x2D : first, second);
      if (first == 0x5E && second >= 0x3B) {
        const unsigned moved = second <= 0x7B ? second + 3 : second - 0x7C + 0x3B;
        expected = CodePageCell(first, moved);
      }
      ASSERT_EQ(static_cast<unsigned>(Cell(first, second)), static_cast<unsigned>(expected))
          << std::hex << first << ' ' << second;
    }
  }
}

}  // namespace
}  // namespace tarn
