// PngReading.h - reads the PNG files that tarnmail writes, by zlib and by the rules of the format
// (ISO/IEC 15948). What is wrong fails the test.
#ifndef TARN_TESTS_TARNMAIL_PAGES_PNGREADING_H
#define TARN_TESTS_TARNMAIL_PAGES_PNGREADING_H

#include <gtest/gtest.h>
#include <zlib.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tarn::test {

inline uint32_t NumberAt(std::string_view bytes, size_t at) {
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
inline Png ReadPng(std::string_view file) {
  Png png;
  EXPECT_EQ(file.substr(0, 8), "\x89PNG\r\n\x1A\n");
  if (file.size() < 8) return png;
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
inline std::string UnfilteredRows(const Png& png, size_t rowBytes) {
  const uint32_t height = NumberAt(png.header, 4);
  std::string filtered((rowBytes + 1) * height, '\0');
  uLongf size = filtered.size();
  EXPECT_EQ(uncompress(reinterpret_cast<Bytef*>(filtered.data()), &size,
                       reinterpret_cast<const Bytef*>(png.data.data()), png.data.size()),
            Z_OK);
  EXPECT_EQ(size, filtered.size());
  std::string pixels;
  for (size_t y = 0; y < height; ++y) {
    const std::string_view row =
        std::string_view(filtered).substr(y * (rowBytes + 1), rowBytes + 1);
    EXPECT_EQ(row[0], 0) << "filter of row " << y;
    pixels += row.substr(1);
  }
  return pixels;
}

// A page's pixels in three bytes each, whether the file has colours or grey.
struct PagePixels {
  size_t width = 0;
  size_t height = 0;
  std::string rows;
};

inline PagePixels ReadPage(std::string_view file) {
  constexpr char kGrey = 0;
  const Png png = ReadPng(file);
  PagePixels page;
  if (png.header.size() != 13) {
    ADD_FAILURE() << "no PNG file";
    return page;
  }
  page.width = NumberAt(png.header, 0);
  page.height = NumberAt(png.header, 4);
  const bool isGrey = png.header[9] == kGrey;
  page.rows = UnfilteredRows(png, isGrey ? page.width : 3 * page.width);
  if (isGrey) {
    std::string colours;
    for (const char byte : page.rows) colours.append(3, byte);
    page.rows = colours;
  }
  return page;
}

// The pixels for which `is` says so of red, green and blue.
template <typename Is>
size_t CountPixels(const PagePixels& page, Is is) {
  size_t count = 0;
  for (size_t i = 0; i + 2 < page.rows.size(); i += 3) {
    const auto channel = [&](size_t k) { return static_cast<uint8_t>(page.rows[i + k]); };
    if (is(channel(0), channel(1), channel(2))) ++count;
  }
  return count;
}

}  // namespace tarn::test

#endif
