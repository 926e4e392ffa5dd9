// DirtyMarks.h - what the next flush of a compound file has to write.
#ifndef TARN_COMPOUND_DIRTYMARKS_H
#define TARN_COMPOUND_DIRTYMARKS_H

#include "compound/BlockTable.h"

namespace tarn {

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

// Tables and directory are marked by the indexes of their own blocks.
struct DirtyMarks {
  bool header = true;
  BlockMarks bigTable;
  BlockMarks smallTable;
  BlockMarks directory;
  bool meta = false;

  // Those of a file that was never written: the header and the root's block of the directory.
  DirtyMarks() { directory.add(0); }
};

// Marks the block of a table that holds the entry. Tables lie in big blocks, the small one too.
void MarkTableDirty(BlockMarks& dirtyBlocks, uint64_t index, uint64_t bigBlockSize);

// Marks the block of the directory that holds the entry.
void MarkDirectoryDirty(BlockMarks& dirtyBlocks, uint64_t index, uint64_t bigBlockSize);

}  // namespace tarn

#endif
