#include "rtf/RtfCoverageMemo.h"

#include <algorithm>

namespace tarn {
namespace {

constexpr uint64_t kNoKey = 0;

// All units, the last in the lowest bits, where characters of one script differ. kNoKey for texts
// that are not kept: a NUL in front would not count.
uint64_t KeyOf(std::u16string_view text) {
  if (text.empty() || text.size() > 4 || text.front() == 0) return kNoKey;
  uint64_t key = 0;
  for (const char16_t unit : text) key = key << 16 | unit;
  return key;
}

}  // namespace

RtfCoverageMemo::Place RtfCoverageMemo::walk(uint64_t key) const {
  Place place = {0, 0};
  for (uint64_t bits = key;; bits >>= 1) {
    const Node& node = nodes_[static_cast<uint64_t>(place.node)];
    place.side = static_cast<uint32_t>(bits & 1);
    if (node.key == key || node.children[place.side] == 0) return place;
    place.node = node.children[place.side];
  }
}

const RtfCoverageAnswer* RtfCoverageMemo::find(std::u16string_view text) const {
  const uint64_t key = KeyOf(text);
  if (key == kNoKey || count_ == 0) return nullptr;
  const Node& node = nodes_[static_cast<uint64_t>(walk(key).node)];
  return node.key == key ? &node.answer : nullptr;
}

void RtfCoverageMemo::keep(std::u16string_view text, const RtfCoverageAnswer& answer) {
  const uint64_t key = KeyOf(text);
  if (key == kNoKey) return;
  Place place = {0, 0};
  if (count_ != 0) {
    place = walk(key);
    Node& node = nodes_[static_cast<uint64_t>(place.node)];
    if (node.key == key) {
      node.answer = answer;
      return;
    }
  }
  if (!reserve(count_ + 1)) return;
  if (count_ != 0) nodes_[static_cast<uint64_t>(place.node)].children[place.side] = count_;
  nodes_[static_cast<uint64_t>(count_++)] = Node{key, {0, 0}, answer};
}

void RtfCoverageMemo::clear() {
  nodes_.reset();
  count_ = 0;
  capacity_ = 0;
}

bool RtfCoverageMemo::reserve(int32_t count) {
  if (count <= capacity_) return true;
  if (count > kMostAnswers) return false;
  constexpr int32_t kFirstCapacity = 64;
  const int32_t capacity = std::max(kFirstCapacity, capacity_ * 2);
  auto* const nodes = static_cast<Node*>(
      KernelRealloc(nodes_.get(), static_cast<uint64_t>(capacity) * sizeof(Node), TARN_HERE));
  if (nodes == nullptr) return false;
  nodes_.take();
  nodes_.reset(nodes);
  capacity_ = capacity;
  return true;
}

}  // namespace tarn
