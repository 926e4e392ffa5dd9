// IdSet.h - a set of node ids of one type. Ids that are close together, as a store gives them, take
// less than a byte each.
#ifndef TARN_ARCHIVE_STORE_IDSET_H
#define TARN_ARCHIVE_STORE_IDSET_H

#include <cstdint>
#include <unordered_map>

namespace tarn::archive::store {

class IdSet {
 public:
  // Whether the id is new.
  bool insert(uint32_t nid) {
    uint64_t& bits = bits_[nid >> kTypeBits >> kIndexBits];
    const uint64_t bit = bitOf(nid);
    const bool isNew = (bits & bit) == 0;
    bits |= bit;
    return isNew;
  }

  bool contains(uint32_t nid) const {
    const auto found = bits_.find(nid >> kTypeBits >> kIndexBits);
    return found != bits_.end() && (found->second & bitOf(nid)) != 0;
  }

 private:
  static constexpr unsigned kTypeBits = 5;
  static constexpr unsigned kIndexBits = 6;

  static uint64_t bitOf(uint32_t nid) { return uint64_t{1} << (nid >> kTypeBits & 63U); }

  std::unordered_map<uint32_t, uint64_t> bits_;
};

}  // namespace tarn::archive::store

#endif
