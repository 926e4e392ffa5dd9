#include "compound/DirtyMarks.h"

#include "compound/DirectoryTree.h"

namespace tarn {

void BlockMarks::add(uint64_t number) {
  if (contains(number)) return;
  if (number >= isMarked_.size()) isMarked_.resize(number + 1, 0);
  numbers_.push_back(number);
  isMarked_[number] = 1;
}

void BlockMarks::clear() {
  for (const uint64_t number : numbers_) isMarked_[number] = 0;
  numbers_.clear();
}

void MarkTableDirty(BlockMarks& dirtyBlocks, uint64_t index, uint64_t bigBlockSize) {
  dirtyBlocks.add(index / (bigBlockSize / 4));
}

void MarkDirectoryDirty(BlockMarks& dirtyBlocks, uint64_t index, uint64_t bigBlockSize) {
  dirtyBlocks.add(index / (bigBlockSize / kDirectoryRecordSize));
}

}  // namespace tarn
