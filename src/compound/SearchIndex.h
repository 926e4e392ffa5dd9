// SearchIndex.h - what searches find in the storages of a directory that came with a file.
//
// The children of a storage may hang together as one long list. Each search for one of them then
// follows half of the links, and a search for each of n takes time in proportion to n x n. The
// index has the children of such storages in the order of their names. It gives what a search would
// give, on damaged trees too. In this one, "r" hangs to the left of "m":
//
//        m         A search goes left from "m" for names before it alone, so that it never comes
//       / \        to "r" with the name "r". From there it goes left again: "c" is found.
//      r   t
//     /
//    c
//
// So each entry that a search can come to has a range of names for which searches come there, and
// counts as found when its own name is in the range. The ranges of two entries overlap only where
// one of them lies on the way to the other.
#ifndef TARN_COMPOUND_SEARCHINDEX_H
#define TARN_COMPOUND_SEARCHINDEX_H

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

#include "Common/KernelAllocator.h"

namespace tarn {

struct DirectoryEntry;

class SearchIndex {
 public:
  // Takes in the storage `parent`, whose first child is an entry. In a sound directory each entry
  // is looked at once for this, whatever storages are taken in; all calls together look at entries
  // twice as often as there are entries at most. The storage that would take more is left out.
  // Without memory nothing is taken in.
  void add(const KernelVector<DirectoryEntry>& entries, uint64_t parent) noexcept;

  // What a search for the name below the storage finds: an entry, or kNoEntry (DirectoryTree.h).
  // Nothing for a storage that was not taken in.
  std::optional<uint64_t> find(const KernelVector<DirectoryEntry>& entries, uint64_t parent,
                               std::string_view name) const;

  // For directories that change.
  void clear() { storages_.clear(); }

  // How often entries have been looked at to take storages in.
  uint64_t looks() const { return looks_; }

 private:
  using Order = KernelVector<uint64_t>;  // entries in the order of their names

  bool collect(const KernelVector<DirectoryEntry>& entries, uint64_t first, Order& order);

  std::map<uint64_t, Order, std::less<>, KernelAllocator<std::pair<const uint64_t, Order>>>
      storages_;
  uint64_t looks_ = 0;
};

}  // namespace tarn

#endif
