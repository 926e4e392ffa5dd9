#include "pststore/Pages.h"

#include "pststore/BtreeNode.inc"
#include "pststore/DbContext.h"

namespace pststore {

namespace {

void expect_entry(ulong pos, size_t count) {
  if (pos >= count) throw database_corrupt("position beyond the entries of a page");
}

std::shared_ptr<bbt_page> read_page(db_context& context, const page_info& info,
                                    const bbt_nonleaf_page*) {
  return context.read_bbt_page(info);
}

std::shared_ptr<nbt_page> read_page(db_context& context, const page_info& info,
                                    const nbt_nonleaf_page*) {
  return context.read_nbt_page(info);
}

}  // namespace

template <typename K, typename V>
K bt_leaf_page<K, V>::get_key(ulong pos) const {
  expect_entry(pos, entries_.size());
  return entries_[pos].first;
}

template <typename K, typename V>
const V& bt_leaf_page<K, V>::get_value(ulong pos) const {
  expect_entry(pos, entries_.size());
  return entries_[pos].second;
}

template <typename K, typename V>
K bt_nonleaf_page<K, V>::get_key(ulong pos) const {
  expect_entry(pos, entries_.size());
  return entries_[pos].first;
}

template <typename K, typename V>
bt_page<K, V>& bt_nonleaf_page<K, V>::load_child(ulong pos) const {
  expect_entry(pos, entries_.size());
  std::shared_ptr<bt_page<K, V>>& child = children_[pos];
  if (child == nullptr) {
    const page_info& info = entries_[pos].second;
    auto loaded = read_page(*this->get_context(), info, this);
    this->adopt(this->get_address(), *loaded, info.address);
    child = std::move(loaded);
  }
  return *child;
}

template class bt_leaf_page<ulonglong, block_info>;
template class bt_nonleaf_page<ulonglong, block_info>;
template class bt_leaf_page<ulong, node_info>;
template class bt_nonleaf_page<ulong, node_info>;

}  // namespace pststore
