#include "support/pst/BthBuilder.h"

#include <algorithm>

#include "support/pst/PstBytes.h"

namespace tarn::test {
namespace {

constexpr uint8_t kBthSignature = 0xB5;

}  // namespace

void BthBuilder::add(uint32_t key, std::string_view data) {
  records_.push_back({key, std::string(data)});
}

std::vector<BthBuilder::Record> BthBuilder::writeLevel(HeapBuilder& heap,
                                                       const std::vector<Record>& records,
                                                       size_t leastFanOut) const {
  const size_t recordSize = std::max(shape_.stride, keySize_ + records.front().data.size());
  const size_t room = kMaxHeapAllocation / recordSize;
  const size_t fanOut = shape_.fanOut == 0 ? room : std::clamp(shape_.fanOut, leastFanOut, room);
  std::vector<Record> above;
  for (size_t i = 0; i < records.size(); i += fanOut) {
    std::string bytes;
    for (size_t j = i; j < std::min(i + fanOut, records.size()); ++j) {
      const size_t start = bytes.size();
      AppendLe(bytes, records[j].key, keySize_);
      bytes += records[j].data;
      bytes.resize(std::max(bytes.size(), start + shape_.stride));
    }
    // In records of a stride the id of the child is at their end.
    const size_t gap = std::max(shape_.stride, keySize_ + sizeof(uint32_t)) - keySize_ - 4;
    above.push_back({records[i].key, std::string(gap, '\0') + LeBytes(heap.add(bytes), 4)});
  }
  return above;
}

void BthBuilder::write(HeapBuilder& heap, uint32_t headerHid) const {
  uint8_t indexLevels = 0;
  std::string root = LeBytes(0, 4);
  if (!records_.empty()) {
    std::vector<Record> level = writeLevel(heap, records_, 1);
    for (; level.size() > 1 || indexLevels < shape_.minIndexLevels; ++indexLevels) {
      level = writeLevel(heap, level, 2);
    }
    root = level.front().data.substr(level.front().data.size() - 4);
  }
  const bool isOneHigher = shape_.countsLeaves && indexLevels != 0;
  const uint8_t counted = static_cast<uint8_t>(indexLevels + (isOneHigher ? 1 : 0));
  std::string header;
  AppendLe(header, kBthSignature, 1);
  AppendLe(header, keySize_, 1);
  AppendLe(header, entrySize_, 1);
  AppendLe(header, shape_.levels.value_or(counted), 1);
  heap.set(headerHid, header + root);
}

}  // namespace tarn::test
