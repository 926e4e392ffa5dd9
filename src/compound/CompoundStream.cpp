#include "compound/CompoundStream.h"

#include <algorithm>
#include <functional>

namespace tarn {
namespace {

// What a block of a chain costs of the bytes that reads may take, when the chain is followed and
// each time that a read passes over it because nothing is there.
constexpr uint64_t kChainBlockCost = sizeof(uint64_t);

// Reads from big blocks, straight into the buffer; whole blocks that lie side by side in the file
// at once. Only a block that is not read from its beginning goes through a scratch block.
uint64_t ReadBig(CompoundStream& stream, uint64_t position, unsigned char* buffer,
                 uint64_t length) {
  CompoundFile& file = *stream.file;
  const uint64_t size = file.bigBlockSize();
  uint64_t offset = position % size;
  uint64_t copied = 0;
  KernelVector<unsigned char> scratch;
  for (uint64_t i = position / size; i < stream.blocks.size() && copied < length;) {
    const uint64_t* const blocks = stream.blocks.data() + i;
    const uint64_t wanted = length - copied;
    if (offset == 0) {
      const uint64_t whole = std::min<uint64_t>(stream.blocks.size() - i, wanted / size);
      const uint64_t run = std::max<uint64_t>(1, RunOfBlocks(file, blocks, whole));
      const uint64_t most = std::min(run * size, wanted);
      const uint64_t given = LoadBigBlocksCleared(file, blocks, run, buffer + copied, most);
      if (given == 0 && !SpendBytes(file, kChainBlockCost)) break;
      copied += given;
      i += run;
      continue;
    }
    scratch.resize(std::min(size, offset + wanted));
    const uint64_t given = LoadBigBlocksCleared(file, blocks, 1, scratch.data(), scratch.size());
    if (given == 0 && !SpendBytes(file, kChainBlockCost)) break;
    if (given > offset) {
      std::copy_n(scratch.data() + offset, given - offset, buffer);
      copied = given - offset;
    }
    offset = 0;
    ++i;
  }
  return copied;
}

uint64_t ReadSmall(CompoundStream& stream, uint64_t position, unsigned char* buffer,
                   uint64_t length) {
  CompoundFile& file = *stream.file;
  const uint64_t size = file.smallBlockSize();
  uint64_t offset = position % size;
  uint64_t copied = 0;
  KernelVector<unsigned char> scratch(size, 0);
  for (uint64_t i = position / size; i < stream.blocks.size() && copied < length; ++i) {
    const uint64_t given = LoadSmallBlock(file, stream.blocks[i], scratch.data(), size);
    if (given == 0 && !SpendBytes(file, kChainBlockCost)) break;
    if (given > offset) {
      const uint64_t part = std::min(given - offset, length - copied);
      std::copy_n(scratch.data() + offset, part, buffer + copied);
      copied += part;
    }
    offset = 0;
  }
  return copied;
}

}  // namespace

CompoundStream::CompoundStream(CompoundFile& file_, const DirectoryEntry& entry_) : file(&file_) {
  const KernelVector<DirectoryEntry>& entries = file->directory.entries;
  const DirectoryEntry* const first = entries.data();
  const bool ours = !entries.empty() && std::greater_equal<>()(&entry_, first) &&
                    std::less<>()(&entry_, first + entries.size());
  if (ours) entryIndex = static_cast<uint64_t>(&entry_ - first);
  const BlockTable& table =
      entry_.size >= file->header.threshold ? file->bigTable : file->smallTable;
  // The whole chain, however short the stream is: a read goes on behind blocks where nothing is.
  // All chains together cost a bounded time.
  const uint64_t most = file->writable ? UINT64_MAX : file->bytesLeft / kChainBlockCost;
  blocks = FollowChain(table, entry_.start, most);
  SpendBytes(*file, blocks.size() * kChainBlockCost);
}

DirectoryEntry* CompoundStream::entry() const {
  KernelVector<DirectoryEntry>& entries = file->directory.entries;
  return entryIndex < entries.size() ? &entries[entryIndex] : nullptr;
}

uint64_t CompoundStream::size() const {
  const DirectoryEntry* const own = entry();
  return own != nullptr ? own->size : 0;
}

bool CompoundStream::isBig() const { return size() >= file->header.threshold; }

std::optional<CompoundStream> OpenStream(const CompoundStorage& storage, std::string_view path,
                                         bool create) {
  CompoundFile& file = *storage.file;
  const DirectoryEntry* const entry =
      FindEntry(file.directory, path, create, file.bigBlockSize(), &file);
  if (entry == nullptr || entry->isDirectory) return std::nullopt;
  std::optional<CompoundStream> stream(std::in_place, file, *entry);
  stream->fullName = path;
  return stream;
}

uint64_t StreamRead(CompoundStream& stream, uint64_t position, unsigned char* buffer,
                    uint64_t length) {
  const uint64_t size = stream.size();
  if (buffer == nullptr || length == 0 || position >= size) return 0;
  length = std::min(length, size - position);
  return stream.isBig() ? ReadBig(stream, position, buffer, length)
                        : ReadSmall(stream, position, buffer, length);
}

}  // namespace tarn
