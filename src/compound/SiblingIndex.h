// SiblingIndex.h - the names of a directory that is being made, in the order of its trees.
//
// Trees are not balanced when entries are added, and entries come in order, so that a tree is
// mostly one long list. The index finds an entry, and the place where a new one hangs, without
// walking down that list.
#ifndef TARN_COMPOUND_SIBLINGINDEX_H
#define TARN_COMPOUND_SIBLINGINDEX_H

#include <compare>
#include <cstdint>
#include <iterator>
#include <map>
#include <string_view>
#include <utility>

#include "Common/KernelAllocator.h"

namespace tarn {

// Names are ordered by length and then by bytes.
inline std::strong_ordering CompareNames(std::string_view left, std::string_view right) {
  if (left.size() != right.size()) return left.size() <=> right.size();
  return left.compare(right) <=> 0;
}

class SiblingIndex {
 public:
  static constexpr uint64_t kNone = UINT64_MAX;

  struct Place {
    uint64_t match = kNone;   // the entry of that name
    uint64_t before = kNone;  // without a match: the sibling before where it would be
    uint64_t after = kNone;   // and the one after
  };

  void add(uint64_t parent, std::string_view name, uint64_t entry) {
    names_.emplace(Key(parent, KernelString(name)), entry);
  }

  Place find(uint64_t parent, std::string_view name) const {
    Place place;
    const auto at = names_.lower_bound(View(parent, name));
    if (at != names_.end() && at->first.first == parent) {
      if (at->first.second == name) {
        place.match = at->second;
        return place;
      }
      place.after = at->second;
    }
    if (at != names_.begin() && std::prev(at)->first.first == parent) {
      place.before = std::prev(at)->second;
    }
    return place;
  }

 private:
  using Key = std::pair<uint64_t, KernelString>;
  using View = std::pair<uint64_t, std::string_view>;

  struct Less {
    using is_transparent = void;
    template <typename Left, typename Right>
    bool operator()(const Left& left, const Right& right) const {
      if (left.first != right.first) return left.first < right.first;
      return std::is_lt(CompareNames(left.second, right.second));
    }
  };

  std::map<Key, uint64_t, Less, KernelAllocator<std::pair<const Key, uint64_t>>> names_;
};

}  // namespace tarn

#endif
