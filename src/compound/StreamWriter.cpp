// Writing the streams of a compound file.

#include <algorithm>

#include "compound/CompoundStream.h"

namespace tarn {
namespace {

void MarkEntryDirty(CompoundStream& stream) {
  MarkDirectoryDirty(stream.file->directory, stream.entryIndex, stream.file->bigBlockSize());
}

// Gives the stream's blocks back to their table. The marks are made for places in the list, not for
// the blocks, so the table block that changed can stay unmarked: files made so far are that way.
void FreeBlocks(CompoundStream& stream, BlockTable& table) {
  for (uint64_t i = 0; i < stream.blocks.size(); ++i) {
    SetBlockEntry(table, stream.blocks[i], kFreeBlock);
    MarkTableDirty(table, i, stream.file->bigBlockSize());
  }
  stream.blocks.clear();
}

uint64_t WriteBig(CompoundStream& stream, uint64_t position, const unsigned char* data,
                  uint64_t length) {
  CompoundFile& file = *stream.file;
  const uint64_t size = file.bigBlockSize();
  while ((position + length - 1) / size >= stream.blocks.size()) ExtendChain(file, stream.blocks);
  const uint64_t first = position / size;
  return SaveBigBlocks(file, stream.blocks.data() + first, stream.blocks.size() - first,
                       position % size, data, length);
}

// Adds a small block to the stream, with what the small table and the container need for it.
void ExtendSmallChain(CompoundStream& stream) {
  CompoundFile& file = *stream.file;
  const uint64_t size = file.bigBlockSize();
  BlockTable& table = file.smallTable;
  const uint64_t block = FirstFreeBlock(table);
  if (!stream.blocks.empty()) {
    SetBlockEntry(table, stream.blocks.back(), block);
    MarkTableDirty(table, stream.blocks.back(), size);
  }
  SetBlockEntry(table, block, kChainEnd);
  MarkTableDirty(table, block, size);
  stream.blocks.push_back(block);

  while (block / (size / 4) >= file.header.smallTableBlockCount) {
    BlockList& chain = file.smallTableChain;
    if (chain.empty()) chain = FollowChain(file.bigTable, file.header.smallTableStart);
    ExtendChain(file, chain);
    ++file.header.smallTableBlockCount;
    file.header.dirty = true;
  }
  while (block * file.smallBlockSize() / size >= file.containerBlocks.size()) {
    ExtendChain(file, file.containerBlocks);
    file.directory.dirtyBlocks.add(0);
  }
}

uint64_t WriteSmall(CompoundStream& stream, uint64_t position, const unsigned char* data,
                    uint64_t length) {
  const uint64_t size = stream.file->smallBlockSize();
  while ((position + length - 1) / size >= stream.blocks.size()) ExtendSmallChain(stream);
  return SaveSmallBlocks(*stream.file, stream.blocks, position % size, data, length,
                         position / size);
}

// Moves the stream from one kind of blocks to the other, with what it holds.
void ChangeKind(CompoundStream& stream, uint64_t size) {
  DirectoryEntry& entry = *stream.entry();
  const bool toSmall = size < stream.file->header.threshold;
  const uint64_t kept = std::min(entry.size, size);
  const uint64_t position = stream.position;
  KernelVector<unsigned char> content(kept, 0);
  if (kept != 0) StreamRead(stream, 0, content.data(), kept);

  FreeBlocks(stream, toSmall ? stream.file->bigTable : stream.file->smallTable);
  entry.size = size;
  entry.start = kNoEntry;
  MarkEntryDirty(stream);
  if (kept != 0) StreamWrite(stream, 0, content.data(), kept);
  if (position <= entry.size) stream.position = position;
}

}  // namespace

void StreamSetSize(CompoundStream& stream, uint64_t size) {
  DirectoryEntry* const entry = stream.entry();
  if (!stream.file->writable || entry == nullptr) return;
  const uint64_t limit = stream.file->header.threshold;
  if ((entry->size < limit) != (size < limit)) {
    ChangeKind(stream, size);
    return;
  }
  if (entry->size == size) return;
  entry->size = size;
  MarkEntryDirty(stream);
}

uint64_t StreamWrite(CompoundStream& stream, uint64_t position, const unsigned char* data,
                     uint64_t length) {
  DirectoryEntry* const entry = stream.entry();
  if (data == nullptr || length == 0 || !stream.file->writable || entry == nullptr) return 0;
  if (length > UINT64_MAX - position) return 0;
  if (position + length > entry->size) StreamSetSize(stream, position + length);

  const uint64_t written = stream.isBig() ? WriteBig(stream, position, data, length)
                                          : WriteSmall(stream, position, data, length);
  if (!stream.blocks.empty() && entry->start != stream.blocks.front()) {
    entry->start = stream.blocks.front();
    MarkEntryDirty(stream);
  }
  stream.position += length;
  return written;
}

}  // namespace tarn
