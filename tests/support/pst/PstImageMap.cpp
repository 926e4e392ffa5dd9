#include "support/pst/PstImageMap.h"

#include <algorithm>
#include <set>

#include "support/pst/PstBytes.h"
#include "support/pst/PstTreePages.h"

namespace tarn::test {
namespace {

class ImageWalk {
 public:
  ImageWalk(std::string_view image, PstLayout layout)
      : image_(image), at_(OffsetsOf(layout)), map_{layout, {}, {}}, room_(4 * image.size()) {}

  void tree(size_t root, bool isBlockTree) {
    std::vector<PstPageRef> open = {refAt(root)};
    while (!open.empty()) {
      const PstPageRef ref = open.back();
      open.pop_back();
      if (!isInside(ref.ib, kPstPageSize) || !seen_.insert(ref.ib).second) continue;
      const PstImagePage page = pageAt(ref, isBlockTree);
      map_.pages.push_back(page);
      for (size_t i = 0; i < page.entries; ++i) {
        const size_t entry = static_cast<size_t>(page.offset) + i * page.entrySize;
        if (page.isInner) {
          open.push_back(refAt(entry + at_.idWidth));
        } else if (isBlockTree) {
          addBlock(entry);
        }
      }
    }
  }

  PstImageMap take() { return std::move(map_); }

 private:
  PstPageRef refAt(size_t offset) const {
    return {GetLe(image_, offset, at_.idWidth), GetLe(image_, offset + at_.idWidth, at_.idWidth)};
  }

  bool isInside(uint64_t offset, size_t size) const {
    return offset <= image_.size() && size <= image_.size() - offset;
  }

  PstImagePage pageAt(const PstPageRef& ref, bool isBlockTree) const {
    const size_t counters = static_cast<size_t>(ref.ib) + at_.pageCounters;
    PstImagePage page = {ref.bid, ref.ib, isBlockTree, GetLe(image_, counters + 3, 1) != 0, 0, 0};
    page.entrySize = page.isInner  ? at_.innerEntry
                     : isBlockTree ? at_.bbtLeafEntry
                                   : at_.nbtLeafEntry;
    page.entries = std::min<size_t>(GetLe(image_, counters, 1), at_.pageCounters / page.entrySize);
    return page;
  }

  void addBlock(size_t entry) {
    const PstPageRef ref = refAt(entry);
    const auto size = static_cast<uint16_t>(GetLe(image_, entry + 2 * at_.idWidth, 2));
    const size_t extent = BlockExtent(map_.layout, size);
    if (!isInside(ref.ib, extent) || extent > room_) return;
    room_ -= extent;
    map_.blocks.push_back({ref.bid, ref.ib, size, entry});
  }

  std::string_view image_;
  const PstOffsets& at_;
  PstImageMap map_;
  size_t room_;  // for the extents of all blocks together
  std::set<uint64_t> seen_;
};

}  // namespace

std::optional<PstImageMap> MapPstImage(std::string_view image) {
  constexpr size_t kVersion = 10;
  constexpr size_t kFirstUnicode = 20;
  if (image.size() < kVersion + 2) return std::nullopt;
  const bool isUnicode = GetLe(image, kVersion, 2) >= kFirstUnicode;
  const PstLayout layout = isUnicode ? PstLayout::Unicode : PstLayout::Ansi;
  const PstOffsets& at = OffsetsOf(layout);
  if (image.size() < at.headerSize) return std::nullopt;
  ImageWalk walk(image, layout);
  walk.tree(at.brefNbt, false);
  walk.tree(at.brefBbt, true);
  return walk.take();
}

}  // namespace tarn::test
