// TreeEntries.h - the entries of a page or subnode block: pairs of a key and what it stands for, in
// the order of the file. A position behind them raises database_corrupt.
#ifndef TARN_PSTSTORE_TREEENTRIES_H
#define TARN_PSTSTORE_TREEENTRIES_H

#include <utility>

#include "pststore/Errors.h"
#include "pststore/Types.h"

namespace pststore {

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

}  // namespace pststore

#endif
