#include "pststore/TreePart.h"

#include "pststore/Errors.h"

namespace pststore {

namespace {

// Where the search for a number begins. Numbers of neighbouring parts differ in few bits.
size_t spread(ulonglong number) {
  return static_cast<size_t>((number * 0x9E3779B97F4A7C15u) >> 20);
}

}  // namespace

bool odd_set::insert(ulonglong number) {
  if (2 * (count_ + 1) > slots_.size()) grow();
  const size_t mask = slots_.size() - 1;
  size_t slot = spread(number) & mask;
  while (slots_[slot] != 0) {
    if (slots_[slot] == number) return false;
    slot = (slot + 1) & mask;
  }
  slots_[slot] = number;
  ++count_;
  return true;
}

void odd_set::grow() {
  vector<ulonglong> old(slots_.empty() ? 16 : 2 * slots_.size());
  old.swap(slots_);
  count_ = 0;
  for (const ulonglong number : old) {
    if (number != 0) insert(number);
  }
}

void tree_part::adopt(ulonglong own_number, tree_part& child, ulonglong child_number) const {
  if (depth_ + 1 >= max_depth) throw database_corrupt("tree too deep");
  if (loaded_ == nullptr) {
    auto loaded = make_tracked<odd_set>();
    loaded->insert(own_number | 1);
    loaded_ = std::move(loaded);
  }
  if (!loaded_->insert(child_number | 1)) throw database_corrupt("part of a tree met twice");
  child.loaded_ = loaded_;
  child.depth_ = depth_ + 1;
}

}  // namespace pststore
