// PstAllocator.h - file space and the maps that record it (MS-PST 2.2.2.7.2 to 2.2.2.7.6).
//
// Space is given out from front to back and never taken back. A map page comes before each
// 253952 bytes, and no extent crosses into the next one. The first of eight intervals holds a page
// map after its allocation map; from the 128th interval on every 496th holds a free map, and from
// the 8192nd on every 31744th a free page map. These three are kept only for old programs: all of
// their bytes are 0xFF. A density list names the intervals that have room, the emptiest first.
//
// A compact file has none of all this: its first extent is at 1024. Such a file is not as
// published; it is small, and a reader that never looks at the maps sees no difference.
#ifndef TARN_TESTS_SUPPORT_PST_PSTALLOCATOR_H
#define TARN_TESTS_SUPPORT_PST_PSTALLOCATOR_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "support/pst/PstExtent.h"
#include "support/pst/PstLayout.h"
#include "support/pst/PstOutput.h"

namespace tarn::test {

// The type in the trailer of a page of this kind.
uint8_t PstPageType(PstExtentKind kind);

class PstAllocator {
 public:
  PstAllocator(PstLayout layout, bool isCompact, PstOutput& output,
               std::vector<PstExtent>& extents);

  // File offset of an extent of this size; sizes and alignment are multiples of 64.
  uint64_t allocate(size_t size, size_t alignment);
  // Writes the last map and, with densityListId, the density list. A trimmed file ends after the
  // last extent, and the map shows what would follow as used; else it ends with the last interval.
  void finish(bool isTrimmed, uint64_t densityListId);

  // Valid after finish.
  uint64_t fileEnd() const { return fileEnd_; }
  uint64_t lastMap() const { return isCompact_ ? 0 : mapOffset_; }
  uint64_t freeBytes() const { return freeBytes_; }

 private:
  void openInterval();
  void closeInterval();
  void placeMap(PstExtentKind kind);
  void mark(uint64_t offset, uint64_t size);
  void writeDensityList(uint64_t id);

  PstLayout layout_;
  bool isCompact_;
  PstOutput& output_;
  std::vector<PstExtent>& extents_;
  uint64_t interval_ = 0;
  uint64_t mapOffset_ = kPstFirstMap;
  uint64_t cursor_ = kPstFirstMap;
  uint64_t freeBytes_ = 0;
  uint64_t fileEnd_ = 0;
  std::string bits_;
  std::vector<std::pair<uint32_t, uint32_t>> freeSlots_;  // of each interval: slots, number
};

}  // namespace tarn::test

#endif
