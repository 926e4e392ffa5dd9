#include "support/pst/HeapBuilder.h"

#include <array>
#include <stdexcept>

#include "support/pst/PstBytes.h"

namespace tarn::test {
namespace {

constexpr size_t kMaxAllocations = 0x7FF;
constexpr size_t kMaxPages = 0x10000;
constexpr uint8_t kHeapSignature = 0xEC;

// Pages 8, 136, 264, ... hold the fill levels of 128 pages, page 0 those of 8.
bool HasBitmap(size_t page) { return page >= 8 && (page - 8) % 128 == 0; }
size_t HeaderSize(size_t page) { return page == 0 ? 12 : HasBitmap(page) ? 66 : 2; }

void PutFillLevel(std::string& bytes, size_t nibble, uint8_t level) {
  const uint64_t old = GetLe(bytes, nibble / 2, 1);
  PutLe(bytes, nibble / 2, old | (uint64_t{level} << (nibble % 2 * 4)), 1);
}

}  // namespace

HeapBuilder::HeapBuilder(PstLayout layout, uint8_t clientSignature)
    : pageSize_(OffsetsOf(layout).maxBlockData), clientSignature_(clientSignature) {
  openPage();
}

void HeapBuilder::openPage() {
  if (pages_.size() == kMaxPages) throw std::length_error("heap pages");
  pages_.push_back({std::string(HeaderSize(pages_.size()), '\0'), {}});
}

size_t HeapBuilder::PageBytes(size_t body, size_t allocations) {
  return (body + 1) / 2 * 2 + 4 + 2 * (allocations + 1);
}

uint32_t HeapBuilder::add(std::string_view bytes) {
  if (bytes.empty()) return 0;
  const uint32_t hid = reserve(bytes.size());
  set(hid, bytes);
  return hid;
}

uint32_t HeapBuilder::reserve(size_t size) {
  if (size > kMaxHeapAllocation) throw std::length_error("heap allocation");
  const Page& last = pages_.back();
  if (last.offsets.size() == kMaxAllocations ||
      PageBytes(last.body.size() + size, last.offsets.size() + 1) > pageSize_) {
    openPage();
  }
  Page& page = pages_.back();
  page.offsets.push_back(static_cast<uint16_t>(page.body.size()));
  page.body.resize(page.body.size() + size);
  return static_cast<uint32_t>(((pages_.size() - 1) << 16) | (page.offsets.size() << 5));
}

void HeapBuilder::set(uint32_t hid, std::string_view bytes) {
  Page& page = pages_.at(hid >> 16);
  PutBytes(page.body, page.offsets.at(((hid >> 5) & 0x7FF) - 1), bytes);
}

uint8_t HeapBuilder::fillLevel(const Page& page) const {
  // The least free room of each level from 0 on; less is level 15 (MS-PST 2.3.1.2).
  constexpr std::array<size_t, 15> kLeastFree = {3584, 2560, 2048, 1792, 1536, 1280, 1024, 768,
                                                 512,  256,  128,  64,   32,   16,   8};
  const size_t free = pageSize_ - PageBytes(page.body.size(), page.offsets.size());
  uint8_t level = 0;
  while (level < kLeastFree.size() && free < kLeastFree[level]) ++level;
  return level;
}

std::string HeapBuilder::finishPage(const Page& page, bool isLast) const {
  std::string bytes = page.body;
  const size_t end = bytes.size();
  bytes.resize((end + 1) / 2 * 2);
  PutLe(bytes, 0, bytes.size(), 2);
  AppendLe(bytes, page.offsets.size(), 2);
  AppendLe(bytes, 0, 2);
  for (uint16_t offset : page.offsets) AppendLe(bytes, offset, 2);
  AppendLe(bytes, end, 2);
  if (!isLast) bytes.resize(pageSize_);
  return bytes;
}

std::vector<std::string> HeapBuilder::pages() const {
  std::vector<std::string> result;
  for (const Page& page : pages_) {
    result.push_back(finishPage(page, result.size() + 1 == pages_.size()));
  }
  PutLe(result[0], 2, kHeapSignature, 1);
  PutLe(result[0], 3, clientSignature_, 1);
  PutLe(result[0], 4, root_, 4);
  for (size_t i = 0; i < pages_.size(); ++i) {
    const uint8_t level = fillLevel(pages_[i]);
    if (i < 8) {
      PutFillLevel(result[0], 8 * 2 + i, level);
    } else {
      PutFillLevel(result[(i - 8) / 128 * 128 + 8], 2 * 2 + (i - 8) % 128, level);
    }
  }
  return result;
}

}  // namespace tarn::test
