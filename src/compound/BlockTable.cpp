#include "compound/BlockTable.h"

#include <algorithm>

#include "Common/LittleEndian.h"
#include "compound/CompoundFile.h"

namespace tarn {
namespace {

bool EndsChain(uint64_t value) {
  return value == kMetaBlock || value == kTableBlock || value == kChainEnd;
}

// How many blocks a chain that runs into a cycle has in front of the cycle.
uint64_t LengthBeforeCycle(const BlockTable& table, uint64_t start, uint64_t cycleLength) {
  uint64_t ahead = start;
  for (uint64_t i = 0; i < cycleLength; ++i) ahead = table.entries[ahead];
  uint64_t behind = start;
  uint64_t length = 0;
  for (; behind != ahead; ++length) {
    behind = table.entries[behind];
    ahead = table.entries[ahead];
  }
  return length;
}

}  // namespace

void SetBlockEntry(BlockTable& table, uint64_t index, uint64_t value) {
  if (index >= table.entries.size()) table.entries.resize(index + 1, kFreeBlock);
  table.entries[index] = value;
  if (value == kFreeBlock) table.maybeFragmented = true;
}

// A chain ends at the first block that comes twice. To find it without looking back over the whole
// chain, one block is remembered at distances that double (0, 2, 6, 14, ...): a chain that meets it
// has gone once around a cycle, whose length is known then, and is cut behind one turn. A cycle
// that closes within the first n blocks is met within 3 n + 6 steps, so a walk that gives n blocks
// goes on, without collecting, until it knows that they are all different.
BlockList FollowChain(const BlockTable& table, uint64_t start, uint64_t most) {
  BlockList chain;
  const uint64_t count = table.entries.size();
  const uint64_t longest = std::min(most, count);
  uint64_t remembered = kFreeBlock;
  uint64_t sinceRemembered = 0;
  uint64_t distance = 1;
  uint64_t block = start;
  for (uint64_t steps = 0; steps <= 3 * longest + 6; ++steps) {
    if (block >= count || EndsChain(block)) break;
    if (block == remembered) {
      const uint64_t whole = LengthBeforeCycle(table, start, sinceRemembered) + sinceRemembered;
      chain.resize(std::min<uint64_t>(whole, chain.size()));
      break;
    }
    if (sinceRemembered == distance || steps == 0) {
      remembered = block;
      distance *= 2;
      sinceRemembered = 0;
    }
    ++sinceRemembered;
    if (chain.size() < longest) chain.push_back(block);
    block = table.entries[block];
  }
  return chain;
}

uint32_t FirstFreeBlock(BlockTable& table) {
  if (table.maybeFragmented && !table.entries.empty()) {
    const auto free = std::find(table.entries.begin(), table.entries.end(), kFreeBlock);
    if (free != table.entries.end()) return static_cast<uint32_t>(free - table.entries.begin());
  }
  table.maybeFragmented = false;
  return static_cast<uint32_t>(table.entries.size());
}

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

void MarkTableDirty(BlockTable& table, uint64_t index, uint64_t bigBlockSize) {
  table.dirtyBlocks.add(index / (bigBlockSize / 4));
}

void LoadBlockTable(BlockTable& table, const unsigned char* bytes, uint64_t length) {
  const uint64_t count = length / 4;
  table.entries.resize(count, kFreeBlock);
  for (uint64_t i = 0; i < count; ++i)
    SetBlockEntry(table, i, LoadLittleEndian<uint32_t>(bytes + 4 * i));
}

void FlushBlockTable(BlockTable& table, const BlockList& blocks, CompoundFile& file,
                     uint64_t bigBlockSize) {
  const uint64_t size = blocks.size() * bigBlockSize;
  KernelVector<unsigned char> image(size, 0xFF);
  const uint64_t count = std::min<uint64_t>(table.entries.size(), size / 4);
  for (uint64_t i = 0; i < count; ++i)
    StoreLittleEndian<uint32_t>(image.data() + 4 * i, table.entries[i]);
  for (uint64_t i = 0; i < blocks.size(); ++i) {
    if (!table.dirtyBlocks.contains(i)) continue;
    SaveBigBlock(file, blocks[i], 0, image.data() + i * bigBlockSize, bigBlockSize);
  }
  table.dirtyBlocks.clear();
}

}  // namespace tarn
