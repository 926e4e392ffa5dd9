// BtreeNode.h - the B-tree that all ordered structures of a store are: the node and the block
// B-tree in pages, the subnode trees in blocks, and the BTHs in heaps. Search and iteration stand
// here once; the classes of those structures add only how entries are stored and children loaded.
//
// Entries are taken as they stand, in the order of the file. The key of a non-leaf entry is the
// lowest key below it.
#ifndef TARN_PSTSTORE_BTREENODE_H
#define TARN_PSTSTORE_BTREENODE_H

#include "pststore/Errors.h"
#include "pststore/Types.h"

namespace pststore {

template <typename K, typename V>
class btree_node_leaf;
template <typename K, typename V>
class btree_node_nonleaf;

// A place in a tree. Nothing in it is owned: the tree has to live. Two places are equal when leaf
// and leaf_pos are. The end is the last leaf with leaf_pos equal to its number of values.
template <typename K, typename V>
struct btree_iter_impl {
  const btree_node_leaf<K, V>* leaf = nullptr;
  ulong leaf_pos = 0;
  vector<std::pair<const btree_node_nonleaf<K, V>*, ulong>> path;  // from the root downwards

  friend bool operator==(const btree_iter_impl& left, const btree_iter_impl& right) {
    return left.leaf == right.leaf && left.leaf_pos == right.leaf_pos;
  }
};

template <typename K, typename V>
class btree_node {
 public:
  virtual ~btree_node() = default;

  // The value of the key; throws key_not_found<K>.
  virtual V lookup(const K& key) const = 0;
  // The same, but false for a key that is not there.
  virtual bool try_lookup(const K& key, V& value) const = 0;
  virtual K get_key(ulong pos) const = 0;
  virtual ulong num_values() const = 0;
  virtual void first(btree_iter_impl<K, V>& iter) const = 0;
  virtual void last(btree_iter_impl<K, V>& iter) const = 0;
  virtual void next(btree_iter_impl<K, V>& iter) const = 0;
  virtual void prev(btree_iter_impl<K, V>& iter) const = 0;

  // The greatest position whose key is not above `key` (an equal key ends the search at once);
  // all ones when there is none.
  ulong binary_search(const K& key) const;
};

// Their operations stand in BtreeNode.inc, to be included where a tree is instantiated.
template <typename K, typename V>
class btree_node_leaf : public virtual btree_node<K, V> {
 public:
  virtual const V& get_value(ulong pos) const = 0;

  V lookup(const K& key) const override;
  bool try_lookup(const K& key, V& value) const override;
  void first(btree_iter_impl<K, V>& iter) const override;
  void last(btree_iter_impl<K, V>& iter) const override;
  void next(btree_iter_impl<K, V>& iter) const override;
  void prev(btree_iter_impl<K, V>& iter) const override;
};

template <typename K, typename V>
class btree_node_nonleaf : public virtual btree_node<K, V> {
 public:
  // The child, loaded at the first need and kept.
  virtual const btree_node<K, V>& get_child(ulong pos) const = 0;
  virtual btree_node<K, V>& get_child(ulong pos) = 0;

  V lookup(const K& key) const override;
  bool try_lookup(const K& key, V& value) const override;
  void first(btree_iter_impl<K, V>& iter) const override;
  void last(btree_iter_impl<K, V>& iter) const override;
  void next(btree_iter_impl<K, V>& iter) const override;
  void prev(btree_iter_impl<K, V>& iter) const override;
};

}  // namespace pststore

#endif
