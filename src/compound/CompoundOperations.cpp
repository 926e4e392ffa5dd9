#include "compound/CompoundOperations.h"

namespace tarn {

CompoundParts& PartsOf(CompoundFile& file) { return file.parts_; }
CompoundWriter& WriterOf(CompoundFile& file) { return file.writer_; }

void LoadCompoundFile(CompoundFile& file) {
  WriterOf(file).reset();
  PartsOf(file).load();
}

void CloseCompoundFile(CompoundFile& file) { PartsOf(file).opened = false; }

bool OpenCompoundFile(CompoundFile& file, bool write, bool create) {
  CloseCompoundFile(file);
  PartsOf(file).writable = write || create;
  if (create) {
    CreateCompoundLayout(file);
  } else {
    LoadCompoundFile(file);
  }
  return file.result() == CompoundOk;
}

const DirectoryEntry* FindEntry(CompoundFile& file, std::string_view path, bool create) {
  DirectoryTree& tree = PartsOf(file).directory;
  if (!create || !file.isWritable()) return FindEntry(tree, path);
  const uint64_t index = WriterOf(file).findOrMake(path);
  return index != kNoEntry ? &tree.entries()[index] : nullptr;
}

BlockList BigTableBlocks(CompoundFile& file, bool loading) {
  return loading ? PartsOf(file).readTableBlocks() : PartsOf(file).tableBlocks();
}

uint64_t LoadBigBlocks(CompoundFile& file, BlockView blocks, ByteSpan buffer) {
  return PartsOf(file).big.read(blocks, buffer);
}

uint64_t LoadBigBlock(CompoundFile& file, uint64_t block, ByteSpan buffer) {
  return LoadBigBlocks(file, BlockView(&block, 1), buffer);
}

uint64_t LoadSmallBlocks(CompoundFile& file, BlockView blocks, ByteSpan buffer) {
  return PartsOf(file).small.read(blocks, buffer);
}

uint64_t LoadSmallBlock(CompoundFile& file, uint64_t block, ByteSpan buffer) {
  return LoadSmallBlocks(file, BlockView(&block, 1), buffer);
}

uint64_t SaveBigBlocks(CompoundFile& file, BlockView blocks, uint64_t offset, ByteView data) {
  return PartsOf(file).big.write(blocks, offset, data);
}

uint64_t SaveBigBlock(CompoundFile& file, uint64_t block, uint64_t offset, ByteView data) {
  return SaveBigBlocks(file, BlockView(&block, 1), offset, data);
}

uint64_t SaveSmallBlocks(CompoundFile& file, BlockView blocks, uint64_t offset, ByteView data) {
  return PartsOf(file).small.write(blocks, offset, data);
}

void CreateCompoundLayout(CompoundFile& file) { WriterOf(file).createLayout(); }

void FlushCompoundFile(CompoundFile& file) { file.flush(); }

uint64_t ExtendChain(CompoundFile& file, BlockList& chain) { return WriterOf(file).extend(chain); }

void AddBigTableBlock(CompoundFile& file) { WriterOf(file).addTableBlock(); }

}  // namespace tarn
