// HostBitmap.h - the host's bitmap record, which the filter passes on unread, and the progress
// callback beside it.
//
// The record is packed and has 284 bytes:
//
//   offset  size
//        0     4  size of the record, 284; set by the host
//        4     4  width in pixels
//        8     4  height
//       12     4  bits a pixel, 24
//       16     4  order of the channels: 1 is red, green, blue
//       20     4  dots per inch, across
//       24     4  dots per inch, down
//       28     4  number of the page drawn, from 1
//       32     8  bytes from row to row: three times the width
//       40     8  pointer to the rows, from the top down
//       48     8  bytes of all rows
//       56   228  not used
//
// All but the size is for the sibling to set, which does so only when it succeeds. The rows are one
// kernel block, which the host frees.
#ifndef TARN_TARNMAIL_PAGES_HOSTBITMAP_H
#define TARN_TARNMAIL_PAGES_HOSTBITMAP_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>

#include "tarnmail/KernelBytes.h"

namespace tarn::host {

inline constexpr int32_t kBitmapRecordSize = 284;
inline constexpr int32_t kBitsPerPixel = 24;
inline constexpr int32_t kRedGreenBlue = 1;
inline constexpr int32_t kBytesPerPixel = kBitsPerPixel / 8;

#pragma pack(push, 1)
struct HostBitmapRecord {
  uint32_t size = kBitmapRecordSize;
  int32_t width = 0;
  int32_t height = 0;
  int32_t depth = 0;
  int32_t order = 0;
  int32_t xResolution = 0;
  int32_t yResolution = 0;
  int32_t pageNumber = 0;
  uint64_t rowBytes = 0;
  void* pixels = nullptr;
  uint64_t pixelBytes = 0;
  uint8_t unused[228] = {};
};
#pragma pack(pop)

static_assert(sizeof(HostBitmapRecord) == kBitmapRecordSize);
static_assert(offsetof(HostBitmapRecord, pixels) == 40);

// A record with the rows that it owns.
class HostBitmap {
 public:
  HostBitmap() = default;
  HostBitmap(const HostBitmap&) = delete;
  HostBitmap& operator=(const HostBitmap&) = delete;
  ~HostBitmap() { ReleaseBlock(record_.pixels); }

  HostBitmapRecord* get() { return &record_; }
  int32_t width() const { return record_.width; }
  int32_t height() const { return record_.height; }
  int32_t dotsPerInch() const { return record_.xResolution; }
  int32_t pageNumber() const { return record_.pageNumber; }
  std::string_view rows() const {
    return {static_cast<const char*>(record_.pixels), record_.pixelBytes};
  }

 private:
  HostBitmapRecord record_;
};

// Called with the host's value and per cent, from time to time; anything but StatusOk stops.
using HostProgressFunction = int32_t (*)(uint64_t userValue, int32_t percent);

}  // namespace tarn::host

#endif
