// Pages are white with a little text, the same letters over and over: zlib's quick levels find
// them, and find them best in rows that are written as they are. A page of text takes a fifth of
// what runs alone would leave, and no longer.
#include "pages/PngFile.h"

#include <zlib.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>
#include <vector>

namespace tarn::host {
namespace {

constexpr size_t kColourBytes = 3;

void AppendNumber(std::string& text, uint32_t number) {
  for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>(number >> shift & 0xFF);
}

void AppendChunk(std::string& file, std::string_view type, std::string_view content) {
  AppendNumber(file, static_cast<uint32_t>(content.size()));
  const size_t start = file.size();
  file += type;
  file += content;
  const auto* const bytes = reinterpret_cast<const Bytef*>(file.data() + start);
  AppendNumber(file, static_cast<uint32_t>(crc32_z(0, bytes, file.size() - start)));
}

bool IsGrey(std::string_view rows) {
  for (size_t i = 0; i + 2 < rows.size(); i += kColourBytes) {
    if (rows[i] != rows[i + 1] || rows[i] != rows[i + 2]) return false;
  }
  return true;
}

// The compressed content, taken row by row and written as chunks of a size that holds for any page.
class ImageData {
 public:
  explicit ImageData(std::string& file) : file_(file), out_(kChunk) {
    constexpr int kLevel = 3;
    constexpr int kWindowBits = 15;
    constexpr int kMemoryLevel = 8;
    if (deflateInit2(&stream_, kLevel, Z_DEFLATED, kWindowBits, kMemoryLevel, Z_DEFAULT_STRATEGY) !=
        Z_OK) {
      throw std::bad_alloc();
    }
    empty();
  }
  ImageData(const ImageData&) = delete;
  ImageData& operator=(const ImageData&) = delete;
  ~ImageData() { deflateEnd(&stream_); }

  void write(std::vector<uint8_t>& bytes) {
    stream_.next_in = bytes.data();
    stream_.avail_in = static_cast<uInt>(bytes.size());
    while (stream_.avail_in != 0) run(Z_NO_FLUSH);
  }

  void finish() {
    while (run(Z_FINISH) != Z_STREAM_END) {
    }
    flush();
  }

 private:
  static constexpr size_t kChunk = 1 << 18;

  int run(int how) {
    if (stream_.avail_out == 0) flush();
    return deflate(&stream_, how);
  }

  void flush() {
    const size_t used = out_.size() - stream_.avail_out;
    if (used != 0) {
      AppendChunk(file_, "IDAT", {reinterpret_cast<const char*>(out_.data()), used});
    }
    empty();
  }

  void empty() {
    stream_.next_out = out_.data();
    stream_.avail_out = static_cast<uInt>(out_.size());
  }

  std::string& file_;
  std::vector<uint8_t> out_;
  z_stream stream_ = {};
};

// The row as it is, or one byte of each pixel, after the filter byte 0: no filter.
void TakeRow(const PngPage& page, int32_t y, size_t step, std::vector<uint8_t>& row) {
  const size_t pageRow = static_cast<size_t>(page.width) * kColourBytes;
  const char* const from = page.rows.data() + static_cast<size_t>(y) * pageRow;
  for (size_t i = 0; i + 1 < row.size(); ++i) row[i + 1] = static_cast<uint8_t>(from[i * step]);
}

}  // namespace

std::string PngFile(const PngPage& page) {
  using namespace std::literals;
  constexpr double kMetresPerInch = 0.0254;
  const bool isGrey = IsGrey(page.rows);
  std::string file = "\x89PNG\r\n\x1A\n"s;

  std::string header;
  AppendNumber(header, static_cast<uint32_t>(page.width));
  AppendNumber(header, static_cast<uint32_t>(page.height));
  header += "\x08"sv;                      // bits a sample
  header += isGrey ? "\x00"sv : "\x02"sv;  // grey, or red, green and blue
  header += "\x00\x00\x00"sv;              // deflate, the usual filters, not interlaced
  AppendChunk(file, "IHDR", header);

  std::string resolution;
  const auto perMetre = static_cast<uint32_t>(std::lround(page.dotsPerInch / kMetresPerInch));
  AppendNumber(resolution, perMetre);
  AppendNumber(resolution, perMetre);
  resolution += "\x01"sv;  // the unit is the metre
  AppendChunk(file, "pHYs", resolution);

  ImageData data(file);
  const size_t step = isGrey ? kColourBytes : 1;
  std::vector<uint8_t> row(1 + static_cast<size_t>(page.width) * kColourBytes / step);
  for (int32_t y = 0; y < page.height; ++y) {
    TakeRow(page, y, step, row);
    data.write(row);
  }
  data.finish();
  AppendChunk(file, "IEND", {});
  return file;
}

}  // namespace tarn::host
