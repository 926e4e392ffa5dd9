#include "compound/CompoundHeader.h"

#include <algorithm>

#include "Common/LittleEndian.h"

namespace tarn {
namespace {

constexpr uint64_t kTableBlocksOffset = 76;

struct HeaderField {
  uint64_t offset;
  uint64_t size;
  uint64_t CompoundHeader::*field;
};

constexpr HeaderField kFields[] = {
    {30, 2, &CompoundHeader::bigShift},
    {32, 2, &CompoundHeader::smallShift},
    {44, 4, &CompoundHeader::tableBlockCount},
    {48, 4, &CompoundHeader::directoryStart},
    {56, 4, &CompoundHeader::threshold},
    {60, 4, &CompoundHeader::smallTableStart},
    {64, 4, &CompoundHeader::smallTableBlockCount},
    {68, 4, &CompoundHeader::metaStart},
    {72, 4, &CompoundHeader::metaBlockCount},
};

}  // namespace

bool CompoundHeader::isReadable() const {
  if (threshold != kSmallStreamLimit) return false;
  if (tableBlockCount == 0) return false;
  if (tableBlockCount < kHeaderTableBlocks && metaBlockCount != 0) return false;
  if (smallShift > bigShift) return false;
  if (bigShift < 7 || bigShift > 30) return false;
  for (uint64_t i = 0; i < kHeaderTableBlocks && i < tableBlockCount; ++i) {
    if (tableBlocks[i] == kFreeBlock) return false;
  }
  return true;
}

void LoadHeader(CompoundHeader& header, const HeaderBytes& bytes) {
  std::copy_n(bytes.begin(), header.magic.size(), header.magic.begin());
  for (const HeaderField& row : kFields) {
    const unsigned char* const at = bytes.data() + row.offset;
    header.*row.field =
        row.size == 2 ? LoadLittleEndian<uint16_t>(at) : LoadLittleEndian<uint32_t>(at);
  }
  for (uint64_t i = 0; i < kHeaderTableBlocks; ++i) {
    header.tableBlocks[i] = LoadLittleEndian<uint32_t>(bytes.data() + kTableBlocksOffset + 4 * i);
  }
}

void SaveHeader(const CompoundHeader& header, HeaderBytes& bytes) {
  bytes.fill(0);
  std::copy(kCompoundMagic.begin(), kCompoundMagic.end(), bytes.begin());
  StoreLittleEndian<uint16_t>(bytes.data() + 24, 62);
  StoreLittleEndian<uint16_t>(bytes.data() + 26, 3);
  StoreLittleEndian<uint16_t>(bytes.data() + 28, 0xFFFE);
  for (const HeaderField& row : kFields) {
    unsigned char* const at = bytes.data() + row.offset;
    if (row.size == 2) {
      StoreLittleEndian<uint16_t>(at, header.*row.field);
    } else {
      StoreLittleEndian<uint32_t>(at, header.*row.field);
    }
  }
  for (uint64_t i = 0; i < kHeaderTableBlocks; ++i) {
    StoreLittleEndian<uint32_t>(bytes.data() + kTableBlocksOffset + 4 * i, header.tableBlocks[i]);
  }
}

}  // namespace tarn
