// CompoundWriter.h - writing a compound file: its layout, its growth and its flush.
//
//   block 0  first block of the big table     block 2  first block of the small table
//   block 1  first block of the directory     block 3  first block of the container
//
// Stream data goes to the file at once. Header, tables and directory change in memory, are marked,
// and reach the file with the flush.
//
// Files written here differ from MS-CFB, and have to stay so:
//
//   - A block is added to the big table for every 64 blocks although it has room for 128 entries;
//     entries follow each other without a gap, so the second half of the table's blocks is unused.
//   - Table blocks carry the meta mark, the first one the end mark.
//   - A meta block holds 63 numbers and a link, two such groups to a block. This alone does harm:
//     files of more than 22,000 blocks cannot be read.
//   - The blocks that a stream gives back are marked by their places in its chain.
#ifndef TARN_COMPOUND_COMPOUNDWRITER_H
#define TARN_COMPOUND_COMPOUNDWRITER_H

#include <string_view>

#include "compound/CompoundParts.h"
#include "compound/DirtyMarks.h"

namespace tarn {

struct CompoundStream;

class CompoundWriter {
 public:
  // The parts outlive this.
  explicit CompoundWriter(CompoundParts& parts) : parts_(parts) {}

  DirtyMarks& marks() { return marks_; }

  // The four blocks of a new file. What the file was before is gone.
  void createLayout();

  // Marks nothing but the root's block of the directory, as for a file that is loaded anew.
  void reset();

  // Writes header, tables, directory and meta blocks, as far as they are marked.
  void flush();

  // Adds a block to the end of a chain of big blocks, and gives its number.
  uint64_t extend(BlockList& chain);

  void addTableBlock();

  // The index of a path's entry, made where it is missing; kNoEntry for an empty path.
  uint64_t findOrMake(std::string_view path);

  // StreamWrite and StreamSetSize (CompoundStream.h), in a file that is writable.
  uint64_t write(CompoundStream& stream, uint64_t position, ByteView data);
  void setSize(CompoundStream& stream, uint64_t size);

 private:
  uint64_t addBlockAfter(BlockView chain);
  void markTable(BlockMarks& marks, uint64_t index);
  void growDirectory(uint64_t slot);
  void flushMetaBlocks();
  void setExtent(const CompoundStream& stream, uint64_t start, uint64_t size);
  uint64_t writeBig(CompoundStream& stream, uint64_t position, ByteView data);
  uint64_t writeSmall(CompoundStream& stream, uint64_t position, ByteView data);
  void extendSmallChain(BlockList& chain);
  void freeBlocks(BlockList& chain, bool big);
  void changeKind(CompoundStream& stream, uint64_t size);

  CompoundParts& parts_;
  DirtyMarks marks_;
  BlockList directoryChain_;                  // once needed
  BlockList smallTableChain_;                 // likewise
  KernelVector<DirectoryTree::Added> added_;  // by the last findOrMake
};

// Where the container begins, and its bytes.
struct ContainerExtent {
  uint64_t start;
  uint64_t size;
};

// Writes the marked ones of the table's blocks. What no entry fills is FF.
void FlushBlockTable(const BlockTable& table, BlockMarks& dirtyBlocks, BlockView blocks,
                     BigBlocks& file);

// Writes the marked ones of the directory's blocks; the last may be written in part.
void FlushDirectory(DirectoryTree& tree, BlockMarks& dirtyBlocks, BlockView blocks, BigBlocks& file,
                    ContainerExtent container);

}  // namespace tarn

#endif
