#include "rtf/RtfFontIndex.h"

#include <algorithm>

namespace tarn {

bool RtfFontIndex::update(const RtfFontTable& table) {
  if (!reserve(count_ + (table.count - taken_))) return false;
  for (; taken_ < table.count; ++taken_) insert(table.entries[taken_]);
  return true;
}

bool RtfFontIndex::reserve(int32_t count) {
  if (count <= capacity_) return true;
  const int32_t capacity = std::max(count, std::min(capacity_ * 2, kMaxRtfFonts));
  auto* const nodes = static_cast<Node*>(
      KernelRealloc(nodes_.get(), static_cast<uint64_t>(capacity) * sizeof(Node), TARN_HERE));
  if (nodes == nullptr) return false;
  nodes_.take();
  nodes_.reset(nodes);
  capacity_ = capacity;
  return true;
}

void RtfFontIndex::insert(const RtfFontEntry& font) {
  int32_t* link = nullptr;
  if (count_ > 0) {
    uint32_t bits = font.number;
    int32_t at = 0;
    do {
      Node& node = nodes_[static_cast<uint64_t>(at)];
      if (node.number == font.number) return;
      link = &node.children[bits & 1];
      bits >>= 1;
      at = *link;
    } while (at != 0);
    *link = count_;
  }
  nodes_[static_cast<uint64_t>(count_++)] = Node{font.number, font.codePage, {0, 0}};
}

const uint32_t* RtfFontIndex::find(uint32_t number) const {
  if (count_ == 0 || number == kNoRtfFont) return nullptr;
  uint32_t bits = number;
  int32_t at = 0;
  do {
    const Node& node = nodes_[static_cast<uint64_t>(at)];
    if (node.number == number) return &node.codePage;
    at = node.children[bits & 1];
    bits >>= 1;
  } while (at != 0);
  return nullptr;
}

}  // namespace tarn
