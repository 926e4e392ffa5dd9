#include "support/pst/PstAllocator.h"

#include <algorithm>
#include <bit>
#include <functional>
#include <stdexcept>

#include "support/pst/PstBytes.h"
#include "support/pst/PstStructures.h"

namespace tarn::test {
namespace {

constexpr size_t kMapBytes = 496;
constexpr uint64_t kCompactStart = 1024;

bool HasFreeMap(uint64_t interval) { return interval >= 128 && (interval - 128) % 496 == 0; }
bool HasFreePageMap(uint64_t interval) {
  return interval >= 8192 && (interval - 8192) % 31744 == 0;
}

}  // namespace

uint8_t PstPageType(PstExtentKind kind) {
  switch (kind) {
    case PstExtentKind::BbtPage:
      return 0x80;
    case PstExtentKind::NbtPage:
      return 0x81;
    case PstExtentKind::FMap:
      return 0x82;
    case PstExtentKind::PMap:
      return 0x83;
    case PstExtentKind::AMap:
      return 0x84;
    case PstExtentKind::FPMap:
      return 0x85;
    case PstExtentKind::DList:
      return 0x86;
    default:
      throw std::logic_error("no page");
  }
}

PstAllocator::PstAllocator(PstLayout layout, bool isCompact, PstOutput& output,
                           std::vector<PstExtent>& extents)
    : layout_(layout), isCompact_(isCompact), output_(output), extents_(extents) {
  if (isCompact_) {
    cursor_ = kCompactStart;
  } else {
    openInterval();
  }
}

void PstAllocator::openInterval() {
  mapOffset_ = kPstFirstMap + interval_ * kPstMapInterval;
  cursor_ = mapOffset_;
  bits_.assign(kMapBytes, '\0');
  extents_.push_back({cursor_, cursor_, kPstPageSize, PstExtentKind::AMap});
  mark(cursor_, kPstPageSize);
  cursor_ += kPstPageSize;
  if (interval_ % 8 == 0) placeMap(PstExtentKind::PMap);
  if (HasFreeMap(interval_)) placeMap(PstExtentKind::FMap);
  if (HasFreePageMap(interval_)) placeMap(PstExtentKind::FPMap);
}

void PstAllocator::placeMap(PstExtentKind kind) {
  std::string body(OffsetsOf(layout_).mapBits, '\0');
  body.append(kMapBytes, '\xFF');
  output_.write(cursor_, PageBytes(layout_, PstPageType(kind), {cursor_, cursor_}, body));
  extents_.push_back({cursor_, cursor_, kPstPageSize, kind});
  mark(cursor_, kPstPageSize);
  cursor_ += kPstPageSize;
}

void PstAllocator::mark(uint64_t offset, uint64_t size) {
  const uint64_t first = (offset - mapOffset_) / kPstBlockAlignment;
  for (uint64_t slot = first; slot < first + size / kPstBlockAlignment; ++slot) {
    char& byte = bits_.at(static_cast<size_t>(slot / 8));
    byte = static_cast<char>(static_cast<uint8_t>(byte) | (0x80U >> (slot % 8)));
  }
}

void PstAllocator::closeInterval() {
  std::string body(OffsetsOf(layout_).mapBits, '\0');
  body += bits_;
  output_.write(mapOffset_, PageBytes(layout_, PstPageType(PstExtentKind::AMap),
                                      {mapOffset_, mapOffset_}, body));
  uint32_t used = 0;
  for (char c : bits_) used += static_cast<uint32_t>(std::popcount(static_cast<uint8_t>(c)));
  const uint32_t slots = kMapBytes * 8 - used;
  freeBytes_ += uint64_t{slots} * kPstBlockAlignment;
  freeSlots_.emplace_back(slots, static_cast<uint32_t>(interval_));
}

uint64_t PstAllocator::allocate(size_t size, size_t alignment) {
  uint64_t offset = (cursor_ + alignment - 1) / alignment * alignment;
  if (!isCompact_ && offset + size > mapOffset_ + kPstMapInterval) {
    closeInterval();
    ++interval_;
    openInterval();
    offset = (cursor_ + alignment - 1) / alignment * alignment;
  }
  if (!isCompact_) mark(offset, size);
  cursor_ = offset + size;
  return offset;
}

void PstAllocator::writeDensityList(uint64_t id) {
  constexpr uint8_t kBackfillComplete = 1;
  const size_t room = layout_ == PstLayout::Ansi ? 120 : 119;
  std::vector<std::pair<uint32_t, uint32_t>> entries;
  for (const auto& interval : freeSlots_) {
    // An entry has 20 bits for the interval and 12 for its free slots.
    if (interval.first != 0 && interval.second < (1U << 20)) entries.push_back(interval);
  }
  std::stable_sort(entries.begin(), entries.end(),
                   [](const auto& a, const auto& b) { return a.first > b.first; });
  entries.resize(std::min(entries.size(), room));
  std::string body;
  AppendLe(body, kBackfillComplete, 1);
  AppendLe(body, entries.size(), 1);
  AppendLe(body, 0, 2);
  AppendLe(body, interval_, 4);
  for (const auto& [slots, number] : entries) AppendLe(body, number | (slots << 20), 4);
  output_.write(kPstDensityList,
                PageBytes(layout_, PstPageType(PstExtentKind::DList), {id, kPstDensityList}, body));
  extents_.push_back({kPstDensityList, id, kPstPageSize, PstExtentKind::DList});
}

void PstAllocator::finish(bool isTrimmed, uint64_t densityListId) {
  fileEnd_ = cursor_;
  if (isCompact_) return;
  const uint64_t intervalEnd = mapOffset_ + kPstMapInterval;
  if (isTrimmed) {
    mark(cursor_, intervalEnd - cursor_);
  } else {
    fileEnd_ = intervalEnd;
  }
  closeInterval();
  writeDensityList(densityListId);
}

}  // namespace tarn::test
