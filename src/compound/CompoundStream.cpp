#include "compound/CompoundStream.h"

#include <algorithm>

#include "compound/CompoundOperations.h"

namespace tarn {

CompoundStream::CompoundStream(CompoundFile& file_, const DirectoryEntry& entry_) : file(&file_) {
  CompoundParts& parts = PartsOf(file_);
  entryIndex = parts.directory.indexOf(entry_);
  const bool big = entry_.size >= parts.header.threshold;
  // The whole chain, however short the stream is: a read goes on after blocks where nothing is.
  // All chains together cost a bounded time.
  const uint64_t most = parts.writable ? UINT64_MAX : parts.big.bytesLeft() / kChainBlockCost;
  blocks = FollowChain(big ? parts.bigTable : parts.smallTable, entry_.start, most);
  parts.big.spend(blocks.size() * kChainBlockCost);
}

const DirectoryEntry* CompoundStream::entry() const {
  const DirectoryTree::Entries& entries = PartsOf(*file).directory.entries();
  return entryIndex < entries.size() ? &entries[entryIndex] : nullptr;
}

uint64_t CompoundStream::size() const {
  const DirectoryEntry* const own = entry();
  return own != nullptr ? own->size : 0;
}

bool CompoundStream::isBig() const { return size() >= PartsOf(*file).header.threshold; }

uint64_t StreamRead(CompoundStream& stream, uint64_t position, ByteSpan buffer) {
  const uint64_t size = stream.size();
  if (buffer.empty() || position >= size) return 0;
  buffer = buffer.first(std::min<uint64_t>(buffer.size(), size - position));
  CompoundParts& parts = PartsOf(*stream.file);
  return stream.isBig() ? parts.big.readChain(stream.blocks, position, buffer)
                        : parts.small.readChain(stream.blocks, position, buffer);
}

uint64_t StreamWrite(CompoundStream& stream, uint64_t position, ByteView data) {
  return stream.file->isWritable() ? WriterOf(*stream.file).write(stream, position, data) : 0;
}

void StreamSetSize(CompoundStream& stream, uint64_t size) {
  if (stream.file->isWritable()) WriterOf(*stream.file).setSize(stream, size);
}

}  // namespace tarn
