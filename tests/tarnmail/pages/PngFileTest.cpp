// Pages as PNG files.

#include "tarnmail/pages/PngFile.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tarnmail/pages/PngReading.h"

namespace tarn::host {
namespace {

using namespace std::literals;

using test::NumberAt;
using test::Png;
using test::ReadPng;
using test::UnfilteredRows;

TEST(PngFile, HoldsColours) {
  const std::string rows = "\xFF\x00\x00\x00\xFF\x00\x00\x00\xFF\x01\x02\x03"s;
  const Png png = ReadPng(PngFile({2, 2, 96, rows}));
  EXPECT_EQ(png.types, (std::vector<std::string>{"IHDR", "pHYs", "IDAT", "IEND"}));
  EXPECT_EQ(png.header, "\0\0\0\2\0\0\0\2\x08\2\0\0\0"sv);
  // 96 dots per inch are 3780 per metre.
  EXPECT_EQ(png.resolution, "\0\0\x0E\xC4\0\0\x0E\xC4\1"sv);
  EXPECT_EQ(UnfilteredRows(png, 6), rows);
}

TEST(PngFile, HoldsGreyInOneByte) {
  const Png png = ReadPng(PngFile({2, 2, 300, "\xFF\xFF\xFF\x80\x80\x80\0\0\0\1\1\1"sv}));
  EXPECT_EQ(png.header, "\0\0\0\2\0\0\0\2\x08\0\0\0\0"sv);
  EXPECT_EQ(NumberAt(png.resolution, 0), 11811u);
  EXPECT_EQ(UnfilteredRows(png, 2), "\xFF\x80\0\1"sv);
}

TEST(PngFile, IsSmallForAPageOfPaper) {
  std::string rows(size_t{2550} * 3300 * 3, '\xFF');
  rows[0] = 0;
  const std::string file = PngFile({2550, 3300, 300, rows});
  EXPECT_LT(file.size(), 200000u);
  EXPECT_EQ(UnfilteredRows(ReadPng(file), 7650), rows);
}

// Noise cannot be compressed: several chunks, and none lost between them.
TEST(PngFile, HoldsWhatFillsManyChunks) {
  std::string rows(size_t{600} * 600 * 3, '\0');
  uint32_t noise = 1;
  for (char& byte : rows) {
    noise = noise * 1664525 + 1013904223;
    byte = static_cast<char>(noise >> 24);
  }
  const Png png = ReadPng(PngFile({600, 600, 96, rows}));
  EXPECT_GT(png.types.size(), 5u);
  EXPECT_EQ(UnfilteredRows(png, 1800), rows);
}

}  // namespace
}  // namespace tarn::host
