// BtreeNode.h - the B-tree that all ordered structures of a store are: the node and the block
// B-tree in pages, the subnode trees in blocks, and the BTHs in heaps. Search and iteration are
// here once; the classes of those structures add only how entries are stored and children loaded.
//
// Entries are taken as they are, in the order of the file. The key of a non-leaf entry is the
// lowest key below it.
//
// Iteration is a walk of `path`: a leaf that is used up hands over to the last non-leaf on the
// path, which goes to its next child or, used up itself, takes itself off the path and hands over
// to the one above. The path is no longer than the tree is deep, and so is the recursion.
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
  // What binary_search gives when no key is low enough.
  static constexpr ulong no_position = std::numeric_limits<ulong>::max();

  virtual ~btree_node() = default;

  // The value of the key; throws key_not_found<K>.
  V lookup(const K& key) const;
  // The same value, or null for a key that is not there. It lives as long as the tree.
  virtual const V* find(const K& key) const = 0;
  virtual K get_key(ulong pos) const = 0;
  virtual ulong num_values() const = 0;
  virtual void first(btree_iter_impl<K, V>& iter) const = 0;
  virtual void last(btree_iter_impl<K, V>& iter) const = 0;
  // Goes on to the next value; from the last one to the end. Not to be called at the end. Throws
  // database_corrupt for an empty leaf before others, and what loading a child throws; the place is
  // of no use then.
  virtual void next(btree_iter_impl<K, V>& iter) const = 0;
  // Not used by the filter.
  virtual void prev(btree_iter_impl<K, V>& iter) const = 0;

  // The greatest position whose key is not above `key` (an equal key ends the search at once), or
  // no_position.
  ulong binary_search(const K& key) const;
};

template <typename K, typename V>
class btree_node_leaf : public virtual btree_node<K, V> {
 public:
  virtual const V& get_value(ulong pos) const = 0;

  const V* find(const K& key) const override;
  void first(btree_iter_impl<K, V>& iter) const override;
  void last(btree_iter_impl<K, V>& iter) const override;
  void next(btree_iter_impl<K, V>& iter) const override;
  // Going back before the first entry loses the leaf when there are non-leaves above it, and
  // changes nothing when there are none.
  void prev(btree_iter_impl<K, V>& iter) const override;
};

template <typename K, typename V>
class btree_node_nonleaf : public virtual btree_node<K, V> {
 public:
  // The child, loaded at the first need and kept.
  virtual const btree_node<K, V>& get_child(ulong pos) const = 0;
  virtual btree_node<K, V>& get_child(ulong pos) = 0;

  const V* find(const K& key) const override;
  void first(btree_iter_impl<K, V>& iter) const override;
  void last(btree_iter_impl<K, V>& iter) const override;
  void next(btree_iter_impl<K, V>& iter) const override;
  void prev(btree_iter_impl<K, V>& iter) const override;
};

// The entries of one node: pairs of a key and what belongs to it, in the order of the file. A
// position after the last one raises database_corrupt.
template <typename K, typename V>
class tree_entries {
 public:
  using list = vector<std::pair<K, V>>;

  explicit tree_entries(list&& entries) : entries_(std::move(entries)) {}

  ulong size() const { return static_cast<ulong>(entries_.size()); }
  K get_key(ulong pos) const { return at(pos).first; }
  const V& get_value(ulong pos) const { return at(pos).second; }

 private:
  const std::pair<K, V>& at(ulong pos) const {
    if (pos >= entries_.size()) throw database_corrupt("position beyond the entries");
    return entries_[pos];
  }

  list entries_;
};

namespace detail {

// Whether anything on the path has a child after the one that was taken.
template <typename K, typename V>
bool goes_on(const btree_iter_impl<K, V>& iter) {
  for (const auto& [node, index] : iter.path) {
    if (index + 1 < node->num_values()) return true;
  }
  return false;
}

// A leaf without entries may only be the last one of a tree, where its first place is the end.
// Before other leaves it would be a place without a value that no step leaves.
template <typename K, typename V>
void refuse_gap(ulong count, const btree_iter_impl<K, V>& iter) {
  if (count == 0 && goes_on(iter)) throw database_corrupt("empty leaf inside a tree");
}

}  // namespace detail

template <typename K, typename V>
V btree_node<K, V>::lookup(const K& key) const {
  const V* const value = find(key);
  if (value == nullptr) throw key_not_found<K>(key);
  return *value;
}

template <typename K, typename V>
ulong btree_node<K, V>::binary_search(const K& key) const {
  ulong end = num_values();
  ulong start = 0;
  ulong mid = end / 2;
  while (mid < end) {
    const K found = get_key(mid);
    if (found < key) {
      start = mid + 1;
    } else if (found == key) {
      return mid;
    } else {
      end = mid;
    }
    mid = (start + end) / 2;
  }
  return mid - 1;
}

template <typename K, typename V>
const V* btree_node_leaf<K, V>::find(const K& key) const {
  const ulong pos = this->binary_search(key);
  if (pos == this->no_position || this->get_key(pos) != key) return nullptr;
  return &get_value(pos);
}

template <typename K, typename V>
void btree_node_leaf<K, V>::first(btree_iter_impl<K, V>& iter) const {
  detail::refuse_gap(this->num_values(), iter);
  iter.leaf = this;
  iter.leaf_pos = 0;
}

template <typename K, typename V>
void btree_node_leaf<K, V>::last(btree_iter_impl<K, V>& iter) const {
  detail::refuse_gap(this->num_values(), iter);
  iter.leaf = this;
  iter.leaf_pos = this->num_values() - 1;
}

template <typename K, typename V>
void btree_node_leaf<K, V>::next(btree_iter_impl<K, V>& iter) const {
  ++iter.leaf_pos;
  if (iter.leaf_pos != this->num_values() || !detail::goes_on(iter)) return;
  iter.leaf = nullptr;
  iter.path.back().first->next(iter);
}

template <typename K, typename V>
void btree_node_leaf<K, V>::prev(btree_iter_impl<K, V>& iter) const {
  if (iter.leaf_pos != 0) {
    --iter.leaf_pos;
    return;
  }
  for (const auto& [node, index] : iter.path) {
    iter.leaf = nullptr;
    if (index != 0 && node->num_values() > 1) {
      iter.path.back().first->prev(iter);
      return;
    }
  }
}

template <typename K, typename V>
const V* btree_node_nonleaf<K, V>::find(const K& key) const {
  const ulong pos = this->binary_search(key);
  return pos == this->no_position ? nullptr : get_child(pos).find(key);
}

template <typename K, typename V>
void btree_node_nonleaf<K, V>::first(btree_iter_impl<K, V>& iter) const {
  iter.path.emplace_back(this, 0);
  get_child(0).first(iter);
}

template <typename K, typename V>
void btree_node_nonleaf<K, V>::last(btree_iter_impl<K, V>& iter) const {
  const ulong pos = this->num_values() - 1;
  iter.path.emplace_back(this, pos);
  get_child(pos).last(iter);
}

template <typename K, typename V>
void btree_node_nonleaf<K, V>::next(btree_iter_impl<K, V>& iter) const {
  const ulong pos = ++iter.path.back().second;
  if (pos != this->num_values()) {
    get_child(pos).first(iter);
  } else if (iter.path.size() > 1) {
    iter.path.pop_back();
    iter.path.back().first->next(iter);
  }
}

template <typename K, typename V>
void btree_node_nonleaf<K, V>::prev(btree_iter_impl<K, V>& iter) const {
  if (iter.path.back().second != 0) {
    const ulong pos = --iter.path.back().second;
    get_child(pos).last(iter);
  } else if (iter.path.size() > 1) {
    iter.path.pop_back();
    iter.path.back().first->prev(iter);
  }
}

}  // namespace pststore

#endif
