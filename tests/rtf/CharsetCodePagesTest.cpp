#include "rtf/CharsetCodePages.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace tarn {
namespace {

TEST(CharsetCodePages, AllRows) {
  struct Row {
    uint32_t charset, codePage, forText;
  };
  const Row rows[] = {
      {0, 1252, 1},   {1, 0, 0},      {2, 42, 1},     {77, 10000, 0}, {78, 10001, 0},
      {79, 10003, 0}, {80, 10008, 0}, {81, 10002, 0}, {82, 1361, 0},  {83, 10005, 0},
      {84, 10004, 0}, {85, 10006, 0}, {86, 10081, 0}, {87, 10021, 0}, {88, 10029, 0},
      {89, 10007, 0}, {128, 932, 1},  {129, 949, 1},  {130, 1361, 1}, {134, 936, 0},
      {136, 950, 0},  {161, 1253, 1}, {162, 1254, 1}, {163, 1258, 1}, {177, 1255, 1},
      {178, 1256, 1}, {179, 1256, 0}, {180, 1256, 0}, {181, 1255, 0}, {186, 1257, 1},
      {204, 1251, 1}, {222, 874, 1},  {238, 1250, 1}, {254, 437, 0},  {255, 850, 0},
  };
  ASSERT_EQ(CharsetCodePageTable.size(), std::size(rows));
  for (size_t i = 0; i < std::size(rows); ++i) {
    EXPECT_EQ(CharsetCodePageTable[i].charset, rows[i].charset) << i;
    EXPECT_EQ(CharsetCodePageTable[i].codePage, rows[i].codePage) << i;
    EXPECT_EQ(CharsetCodePageTable[i].forText, rows[i].forText) << i;
  }
}

TEST(CharsetCodePages, CharsetsAscend) {
  EXPECT_TRUE(std::is_sorted(
      CharsetCodePageTable.begin(), CharsetCodePageTable.end(),
      [](const CharsetCodePage& a, const CharsetCodePage& b) { return a.charset <= b.charset; }));
}

TEST(CharsetCodePages, FourteenCodePagesAreForText) {
  EXPECT_EQ(std::count_if(CharsetCodePageTable.begin(), CharsetCodePageTable.end(),
                          [](const CharsetCodePage& row) { return row.forText == 1; }),
            14);
}

}  // namespace
}  // namespace tarn
