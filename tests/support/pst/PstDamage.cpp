#include "support/pst/PstDamage.h"

#include <algorithm>
#include <optional>
#include <stdexcept>

#include "support/pst/PstBytes.h"
#include "support/pst/PstCodec.h"
#include "support/pst/PstHeader.h"
#include "support/pst/PstImageMap.h"

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
  const std::optional<PstImageMap> map = MapPstImage(image);
  if (!map) return;
  for (const PstImageBlock& block : map->blocks) {
    RepairBlock(image, map->layout, block.id, block.offset, block.size);
  }
  for (const PstImagePage& page : map->pages) {
    RepairPage(image, map->layout, page.id, page.offset);
  }
  RepairPstHeader(image, map->layout);
}

}  // namespace tarn::test
