// Pages as PNG files, read again by zlib and by the rules of the format.

#include "tarnmail/pages/PngFile.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <string>
#include <vector>

namespace tarn::host {
namespace {

using namespace std::literals;

uint32_t NumberAt(std::string_view bytes, size_t at) {
  uint32_t number = 0;
  for (size_t i = 0; i < 4; ++i) number = number << 8 | static_cast<uint8_t>(bytes[at + i]);
  return number;
}

struct Png {
  std::string header;
  std::string resolution;
  std::string data;  // of all IDAT chunks
  std::vector<std::string> types;
};

// Checks lengths, checksums and the order of the chunks.
Png Read(std::string_view file) {
  Png png;
  EXPECT_EQ(file.substr(0, 8), "\x89PNG\r\n\x1A\n"sv);
  for (size_t at = 8; at < file.size();) {
    const size_t size = NumberAt(file, at);
    const std::string_view checked = file.substr(at + 4, size + 4);
    const std::string type(checked.substr(0, 4));
    EXPECT_EQ(crc32_z(0, reinterpret_cast<const Bytef*>(checked.data()), checked.size()),
              NumberAt(file, at + 8 + size));
    const std::string_view content = checked.substr(4);
    if (type == "IHDR") png.header = content;
    if (type == "pHYs") png.resolution = content;
    if (type == "IDAT") png.data += content;
    png.types.push_back(type);
    at += size + 12;
  }
  return png;
}

// Undoes compression and filters.
std::string Pixels(const Png& png, size_t rowBytes) {
  const uint32_t height = NumberAt(png.header, 4);
  std::string filtered((rowBytes + 1) * height, '\0');
  uLongf size = filtered.size();
  EXPECT_EQ(uncompress(reinterpret_cast<Bytef*>(filtered.data()), &size,
                       reinterpret_cast<const Bytef*>(png.data.data()), png.data.size()),
            Z_OK);
  EXPECT_EQ(size, filtered.size());
  std::string pixels;
  std::string above(rowBytes, '\0');
  for (size_t y = 0; y < height; ++y) {
    const std::string_view row =
        std::string_view(filtered).substr(y * (rowBytes + 1), rowBytes + 1);
    EXPECT_EQ(row[0], 2) << "filter of row " << y;
    for (size_t x = 0; x < rowBytes; ++x) above[x] = static_cast<char>(above[x] + row[x + 1]);
    pixels += above;
  }
  return pixels;
}

TEST(PngFile, HoldsColours) {
  const std::string rows = "\xFF\x00\x00\x00\xFF\x00\x00\x00\xFF\x01\x02\x03"s;
  const Png png = Read(PngFile({2, 2, 96, rows}));
  EXPECT_EQ(png.types, (std::vector<std::string>{"IHDR", "pHYs", "IDAT", "IEND"}));
  EXPECT_EQ(png.header, "\0\0\0\2\0\0\0\2\x08\2\0\0\0"sv);
  // 96 dots per inch are 3780 per metre.
  EXPECT_EQ(png.resolution, "\0\0\x0E\xC4\0\0\x0E\xC4\1"sv);
  EXPECT_EQ(Pixels(png, 6), rows);
}

TEST(PngFile, HoldsGreyInOneByte) {
  const Png png = Read(PngFile({2, 2, 300, "\xFF\xFF\xFF\x80\x80\x80\0\0\0\1\1\1"sv}));
  EXPECT_EQ(png.header, "\0\0\0\2\0\0\0\2\x08\0\0\0\0"sv);
  EXPECT_EQ(NumberAt(png.resolution, 0), 11811u);
  EXPECT_EQ(Pixels(png, 2), "\xFF\x80\0\1"sv);
}

TEST(PngFile, IsSmallForAPageOfPaper) {
  std::string rows(size_t{2550} * 3300 * 3, '\xFF');
  rows[0] = 0;
  const std::string file = PngFile({2550, 3300, 300, rows});
  EXPECT_LT(file.size(), 200000u);
  EXPECT_EQ(Pixels(Read(file), 7650), rows);
}

// Noise cannot be compressed: several chunks, and none lost between them.
TEST(PngFile, HoldsWhatFillsManyChunks) {
  std::string rows(size_t{600} * 600 * 3, '\0');
  uint32_t noise = 1;
  for (char& byte : rows) {
    noise = noise * 1664525 + 1013904223;
    byte = static_cast<char>(noise >> 24);
  }
  const Png png = Read(PngFile({600, 600, 96, rows}));
  EXPECT_GT(png.types.size(), 5u);
  EXPECT_EQ(Pixels(png, 1800), rows);
}

}  // namespace
}  // namespace tarn::host
