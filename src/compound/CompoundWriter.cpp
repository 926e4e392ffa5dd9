#include "compound/CompoundWriter.h"

#include <algorithm>

#include "Common/LittleEndian.h"

namespace tarn {

void CompoundWriter::createLayout() {
  reset();
  parts_.reset();
  parts_.result = CompoundOk;
  parts_.header = CompoundHeader();
  parts_.header.tableBlocks[0] = 0;
  parts_.header.directoryStart = 1;
  parts_.header.smallTableStart = 2;
  parts_.header.tableBlockCount = 1;
  parts_.header.smallTableBlockCount = 1;
  marks_.header = true;
  for (uint64_t block = 0; block < 4; ++block) {
    SetBlockEntry(parts_.bigTable, block, kChainEnd);
    markTable(marks_.bigTable, block);
  }
  parts_.small.setContainer(FollowChain(parts_.bigTable, 3));
}

void CompoundWriter::reset() {
  marks_ = DirtyMarks();
  marks_.header = false;
  directoryChain_.clear();
  smallTableChain_.clear();
}

void CompoundWriter::markTable(BlockMarks& marks, uint64_t index) {
  MarkTableDirty(marks, index, parts_.big.blockSize());
}

// A new block that the last one of the chain leads to. A table block is added for every 64 blocks
// of 512 bytes.
uint64_t CompoundWriter::addBlockAfter(BlockView chain) {
  BlockTable& table = parts_.bigTable;
  const uint64_t block = FirstFreeBlock(table);
  SetBlockEntry(table, block, kChainEnd);
  while (block / (table.blockSize / 8) >= parts_.header.tableBlockCount) addTableBlock();
  markTable(marks_.bigTable, block);
  if (!chain.empty()) {
    SetBlockEntry(table, chain.back(), block);
    markTable(marks_.bigTable, chain.back());
  }
  return block;
}

uint64_t CompoundWriter::extend(BlockList& chain) {
  chain.push_back(addBlockAfter(chain));
  return chain.back();
}

void CompoundWriter::addTableBlock() {
  CompoundHeader& header = parts_.header;
  const uint64_t block = FirstFreeBlock(parts_.bigTable);
  SetBlockEntry(parts_.bigTable, block, kMetaBlock);
  if (header.tableBlockCount < kHeaderTableBlocks) {
    header.tableBlocks[header.tableBlockCount] = block;
  } else {
    marks_.meta = true;
    parts_.metaData.push_back(block);
    const uint64_t numbersPerBlock = parts_.big.blockSize() / 8 - 1;
    const uint64_t needed = (header.tableBlockCount - kHeaderTableBlocks) / numbersPerBlock;
    if (needed == parts_.metaBlocks.size()) {
      const uint64_t meta = FirstFreeBlock(parts_.bigTable);
      SetBlockEntry(parts_.bigTable, meta, kMetaBlock);
      parts_.metaBlocks.push_back(meta);
      if (header.metaBlockCount == 0) header.metaStart = meta;
      ++header.metaBlockCount;
    }
  }
  ++header.tableBlockCount;
  marks_.header = true;
}

uint64_t CompoundWriter::findOrMake(std::string_view path) {
  added_.clear();
  const uint64_t index = parts_.directory.findOrAdd(path, added_);
  for (const DirectoryTree::Added& made : added_) {
    MarkDirectoryDirty(marks_.directory, made.above, parts_.big.blockSize());
    MarkDirectoryDirty(marks_.directory, made.entry, parts_.big.blockSize());
    growDirectory(made.entry);
  }
  return index;
}

// Sees that the directory's chain has a block for the entry.
void CompoundWriter::growDirectory(uint64_t slot) {
  const uint64_t needed = slot / (parts_.big.blockSize() / kDirectoryRecordSize);
  BlockList& chain = directoryChain_;
  if (chain.empty()) chain = FollowChain(parts_.bigTable, parts_.header.directoryStart);
  while (chain.size() <= needed) extend(chain);
}

void CompoundWriter::flush() {
  BigBlocks& file = parts_.big;
  if (marks_.header) {
    HeaderBytes bytes;
    SaveHeader(parts_.header, bytes);
    marks_.header = false;
    file.writeHeader(bytes);
  }
  if (!marks_.bigTable.empty()) {
    FlushBlockTable(parts_.bigTable, marks_.bigTable, parts_.tableBlocks(), file);
  }
  if (!marks_.smallTable.empty()) {
    const BlockList blocks = FollowChain(parts_.bigTable, parts_.header.smallTableStart);
    FlushBlockTable(parts_.smallTable, marks_.smallTable, blocks, file);
  }
  if (!marks_.directory.empty()) {
    const BlockList& container = parts_.small.container();
    const BlockList blocks = FollowChain(parts_.bigTable, parts_.header.directoryStart);
    FlushDirectory(
        parts_.directory, marks_.directory, blocks, file,
        {container.empty() ? kFreeBlock : container.front(), container.size() * file.blockSize()});
  }
  if (marks_.meta && !parts_.metaBlocks.empty()) flushMetaBlocks();
}

void CompoundWriter::flushMetaBlocks() {
  const BlockList& blocks = parts_.metaBlocks;
  const uint64_t size = parts_.big.blockSize();
  const uint64_t numbersPerGroup = size / 8 - 1;
  KernelVector<unsigned char> image(blocks.size() * size, 0xFF);
  uint64_t at = 0;
  uint64_t groups = 0;
  for (uint64_t i = 0; i < parts_.metaData.size() && at + 8 <= image.size(); ++i) {
    StoreLittleEndian<uint32_t>(image.data() + at, parts_.metaData[i]);
    at += 4;
    if ((i + 1) % numbersPerGroup != 0) continue;
    ++groups;
    const uint64_t link = groups < blocks.size() ? blocks[groups] : kChainEnd;
    StoreLittleEndian<uint32_t>(image.data() + at, link);
    at += 4;
  }
  parts_.big.write(blocks, 0, image);
  marks_.meta = false;
}

void FlushBlockTable(const BlockTable& table, BlockMarks& dirtyBlocks, BlockView blocks,
                     BigBlocks& file) {
  const uint64_t size = file.blockSize();
  KernelVector<unsigned char> image(blocks.size() * size, 0xFF);
  const uint64_t count = std::min<uint64_t>(table.entries.size(), image.size() / 4);
  for (uint64_t i = 0; i < count; ++i) {
    StoreLittleEndian<uint32_t>(image.data() + 4 * i, table.entries[i]);
  }
  for (uint64_t i = 0; i < blocks.size(); ++i) {
    if (!dirtyBlocks.contains(i)) continue;
    file.write(blocks.subspan(i, 1), 0, ByteView(image).subspan(i * size, size));
  }
  dirtyBlocks.clear();
}

void FlushDirectory(DirectoryTree& tree, BlockMarks& dirtyBlocks, BlockView blocks, BigBlocks& file,
                    ContainerExtent container) {
  const uint64_t size = file.blockSize();
  KernelVector<unsigned char> bytes = SaveDirectory(tree);
  if (!bytes.empty()) {
    StoreLittleEndian<uint32_t>(bytes.data() + kRecordStartOffset, container.start);
    StoreLittleEndian<uint32_t>(bytes.data() + kRecordSizeOffset, container.size);
  }
  for (uint64_t i = 0; i < blocks.size() && i * size < bytes.size(); ++i) {
    if (!dirtyBlocks.contains(i)) continue;
    const ByteView rest = ByteView(bytes).subspan(i * size);
    file.write(blocks.subspan(i, 1), 0, rest.first(std::min<uint64_t>(size, rest.size())));
  }
  dirtyBlocks.clear();
}

}  // namespace tarn
