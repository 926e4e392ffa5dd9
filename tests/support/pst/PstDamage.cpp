#include "support/pst/PstDamage.h"

#include <algorithm>
#include <set>
#include <stdexcept>

#include "support/pst/PstBytes.h"
#include "support/pst/PstCodec.h"
#include "support/pst/PstHeader.h"

namespace tarn::test {
namespace {

void RepairPage(std::string& image, PstLayout layout, uint64_t id, uint64_t offset) {
  const PstOffsets& at = OffsetsOf(layout);
  const size_t start = static_cast<size_t>(offset);
  PutLe(image, start + at.pageTrailer + 1, GetLe(image, start + at.pageTrailer, 1), 1);
  PutLe(image, start + at.pageSignature, PstSignature(id, offset), 2);
  PutLe(image, start + at.pageBid, id, at.idWidth);
  PutLe(image, start + at.pageCrc, PstCrc(std::string_view(image).substr(start, at.pageTrailer)),
        4);
}

void RepairBlock(std::string& image, PstLayout layout, uint64_t id, uint64_t offset, uint16_t cb) {
  const PstOffsets& at = OffsetsOf(layout);
  const size_t start = static_cast<size_t>(offset);
  const size_t trailer = start + BlockExtent(layout, cb) - at.blockTrailer;
  PutLe(image, trailer, cb, 2);
  PutLe(image, trailer + 2, PstSignature(id, offset), 2);
  PutLe(image, trailer + at.blockBid, id, at.idWidth);
  PutLe(image, trailer + at.blockCrc, PstCrc(std::string_view(image).substr(start, cb)), 4);
}

// Walks the trees of an image of unknown making.
class ImageRepair {
 public:
  ImageRepair(std::string& image, PstLayout layout)
      : image_(image), layout_(layout), at_(OffsetsOf(layout)) {}

  void tree(size_t root, bool isBlockTree) {
    std::vector<PstPageRef> open = {refAt(root)};
    while (!open.empty()) {
      const PstPageRef page = open.back();
      open.pop_back();
      if (!isInside(page.ib, kPstPageSize) || !seen_.insert(page.ib).second) continue;
      const size_t start = static_cast<size_t>(page.ib);
      const bool isInner = GetLe(image_, start + at_.pageCounters + 3, 1) != 0;
      const size_t entrySize = isInner ? at_.innerEntry : at_.bbtLeafEntry;
      const size_t count = std::min<size_t>(GetLe(image_, start + at_.pageCounters, 1),
                                            at_.pageCounters / entrySize);
      for (size_t i = 0; i < count; ++i) {
        const size_t entry = start + i * entrySize;
        if (isInner) {
          open.push_back(refAt(entry + at_.idWidth));
        } else if (isBlockTree) {
          block(entry);
        }
      }
      RepairPage(image_, layout_, page.bid, page.ib);
    }
  }

 private:
  PstPageRef refAt(size_t offset) const {
    return {GetLe(image_, offset, at_.idWidth), GetLe(image_, offset + at_.idWidth, at_.idWidth)};
  }

  bool isInside(uint64_t offset, size_t size) const {
    return offset <= image_.size() && size <= image_.size() - offset;
  }

  void block(size_t entry) {
    const PstPageRef ref = refAt(entry);
    const uint16_t cb = static_cast<uint16_t>(GetLe(image_, entry + 2 * at_.idWidth, 2));
    if (isInside(ref.ib, BlockExtent(layout_, cb))) {
      RepairBlock(image_, layout_, ref.bid, ref.ib, cb);
    }
  }

  std::string& image_;
  PstLayout layout_;
  const PstOffsets& at_;
  std::set<uint64_t> seen_;
};

}  // namespace

PstDamage::PstDamage(PstFileBuilder& file)
    : layout_(file.options().layout),
      encoding_(file.options().encoding),
      image_(file.bytes()),
      extents_(file.extents()) {
  std::sort(extents_.begin(), extents_.end(),
            [](const PstExtent& a, const PstExtent& b) { return a.offset < b.offset; });
}

const PstExtent& PstDamage::at(PstExtentKind kind, size_t n) const {
  for (const PstExtent& extent : extents_) {
    if (extent.kind == kind && n-- == 0) return extent;
  }
  throw std::out_of_range("no such extent");
}

const PstExtent& PstDamage::block(uint64_t bid) const {
  for (const PstExtent& extent : extents_) {
    if (IsBlock(extent.kind) && extent.id == bid) return extent;
  }
  throw std::out_of_range("no such block");
}

size_t PstDamage::trailer(const PstExtent& extent) const {
  const PstOffsets& offsets = OffsetsOf(layout_);
  const size_t start = static_cast<size_t>(extent.offset);
  return IsBlock(extent.kind) ? start + BlockExtent(layout_, extent.size) - offsets.blockTrailer
                              : start + offsets.pageTrailer;
}

PstDamage& PstDamage::header(size_t offset, uint64_t value, size_t width) {
  PutLe(image_, offset, value, width);
  RepairPstHeader(image_, layout_);
  return *this;
}

std::string PstDamage::data(const PstExtent& extent) const {
  std::string bytes = image_.substr(static_cast<size_t>(extent.offset), extent.size);
  return extent.kind == PstExtentKind::DataBlock ? PstDecode(encoding_, extent.id, bytes) : bytes;
}

PstDamage& PstDamage::put(const PstExtent& extent, size_t offset, uint64_t value, size_t width) {
  std::string bytes = data(extent);
  PutLe(bytes, offset, value, width);
  if (extent.kind == PstExtentKind::DataBlock) bytes = PstEncode(encoding_, extent.id, bytes);
  PutBytes(image_, static_cast<size_t>(extent.offset), bytes);
  repair(extent);
  return *this;
}

void PstDamage::repair(const PstExtent& extent) {
  if (IsBlock(extent.kind)) {
    RepairBlock(image_, layout_, extent.id, extent.offset, extent.size);
  } else {
    RepairPage(image_, layout_, extent.id, extent.offset);
  }
}

void PstDamage::repairAll() {
  for (const PstExtent& extent : extents_) repair(extent);
  RepairPstHeader(image_, layout_);
}

void RepairPstImage(std::string& image) {
  constexpr size_t kVersion = 10;
  constexpr size_t kFirstUnicode = 20;
  if (image.size() < kVersion + 2) return;
  const bool isUnicode = GetLe(image, kVersion, 2) >= kFirstUnicode;
  const PstLayout layout = isUnicode ? PstLayout::Unicode : PstLayout::Ansi;
  const PstOffsets& at = OffsetsOf(layout);
  if (image.size() < at.headerSize) return;
  ImageRepair repair(image, layout);
  repair.tree(at.brefNbt, false);
  repair.tree(at.brefBbt, true);
  RepairPstHeader(image, layout);
}

}  // namespace tarn::test
