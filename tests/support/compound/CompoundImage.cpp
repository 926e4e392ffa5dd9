#include "support/compound/CompoundImage.h"

#include <stdexcept>

namespace tarn::test {
namespace {

constexpr size_t kEntryBytes = 4;

}  // namespace

size_t CompoundImage::tableEntry(uint32_t number) const {
  const size_t perBlock = blockSize / kEntryBytes;
  return block(tableBlocks.at(number / perBlock)) + number % perBlock * kEntryBytes;
}

size_t CompoundImage::smallTableEntry(uint32_t number) const {
  const size_t perBlock = blockSize / kEntryBytes;
  return block(smallTableBlocks.at(number / perBlock)) + number % perBlock * kEntryBytes;
}

size_t CompoundImage::record(uint32_t entry) const {
  const size_t perBlock = blockSize / kRecordBytes;
  return block(directoryBlocks.at(entry / perBlock)) + entry % perBlock * kRecordBytes;
}

size_t CompoundImage::record(std::string_view path) const {
  const auto found = entries.find(path);
  if (found == entries.end()) throw std::out_of_range("no entry of that path");
  return record(found->second);
}

size_t CompoundImage::smallBlock(uint32_t number) const {
  const size_t place = size_t{number} * smallBlockSize;
  return block(containerBlocks.at(place / blockSize)) + place % blockSize;
}

uint64_t CompoundImage::get(size_t offset, size_t width) const {
  uint64_t value = 0;
  for (size_t i = 0; i < width; ++i) {
    value |= uint64_t{static_cast<unsigned char>(bytes.at(offset + i))} << (8 * i);
  }
  return value;
}

void CompoundImage::put(size_t offset, uint64_t value, size_t width) {
  for (size_t i = 0; i < width; ++i) bytes.at(offset + i) = static_cast<char>(value >> (8 * i));
}

}  // namespace tarn::test
