// BlockTable.h - chains of blocks: for each block of a file the number of the next one.
//
// One class serves the big table, of the file's blocks, and the small one, of the small blocks in
// their container. Block numbers are 32-bit numbers kept in 64 bits; CompoundHeader.h has the
// special values. A damaged table gives short chains and no failure.
#ifndef TARN_COMPOUND_BLOCKTABLE_H
#define TARN_COMPOUND_BLOCKTABLE_H

#include <span>

#include "Common/KernelAllocator.h"
#include "compound/CompoundHeader.h"

namespace tarn {

using BlockList = KernelVector<uint64_t>;
using BlockView = std::span<const uint64_t>;
using ByteView = std::span<const unsigned char>;
using ByteSpan = std::span<unsigned char>;

struct BlockTable {
  uint64_t blockSize;  // of the blocks that are chained
  BlockList entries = BlockList(128, kFreeBlock);
  bool maybeFragmented = true;  // a free entry may exist before the end

  explicit BlockTable(uint64_t blockSize_ = 4096) : blockSize(blockSize_) {}
};

// Grows the table to the index when needed, by free entries.
void SetBlockEntry(BlockTable& table, uint64_t index, uint64_t value);

// The blocks of a chain. It ends at a special value, at a number beyond the table, and where it
// would come back to a block that it holds already; at most the first `most` of its blocks are
// given. Takes time in proportion to what is given.
BlockList FollowChain(const BlockTable& table, uint64_t start, uint64_t most = UINT64_MAX);

// The first free entry. Without one the index after the last, which SetBlockEntry then makes; from
// then on the table is not searched again until an entry is freed.
uint64_t FirstFreeBlock(BlockTable& table);

// Takes the whole table from its bytes.
void LoadBlockTable(BlockTable& table, ByteView bytes);

}  // namespace tarn

#endif
