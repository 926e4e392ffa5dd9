// Windows bitmaps without compression, of 1, 4, 8, 24 and 32 bits a pixel.
//
//   file header  0 "BM"   10 offset of the pixels
//   info header  14 its size   18 width   22 height (below 0: rows from the top)   28 bits a pixel
//                30 compression (0 none, 3 masks)   46 colours in the table (0: all)
//   core header  14 its size, 12   18 width, 20 height, 24 bits a pixel, each 16 bits
#include <algorithm>
#include <array>
#include <cstdlib>
#include <vector>

#include "siblings/layout/images/Picture.h"

namespace tarn::pages {

namespace {

constexpr size_t kCoreHeader = 12;
constexpr size_t kInfoHeader = 40;

struct BmpHeader {
  uint32_t pixels = 0;
  uint32_t headerSize = 0;
  int32_t width = 0;
  int32_t height = 0;
  uint32_t bits = 0;
  uint32_t compression = 0;
  uint32_t colours = 0;
};

uint32_t Load(std::string_view file, size_t offset, size_t count) {
  uint32_t value = 0;
  for (size_t i = count; i-- > 0;) value = value << 8 | static_cast<uint8_t>(file[offset + i]);
  return value;
}

std::optional<BmpHeader> ReadBmpHeader(std::string_view file) {
  if (file.size() < 14 + kCoreHeader) return std::nullopt;
  BmpHeader header;
  header.pixels = Load(file, 10, 4);
  header.headerSize = Load(file, 14, 4);
  if (header.headerSize == kCoreHeader) {
    header.width = static_cast<int32_t>(Load(file, 18, 2));
    header.height = static_cast<int32_t>(Load(file, 20, 2));
    header.bits = Load(file, 24, 2);
  } else if (header.headerSize >= kInfoHeader && file.size() >= 14 + kInfoHeader) {
    header.width = static_cast<int32_t>(Load(file, 18, 4));
    header.height = static_cast<int32_t>(Load(file, 22, 4));
    header.bits = Load(file, 28, 2);
    header.compression = Load(file, 30, 4);
    header.colours = Load(file, 46, 4);
  } else {
    return std::nullopt;
  }
  return header;
}

using Palette = std::vector<std::array<uint8_t, 4>>;

Palette ReadPalette(std::string_view file, const BmpHeader& header) {
  Palette palette(256, {0, 0, 0, 255});
  if (header.bits > 8) return palette;
  const size_t width = header.headerSize == kCoreHeader ? 3 : 4;
  const size_t most = size_t{1} << header.bits;
  const size_t count = header.colours == 0 ? most : std::min<size_t>(header.colours, most);
  for (size_t i = 0; i < count; ++i) {
    const size_t at = size_t{14} + header.headerSize + i * width;
    if (at + 3 > file.size()) break;
    for (size_t part = 0; part < 3; ++part)
      palette[i][part] = static_cast<uint8_t>(file[at + part]);
  }
  return palette;
}

// Alpha is not used: most writers leave it 0.
void ReadBmpRow(std::string_view bytes, uint32_t bits, const Palette& palette, uint8_t* row,
                int32_t width) {
  for (size_t x = 0; x < static_cast<size_t>(width); ++x, row += 4) {
    if (bits >= 24) {
      const size_t at = x * (bits / 8);
      if (at + 3 > bytes.size()) return;
      for (size_t part = 0; part < 3; ++part) row[part] = static_cast<uint8_t>(bytes[at + part]);
      row[3] = 255;
      continue;
    }
    const size_t bit = x * bits;
    if (bit / 8 >= bytes.size()) return;
    const auto byte = static_cast<uint8_t>(bytes[bit / 8]);
    const size_t index = byte >> (8 - bits - bit % 8) & ((1u << bits) - 1);
    std::copy(palette[index].begin(), palette[index].end(), row);
  }
}

}  // namespace

std::optional<Picture> DecodeBmp(std::string_view file) {
  const std::optional<BmpHeader> header = ReadBmpHeader(file);
  if (!header || (header->compression != 0 && !(header->compression == 3 && header->bits == 32))) {
    return std::nullopt;
  }
  const std::array<uint32_t, 5> known = {1, 4, 8, 24, 32};
  if (std::find(known.begin(), known.end(), header->bits) == known.end()) return std::nullopt;
  std::optional<Picture> picture = MakePicture(header->width, std::abs(int64_t{header->height}));
  if (!picture || header->pixels >= file.size()) return std::nullopt;
  const Palette palette = ReadPalette(file, *header);
  const size_t stride = (static_cast<size_t>(header->width) * header->bits + 31) / 32 * 4;
  for (int32_t y = 0; y < picture->height; ++y) {
    const size_t at = header->pixels + static_cast<size_t>(y) * stride;
    if (at >= file.size()) break;
    const int32_t row = header->height < 0 ? y : picture->height - 1 - y;
    ReadBmpRow(file.substr(at, stride), header->bits, palette, RowOf(*picture, row),
               picture->width);
  }
  FinishPicture(*picture);
  return picture;
}

}  // namespace tarn::pages
