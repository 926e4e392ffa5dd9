// Pages.h - the pages of the node B-tree and the block B-tree (MS-PST, 2.2.2.7.7).
//
// A page is made in one step from its 512 bytes and never changes, but for the children that it
// loads at the first need and keeps. It refers to its context weakly (TreePart.h).
#ifndef TARN_PSTSTORE_PAGES_H
#define TARN_PSTSTORE_PAGES_H

#include <memory>

#include "pststore/BtreeNode.h"
#include "pststore/TreePart.h"
#include "pststore/Types.h"

namespace pststore {

class page : public context_ref, public tree_part {
 public:
  page(const std::shared_ptr<db_context>& context, const page_info& info)
      : context_ref(context), info_(info) {}

  ulonglong get_page_id() const { return info_.id; }
  ulonglong get_address() const { return info_.address; }

 protected:
  ~page() = default;

 private:
  page_info info_;
};

template <typename K, typename V>
class bt_page : public page, public virtual btree_node<K, V> {
 public:
  bt_page(const std::shared_ptr<db_context>& context, const page_info& info, ushort level)
      : page(context, info), level_(level) {}

  // 0 for a leaf.
  ushort get_level() const { return level_; }

 private:
  ushort level_;
};

template <typename K, typename V>
class bt_leaf_page final : public bt_page<K, V>, public btree_node_leaf<K, V> {
 public:
  using entries = typename tree_entries<K, V>::list;

  bt_leaf_page(const std::shared_ptr<db_context>& context, const page_info& info, entries&& leaves)
      : bt_page<K, V>(context, info, 0), entries_(std::move(leaves)) {}

  K get_key(ulong pos) const override { return entries_.get_key(pos); }
  ulong num_values() const override { return entries_.size(); }
  const V& get_value(ulong pos) const override { return entries_.get_value(pos); }

 private:
  tree_entries<K, V> entries_;
};

template <typename K, typename V>
class bt_nonleaf_page final : public bt_page<K, V>, public btree_node_nonleaf<K, V> {
 public:
  using entries = typename tree_entries<K, page_info>::list;

  bt_nonleaf_page(const std::shared_ptr<db_context>& context, const page_info& info, ushort level,
                  entries&& children)
      : bt_page<K, V>(context, info, level),
        entries_(std::move(children)),
        children_(entries_.size()) {}

  K get_key(ulong pos) const override { return entries_.get_key(pos); }
  ulong num_values() const override { return entries_.size(); }
  const btree_node<K, V>& get_child(ulong pos) const override { return load_child(pos); }
  btree_node<K, V>& get_child(ulong pos) override { return load_child(pos); }

  // Not used by the filter: where the child is, for those who read pages without keeping them.
  const page_info& get_child_info(ulong pos) const { return entries_.get_value(pos); }

 private:
  bt_page<K, V>& load_child(ulong pos) const;

  tree_entries<K, page_info> entries_;
  mutable vector<std::shared_ptr<bt_page<K, V>>> children_;
};

using bbt_page = bt_page<ulonglong, block_info>;
using bbt_leaf_page = bt_leaf_page<ulonglong, block_info>;
using bbt_nonleaf_page = bt_nonleaf_page<ulonglong, block_info>;
using nbt_page = bt_page<ulong, node_info>;
using nbt_leaf_page = bt_leaf_page<ulong, node_info>;
using nbt_nonleaf_page = bt_nonleaf_page<ulong, node_info>;

extern template class bt_leaf_page<ulonglong, block_info>;
extern template class bt_nonleaf_page<ulonglong, block_info>;
extern template class bt_leaf_page<ulong, node_info>;
extern template class bt_nonleaf_page<ulong, node_info>;

}  // namespace pststore

#endif
