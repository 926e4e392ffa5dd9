#include "pststore/SubnodeBlocks.h"

#include "pststore/BtreeNode.inc"
#include "pststore/DbContext.h"

namespace pststore {

namespace {

void expect_entry(ulong pos, size_t count) {
  if (pos >= count) throw database_corrupt("position beyond the entries of a subnode block");
}

}  // namespace

ulong subnode_leaf_block::get_key(ulong pos) const {
  expect_entry(pos, entries_.size());
  return entries_[pos].first;
}

const subnode_info& subnode_leaf_block::get_value(ulong pos) const {
  expect_entry(pos, entries_.size());
  return entries_[pos].second;
}

ulong subnode_nonleaf_block::get_key(ulong pos) const {
  expect_entry(pos, entries_.size());
  return entries_[pos].first;
}

subnode_block& subnode_nonleaf_block::load_child(ulong pos) const {
  expect_entry(pos, entries_.size());
  std::shared_ptr<subnode_block>& child = children_[pos];
  if (child == nullptr) {
    const ulonglong id = entries_[pos].second;
    auto loaded = get_context()->read_subnode_block(id);
    adopt(get_id(), *loaded, id);
    child = std::move(loaded);
  }
  return *child;
}

}  // namespace pststore
