// CompoundOperations.h - the steps in which a compound file is opened, read and written, one by
// one. Readers of files need CompoundFile.h alone.
#ifndef TARN_COMPOUND_COMPOUNDOPERATIONS_H
#define TARN_COMPOUND_COMPOUNDOPERATIONS_H

#include "compound/CompoundFile.h"

namespace tarn {

CompoundParts& PartsOf(CompoundFile& file);
CompoundWriter& WriterOf(CompoundFile& file);

// CompoundParts::load. Afterwards a flush would write the root's block of the directory and nothing
// else.
void LoadCompoundFile(CompoundFile& file);

// The handle stays open.
void CloseCompoundFile(CompoundFile& file);

// Opens for reading or, with `create`, begins a new file. Whether the result is CompoundOk.
bool OpenCompoundFile(CompoundFile& file, bool write, bool create);

// The entry of a path, or null; with `create` and a writable file a missing one is made.
const DirectoryEntry* FindEntry(CompoundFile& file, std::string_view path, bool create);

// CompoundParts::tableBlocks; with `loading`, readTableBlocks.
BlockList BigTableBlocks(CompoundFile& file, bool loading);

// BigBlocks::read and SmallBlocks::read.
uint64_t LoadBigBlocks(CompoundFile& file, BlockView blocks, ByteSpan buffer);
uint64_t LoadBigBlock(CompoundFile& file, uint64_t block, ByteSpan buffer);
uint64_t LoadSmallBlocks(CompoundFile& file, BlockView blocks, ByteSpan buffer);
uint64_t LoadSmallBlock(CompoundFile& file, uint64_t block, ByteSpan buffer);

// BigBlocks::write and SmallBlocks::write.
uint64_t SaveBigBlocks(CompoundFile& file, BlockView blocks, uint64_t offset, ByteView data);
uint64_t SaveBigBlock(CompoundFile& file, uint64_t block, uint64_t offset, ByteView data);
uint64_t SaveSmallBlocks(CompoundFile& file, BlockView blocks, uint64_t offset, ByteView data);

// CompoundWriter::createLayout and flush.
void CreateCompoundLayout(CompoundFile& file);
void FlushCompoundFile(CompoundFile& file);
// CompoundWriter::extend: the number of the block that is added.
uint64_t ExtendChain(CompoundFile& file, BlockList& chain);
// CompoundWriter::addTableBlock.
void AddBigTableBlock(CompoundFile& file);

}  // namespace tarn

#endif
