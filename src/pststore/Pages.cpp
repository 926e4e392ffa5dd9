#include "pststore/Pages.h"

#include "pststore/DbContext.h"

namespace pststore {

namespace {

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
bt_page<K, V>& bt_nonleaf_page<K, V>::load_child(ulong pos) const {
  const page_info& info = entries_.get_value(pos);
  std::shared_ptr<bt_page<K, V>>& child = children_[pos];
  if (child == nullptr) {
    const std::shared_ptr<db_context> context = this->get_context();
    auto loaded = read_page(*context, info, this);
    this->adopt_once(*context, this->get_address(), *loaded, info.address);
    child = std::move(loaded);
  }
  return *child;
}

template class bt_leaf_page<ulonglong, block_info>;
template class bt_nonleaf_page<ulonglong, block_info>;
template class bt_leaf_page<ulong, node_info>;
template class bt_nonleaf_page<ulong, node_info>;

}  // namespace pststore
