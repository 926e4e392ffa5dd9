// KernelMap.h - a growing map in one array of the kernel, for keys that come from hostile files.
//
//   13 entries = 8 + 4 + 1:   | 8 in order | 4 in order | 1 |
//
// The array consists of sorted runs, whose lengths are the powers of two that its size is the sum
// of. A new entry is a run of one; then the runs that the new size has no place for are sorted into
// one with it. Whatever order keys come in, n of them take n log² n comparisons, and a look-up
// log² n. Keys that come in rising order are never moved.
#ifndef TARN_COMMON_KERNELMAP_H
#define TARN_COMMON_KERNELMAP_H

#include <algorithm>
#include <bit>
#include <cstddef>

#include "Common/KernelArray.h"

namespace tarn {

template <typename Key, typename Value>
class KernelMap {
 public:
  size_t size() const { return entries_.size(); }

  // The value of a key, or null. It is valid until the map changes.
  const Value* find(Key key) const {
    const Entry* run = entries_.begin();
    while (run != entries_.end()) {
      const Entry* const end = run + std::bit_floor(static_cast<size_t>(entries_.end() - run));
      const Entry* const at = std::lower_bound(
          run, end, key, [](const Entry& entry, Key wanted) { return entry.key < wanted; });
      if (at != end && !(key < at->key)) return &at->value;
      run = end;
    }
    return nullptr;
  }
  Value* find(Key key) { return const_cast<Value*>(std::as_const(*this).find(key)); }

  // Adds a key that the map does not have. False without memory; the map is as it was.
  [[nodiscard]] bool add(Key key, const Value& value) {
    if (!entries_.append({key, value})) return false;
    const size_t lastRun = size_t{1} << std::countr_zero(entries_.size());
    const auto isBefore = [](const Entry& a, const Entry& b) { return a.key < b.key; };
    Entry* const run = entries_.end() - lastRun;
    if (!std::is_sorted(run, entries_.end(), isBefore)) {
      std::sort(run, entries_.end(), isBefore);
    }
    return true;
  }

  void clear() { entries_.clear(); }

 private:
  struct Entry {
    Key key;
    Value value;
  };

  KernelArray<Entry> entries_;
};

}  // namespace tarn

#endif
