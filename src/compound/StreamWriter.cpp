// Writing the streams of a compound file.

#include <algorithm>

#include "compound/CompoundStream.h"
#include "compound/CompoundWriter.h"

namespace tarn {

void CompoundWriter::setExtent(const CompoundStream& stream, uint64_t start, uint64_t size) {
  parts_.directory.setExtent(stream.entryIndex, start, size);
  MarkDirectoryDirty(marks_.directory, stream.entryIndex, parts_.big.blockSize());
}

// Gives a stream's blocks back to their table. The marks are made for places in the chain, not for
// the blocks, so the table block that changed can stay unmarked: files made so far are that way.
void CompoundWriter::freeBlocks(BlockList& chain, bool big) {
  for (uint64_t i = 0; i < chain.size(); ++i) {
    SetBlockEntry(big ? parts_.bigTable : parts_.smallTable, chain[i], kFreeBlock);
    markTable(big ? marks_.bigTable : marks_.smallTable, i);
  }
  chain.clear();
}

uint64_t CompoundWriter::writeBig(CompoundStream& stream, uint64_t position, ByteView data) {
  const uint64_t size = parts_.big.blockSize();
  while ((position + data.size() - 1) / size >= stream.blocks.size()) extend(stream.blocks);
  return parts_.big.write(BlockView(stream.blocks).subspan(position / size), position % size, data);
}

// Adds a small block to a chain, with what the small table and the container need for it.
void CompoundWriter::extendSmallChain(BlockList& chain) {
  const uint64_t size = parts_.big.blockSize();
  BlockTable& table = parts_.smallTable;
  const uint64_t block = FirstFreeBlock(table);
  if (!chain.empty()) {
    SetBlockEntry(table, chain.back(), block);
    markTable(marks_.smallTable, chain.back());
  }
  SetBlockEntry(table, block, kChainEnd);
  markTable(marks_.smallTable, block);
  chain.push_back(block);

  CompoundHeader& header = parts_.header;
  while (block / (size / 4) >= header.smallTableBlockCount) {
    BlockList& blocks = smallTableChain_;
    if (blocks.empty()) blocks = FollowChain(parts_.bigTable, header.smallTableStart);
    extend(blocks);
    ++header.smallTableBlockCount;
    marks_.header = true;
  }
  while (block * table.blockSize / size >= parts_.small.container().size()) {
    parts_.small.addToContainer(addBlockAfter(parts_.small.container()));
    marks_.directory.add(0);
  }
}

uint64_t CompoundWriter::writeSmall(CompoundStream& stream, uint64_t position, ByteView data) {
  const uint64_t size = parts_.small.blockSize();
  while ((position + data.size() - 1) / size >= stream.blocks.size()) {
    extendSmallChain(stream.blocks);
  }
  return parts_.small.write(BlockView(stream.blocks).subspan(position / size), position % size,
                            data);
}

// Moves the stream from one kind of blocks to the other, with what it holds.
void CompoundWriter::changeKind(CompoundStream& stream, uint64_t size) {
  const uint64_t kept = std::min(stream.size(), size);
  const uint64_t position = stream.position;
  KernelVector<unsigned char> content(kept, 0);
  StreamRead(stream, 0, content);

  freeBlocks(stream.blocks, stream.isBig());
  setExtent(stream, kNoEntry, size);
  write(stream, 0, content);
  if (position <= size) stream.position = position;
}

void CompoundWriter::setSize(CompoundStream& stream, uint64_t size) {
  const DirectoryEntry* const entry = stream.entry();
  if (entry == nullptr) return;
  const uint64_t limit = parts_.header.threshold;
  if ((entry->size < limit) != (size < limit)) {
    changeKind(stream, size);
  } else if (entry->size != size) {
    setExtent(stream, entry->start, size);
  }
}

uint64_t CompoundWriter::write(CompoundStream& stream, uint64_t position, ByteView data) {
  const DirectoryEntry* const entry = stream.entry();
  if (data.empty() || entry == nullptr || data.size() > UINT64_MAX - position) return 0;
  if (position + data.size() > entry->size) setSize(stream, position + data.size());

  const uint64_t written =
      stream.isBig() ? writeBig(stream, position, data) : writeSmall(stream, position, data);
  if (!stream.blocks.empty() && entry->start != stream.blocks.front()) {
    setExtent(stream, stream.blocks.front(), entry->size);
  }
  stream.position += data.size();
  return written;
}

}  // namespace tarn
