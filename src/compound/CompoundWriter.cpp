// Writing a compound file: its layout, its growth and its flush.
//
//   block 0  first block of the big table     block 2  first block of the small table
//   block 1  first block of the directory     block 3  first block of the container
//
// Files written here differ from MS-CFB in three ways. A block is added to the big table for every
// 64 blocks although it has room for 128 entries; entries stand without a gap, so the second half
// of the table's blocks is unused. Table blocks carry the meta mark, the first one the end mark.
// A meta block holds 63 numbers and a link, two such groups to a block. Readers know none of this:
// the first two do no harm, the third makes files of more than 22,000 blocks unreadable.

#include <algorithm>

#include "Common/LittleEndian.h"
#include "compound/CompoundFile.h"

namespace tarn {
namespace {

// Appends block n to a chain: the last block's entry leads to it.
void LinkBlock(CompoundFile& file, BlockList& chain, uint64_t block) {
  if (!chain.empty()) {
    SetBlockEntry(file.bigTable, chain.back(), block);
    MarkTableDirty(file.bigTable, chain.back(), file.bigBlockSize());
  }
  chain.push_back(block);
}

// A table block is added for every 64 blocks of 512 bytes.
void CoverBlock(CompoundFile& file, uint64_t block) {
  while (block / (file.bigTable.blockSize / 8) >= file.header.tableBlockCount) {
    AddBigTableBlock(file);
  }
}

void FlushMetaBlocks(CompoundFile& file) {
  const uint64_t numbersPerGroup = file.bigBlockSize() / 8 - 1;
  KernelVector<unsigned char> image(file.metaBlocks.size() * file.bigBlockSize(), 0xFF);
  uint64_t at = 0;
  uint64_t groups = 0;
  for (uint64_t i = 0; i < file.metaData.size() && at + 8 <= image.size(); ++i) {
    StoreLittleEndian<uint32_t>(image.data() + at, file.metaData[i]);
    at += 4;
    if ((i + 1) % numbersPerGroup != 0) continue;
    ++groups;
    const bool last = groups >= file.metaBlocks.size();
    StoreLittleEndian<uint32_t>(image.data() + at, last ? kChainEnd : file.metaBlocks[groups]);
    at += 4;
  }
  SaveBigBlocks(file, file.metaBlocks.data(), file.metaBlocks.size(), 0, image.data(),
                image.size());
  file.metaDirty = false;
}

}  // namespace

bool OpenCompoundFile(CompoundFile& file, bool write, bool create) {
  if (file.opened) CloseCompoundFile(file);
  if (create) {
    CreateCompoundLayout(file);
    file.writable = true;
  } else {
    file.writable = write;
    LoadCompoundFile(file);
  }
  return file.result == CompoundOk;
}

void CreateCompoundLayout(CompoundFile& file) {
  ResetTables(file);
  file.result = CompoundOk;
  file.fileSize = 0;
  file.header = CompoundHeader();
  file.header.tableBlocks[0] = 0;
  file.header.directoryStart = 1;
  file.header.smallTableStart = 2;
  file.header.tableBlockCount = 1;
  file.header.smallTableBlockCount = 1;
  for (uint64_t block = 0; block < 4; ++block) {
    SetBlockEntry(file.bigTable, block, kChainEnd);
    MarkTableDirty(file.bigTable, block, file.bigBlockSize());
  }
  file.containerBlocks = FollowChain(file.bigTable, 3);
}

uint64_t ExtendChain(CompoundFile& file, BlockList& chain) {
  const uint64_t block = FirstFreeBlock(file.bigTable);
  SetBlockEntry(file.bigTable, block, kChainEnd);
  CoverBlock(file, block);
  MarkTableDirty(file.bigTable, block, file.bigBlockSize());
  LinkBlock(file, chain, block);
  return block;
}

void AddBigTableBlock(CompoundFile& file) {
  CompoundHeader& header = file.header;
  const uint64_t block = FirstFreeBlock(file.bigTable);
  SetBlockEntry(file.bigTable, block, kMetaBlock);
  if (header.tableBlockCount < kHeaderTableBlocks) {
    header.tableBlocks[header.tableBlockCount] = block;
  } else {
    file.metaDirty = true;
    file.metaData.push_back(block);
    const uint64_t numbersPerBlock = file.bigBlockSize() / 8 - 1;
    const uint64_t needed = (header.tableBlockCount - kHeaderTableBlocks) / numbersPerBlock;
    if (needed == file.metaBlocks.size()) {
      const uint64_t meta = FirstFreeBlock(file.bigTable);
      SetBlockEntry(file.bigTable, meta, kMetaBlock);
      file.metaBlocks.push_back(meta);
      if (header.metaBlockCount == 0) header.metaStart = meta;
      ++header.metaBlockCount;
    }
  }
  ++header.tableBlockCount;
  header.dirty = true;
}

void GrowDirectory(CompoundFile& file, uint64_t index) {
  BlockList& chain = file.directoryChain;
  if (chain.empty()) chain = FollowChain(file.bigTable, file.header.directoryStart);
  while (chain.size() <= index) {
    const uint64_t block = FirstFreeBlock(file.bigTable);
    LinkBlock(file, chain, block);
    SetBlockEntry(file.bigTable, block, kChainEnd);
    MarkTableDirty(file.bigTable, block, file.bigBlockSize());
    CoverBlock(file, block);
  }
}

uint64_t SaveBigBlocks(CompoundFile& file, const uint64_t* blocks, uint64_t count, uint64_t offset,
                       const unsigned char* data, uint64_t length) {
  if (data == nullptr || count == 0 || length == 0) return 0;
  file.window.count = 0;
  const uint64_t size = file.bigBlockSize();
  uint64_t written = 0;
  for (uint64_t i = 0; i < count && written < length; ++i) {
    const uint64_t position = (blocks[i] + 1) * size + offset;
    const uint64_t part = std::min(size - offset, length - written);
    KernelFileSeek(file.handle, static_cast<int64_t>(position), KERNEL_SEEK_START);
    KernelFileWrite(file.handle, data + written, static_cast<uint32_t>(part));
    written += part;
    file.fileSize = std::max(file.fileSize, position + part);
    offset = 0;
  }
  return written;
}

uint64_t SaveBigBlock(CompoundFile& file, uint64_t block, uint64_t offset,
                      const unsigned char* data, uint64_t length) {
  return SaveBigBlocks(file, &block, 1, offset, data, length);
}

uint64_t SaveSmallBlocks(CompoundFile& file, const BlockList& blocks, uint64_t offset,
                         const unsigned char* data, uint64_t length, uint64_t firstIndex) {
  if (data == nullptr || blocks.empty()) return 0;
  const uint64_t size = file.bigBlockSize();
  uint64_t written = 0;
  for (uint64_t i = firstIndex; i < blocks.size() && written < length; ++i) {
    const uint64_t position = file.smallBlockSize() * blocks[i];
    const uint64_t container = position / size;
    if (container >= file.containerBlocks.size()) break;
    const uint64_t part = std::min(length - written, file.smallBlockSize() - offset);
    SaveBigBlock(file, file.containerBlocks[container], position % size + offset, data + written,
                 part);
    written += part;
    file.fileSize = std::max(file.fileSize, position + part);
    offset = 0;
  }
  return written;
}

void FlushCompoundFile(CompoundFile& file) {
  if (file.header.dirty) {
    HeaderBytes bytes;
    SaveHeader(file.header, bytes);
    file.window.count = 0;  // blocks of less than 512 bytes begin inside of the header
    KernelFileSeek(file.handle, 0, KERNEL_SEEK_START);
    KernelFileWrite(file.handle, bytes.data(), static_cast<uint32_t>(bytes.size()));
  }
  const uint64_t size = file.bigBlockSize();
  if (!file.bigTable.dirtyBlocks.empty()) {
    FlushBlockTable(file.bigTable, BigTableBlocks(file, false), file, size);
  }
  if (!file.smallTable.dirtyBlocks.empty()) {
    FlushBlockTable(file.smallTable, FollowChain(file.bigTable, file.header.smallTableStart), file,
                    size);
  }
  if (!file.directory.dirtyBlocks.empty()) {
    const BlockList& container = file.containerBlocks;
    FlushDirectory(file.directory, FollowChain(file.bigTable, file.header.directoryStart), file,
                   size, container.empty() ? kFreeBlock : container.front(),
                   container.size() * size);
  }
  if (file.metaDirty && !file.metaBlocks.empty()) FlushMetaBlocks(file);
}

}  // namespace tarn
