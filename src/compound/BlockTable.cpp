#include "compound/BlockTable.h"

#include <algorithm>

#include "Common/LittleEndian.h"

namespace tarn {
namespace {

bool EndsChain(uint64_t value) {
  return value == kMetaBlock || value == kTableBlock || value == kChainEnd;
}

// How many blocks a chain that runs into a cycle has before the cycle.
uint64_t LengthBeforeCycle(const BlockTable& table, uint64_t start, uint64_t cycleLength) {
  uint64_t ahead = start;
  for (uint64_t i = 0; i < cycleLength; ++i) ahead = table.entries[ahead];
  uint64_t block = start;
  uint64_t length = 0;
  for (; block != ahead; ++length) {
    block = table.entries[block];
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
// has gone once around a cycle, whose length is known then, and is cut after one turn. A cycle
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

uint64_t FirstFreeBlock(BlockTable& table) {
  const BlockList& entries = table.entries;
  if (table.maybeFragmented) {
    for (uint64_t i = 0; i < entries.size(); ++i) {
      if (entries[i] == kFreeBlock) return i;
    }
  }
  table.maybeFragmented = false;
  return entries.size();
}

void LoadBlockTable(BlockTable& table, ByteView bytes) {
  table.entries.resize(bytes.size() / 4, kFreeBlock);
  const unsigned char* entry = bytes.data();
  for (uint64_t& value : table.entries) {
    value = LoadLittleEndian<uint32_t>(entry);
    if (value == kFreeBlock) table.maybeFragmented = true;
    entry += 4;
  }
}

}  // namespace tarn
