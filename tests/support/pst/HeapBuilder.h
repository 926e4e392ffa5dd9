// HeapBuilder.h - writes a heap on node (MS-PST 2.3.1).
//
// Allocations are placed one after the other; one that does not fit opens the next page. Every
// page but the last is filled up to the full size of a block. The page map of a page is
// directly after its allocations, on an even offset.
#ifndef TARN_TESTS_SUPPORT_PST_HEAPBUILDER_H
#define TARN_TESTS_SUPPORT_PST_HEAPBUILDER_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "support/pst/PstLayout.h"

namespace tarn::test {

inline constexpr size_t kMaxHeapAllocation = 3580;
inline constexpr uint8_t kPropertyContext = 0xBC;
inline constexpr uint8_t kTableContext = 0x7C;

class HeapBuilder {
 public:
  HeapBuilder(PstLayout layout, uint8_t clientSignature);

  // The heap id of these bytes; 0 for none. More than 3580 bytes throw std::length_error.
  uint32_t add(std::string_view bytes);
  // Room for so many bytes, zeros until set.
  uint32_t reserve(size_t size);
  void set(uint32_t hid, std::string_view bytes);
  void setRoot(uint32_t hid) { root_ = hid; }

  std::vector<std::string> pages() const;

 private:
  struct Page {
    std::string body;               // header and allocations
    std::vector<uint16_t> offsets;  // where each allocation starts
  };

  std::string finishPage(const Page& page, bool isLast) const;
  uint8_t fillLevel(const Page& page) const;
  void openPage();
  // Bytes that a page takes with its map.
  static size_t PageBytes(size_t body, size_t allocations);

  size_t pageSize_;
  uint8_t clientSignature_;
  uint32_t root_ = 0;
  std::vector<Page> pages_;
};

}  // namespace tarn::test

#endif
