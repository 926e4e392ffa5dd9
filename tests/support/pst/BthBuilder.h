// BthBuilder.h - writes a B-tree on heap (MS-PST 2.3.2).
//
// As published, a record takes no more room than its key and its data, and bIdxLevels counts the
// levels above the leaves. There are readers that take each record for 8 bytes and count the leaves
// as a level; BthShape::StrideOf8 writes trees for them. The two forms are the same bytes as long
// as a leaf record has 8 bytes (property contexts, row indexes of 4-byte values) and all records
// fit into one allocation.
#ifndef TARN_TESTS_SUPPORT_PST_BTHBUILDER_H
#define TARN_TESTS_SUPPORT_PST_BTHBUILDER_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/pst/HeapBuilder.h"

namespace tarn::test {

struct BthShape {
  // Records of an allocation, in leaves and above; 0 is what fits. Above the leaves 1 counts as 2.
  size_t fanOut = 0;
  // Index levels of one record above a tree that would have fewer.
  uint8_t minIndexLevels = 0;
  // Deviating: each record is filled up with zeros to this many bytes, before a child's id.
  size_t stride = 0;
  // Deviating: bIdxLevels of a tree with index levels is one higher.
  bool countsLeaves = false;
  // Deviating: this bIdxLevels.
  std::optional<uint8_t> levels = {};

  static BthShape StrideOf8() { return {.stride = 8, .countsLeaves = true}; }
};

class BthBuilder {
 public:
  BthBuilder(uint8_t keySize, uint8_t entrySize, const BthShape& shape = {})
      : keySize_(keySize), entrySize_(entrySize), shape_(shape) {}

  // In the order of the keys; the data is written as it is, whatever its size.
  void add(uint32_t key, std::string_view data);
  // Writes the records; the header goes to an allocation of 8 bytes that was reserved for it.
  void write(HeapBuilder& heap, uint32_t headerHid) const;

 private:
  struct Record {
    uint32_t key;
    std::string data;
  };

  // One level of records; returns a record for each allocation of it.
  std::vector<Record> writeLevel(HeapBuilder& heap, const std::vector<Record>& records,
                                 size_t leastFanOut) const;

  uint8_t keySize_;
  uint8_t entrySize_;
  BthShape shape_;
  std::vector<Record> records_;
};

}  // namespace tarn::test

#endif
