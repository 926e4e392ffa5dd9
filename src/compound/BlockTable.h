// BlockTable.h - chains of blocks: for each block of a file the number of the one behind it.
//
// One class serves the big table, of the file's blocks, and the small one, of the small blocks in
// their container. Block numbers are 32-bit numbers kept in 64 bits; special values stand in
// CompoundHeader.h. A damaged table gives short chains and no failure.
#ifndef TARN_COMPOUND_BLOCKTABLE_H
#define TARN_COMPOUND_BLOCKTABLE_H

#include "Common/KernelAllocator.h"
#include "compound/CompoundHeader.h"

namespace tarn {

struct CompoundFile;

using BlockList = KernelVector<uint64_t>;

// Numbers of blocks without repeats, in the order in which they came.
class BlockMarks {
 public:
  void add(uint64_t number);
  bool contains(uint64_t number) const {
    return number < isMarked_.size() && isMarked_[number] != 0;
  }
  bool empty() const { return numbers_.empty(); }
  void clear();
  const BlockList& numbers() const { return numbers_; }

 private:
  BlockList numbers_;
  KernelVector<unsigned char> isMarked_;  // for each number up to the highest
};

struct BlockTable {
  uint64_t blockSize = 4096;  // of the blocks that are chained; the file sets it
  BlockList entries = BlockList(128, kFreeBlock);
  BlockMarks dirtyBlocks;       // indexes of the table's own blocks that changed
  bool maybeFragmented = true;  // a free entry may exist before the end
};

// Grows the table to the index when needed, by free entries.
void SetBlockEntry(BlockTable& table, uint64_t index, uint64_t value);

// The blocks of a chain. It ends at a special value, at a number beyond the table, and where it
// would come back to a block that it holds already; at most the first `most` of its blocks are
// given. Takes time in proportion to what is given.
BlockList FollowChain(const BlockTable& table, uint64_t start, uint64_t most = UINT64_MAX);

// The first free entry. Without one the index behind the last, which SetBlockEntry then makes;
// from then on the table is not searched again until an entry is freed.
uint32_t FirstFreeBlock(BlockTable& table);

// Marks the block of the table that holds the entry. Tables lie in big blocks, the small one too.
void MarkTableDirty(BlockTable& table, uint64_t index, uint64_t bigBlockSize);

// Takes the whole table from its bytes.
void LoadBlockTable(BlockTable& table, const unsigned char* bytes, uint64_t length);

// Writes the marked ones of the table's blocks. Entries stand in them without a gap; what no entry
// fills is FF.
void FlushBlockTable(BlockTable& table, const BlockList& blocks, CompoundFile& file,
                     uint64_t bigBlockSize);

}  // namespace tarn

#endif
