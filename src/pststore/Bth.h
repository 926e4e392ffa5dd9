// Bth.h - a B-tree in the allocations of a heap (MS-PST, 2.3.2).
//
//   header, an allocation
//     0  1  bth_signature, 0xB5
//     1  1  width of a key
//     2  1  width of a value
//     3  1  levels: 0 or 1 is a lone leaf, n a tree with n - 1 levels above the leaves
//     4  4  heap id of the root
//
//   leaf record      key, value
//   non-leaf record  key, heap id of the child at offset 4
//
// Every record takes 8 bytes, however narrow its parts are, and what is left at the end of an
// allocation is dropped. A root of id 0 is an empty tree.
//
// Nodes hold the heap. A leaf holds a copy of its records; a non-leaf loads its children at the
// first need and keeps them. Operations throw what Heap.h says, and database_corrupt for a tree of
// more records than its heap has room for, or than there are keys.
#ifndef TARN_PSTSTORE_BTH_H
#define TARN_PSTSTORE_BTH_H

#include <boost/core/noncopyable.hpp>
#include <memory>

#include "pststore/BtreeNode.h"
#include "pststore/Heap.h"
#include "pststore/Types.h"

namespace pststore {

namespace disk {

// The entry of a property context.
struct prop_entry {
  ushort wPropType = 0;
  ulong value = 0;  // the value, or the id of the allocation or subnode that holds it
};

}  // namespace disk

// What one tree may still load. All its nodes share it, so that a tree whose nodes name each other
// comes to an end.
class bth_budget {
 public:
  explicit bth_budget(ulonglong records) : left_(records) {}
  void check(ulonglong records) const;
  void spend(ulonglong records) { left_ -= records; }

 private:
  ulonglong left_;
};

template <typename K, typename V>
class bth_node : public virtual btree_node<K, V>, private boost::noncopyable {
 public:
  const heap_ptr& get_heap() const { return heap_; }
  ulong get_id() const { return id_; }
  // 0 for a leaf.
  ushort get_level() const { return level_; }

  // Appends all keys of the tree below this node, in its order.
  virtual void append_keys(vector<K>& keys) const = 0;

 protected:
  bth_node(heap_ptr heap, ulong id, ushort level)
      : heap_(std::move(heap)), id_(id), level_(level) {}

 private:
  heap_ptr heap_;
  ulong id_;
  ushort level_;
};

template <typename K, typename V>
class bth_leaf_node final : public bth_node<K, V>, public btree_node_leaf<K, V> {
 public:
  using records = typename tree_entries<K, V>::list;

  bth_leaf_node(heap_ptr heap, ulong id, records&& leaves)
      : bth_node<K, V>(std::move(heap), id, 0), records_(std::move(leaves)) {}

  K get_key(ulong pos) const override { return records_.get_key(pos); }
  ulong num_values() const override { return records_.size(); }
  const V& get_value(ulong pos) const override { return records_.get_value(pos); }
  void append_keys(vector<K>& keys) const override;

 private:
  tree_entries<K, V> records_;
};

template <typename K, typename V>
class bth_nonleaf_node final : public bth_node<K, V>, public btree_node_nonleaf<K, V> {
 public:
  using records = typename tree_entries<K, ulong>::list;

  bth_nonleaf_node(heap_ptr heap, ulong id, ushort level, records&& children,
                   std::shared_ptr<bth_budget> budget);

  K get_key(ulong pos) const override { return records_.get_key(pos); }
  ulong num_values() const override { return records_.size(); }
  const btree_node<K, V>& get_child(ulong pos) const override { return load_child(pos); }
  btree_node<K, V>& get_child(ulong pos) override { return load_child(pos); }
  void append_keys(vector<K>& keys) const override;

 private:
  bth_node<K, V>& load_child(ulong pos) const;

  tree_entries<K, ulong> records_;
  mutable vector<std::shared_ptr<bth_node<K, V>>> children_;
  std::shared_ptr<bth_budget> budget_;
};

// The tree with its header in the allocation. Throws
//   sig_mismatch       the signature is wrong;
//   std::logic_error   keys or values have not the width of K or V.
template <typename K, typename V>
std::shared_ptr<bth_node<K, V>> open_bth(const heap_ptr& heap, ulong hid);

extern template class bth_leaf_node<ushort, disk::prop_entry>;
extern template class bth_nonleaf_node<ushort, disk::prop_entry>;
extern template class bth_leaf_node<ulong, ulong>;
extern template class bth_nonleaf_node<ulong, ulong>;
extern template class bth_leaf_node<ulong, ushort>;
extern template class bth_nonleaf_node<ulong, ushort>;

using prop_tree = bth_node<ushort, disk::prop_entry>;
extern template std::shared_ptr<prop_tree> open_bth(const heap_ptr&, ulong);
extern template std::shared_ptr<bth_node<ulong, ulong>> open_bth(const heap_ptr&, ulong);
extern template std::shared_ptr<bth_node<ulong, ushort>> open_bth(const heap_ptr&, ulong);

}  // namespace pststore

#endif
