// CompoundParts.h - what a compound file holds in memory: header, both tables and the directory.
//
//   big table      chains big blocks; its own blocks are named by the header and by meta blocks
//   small table    chains small blocks, which lie in the container
//   container      the stream of the root entry, as a chain of big blocks
//
// Files are hostile: tables of more than 64 MiB, or of more than the file, are refused. What a file
// does not give of its tables, directory and container is zeros.
#ifndef TARN_COMPOUND_COMPOUNDPARTS_H
#define TARN_COMPOUND_COMPOUNDPARTS_H

#include "compound/BigBlocks.h"
#include "compound/DirectoryTree.h"
#include "compound/SmallBlocks.h"

namespace tarn {

enum CompoundResult : uint64_t {
  CompoundOk = 0,
  CompoundOpenFailed = 1,
  CompoundNotCompound = 2,
  CompoundDamaged = 3
};

struct CompoundParts {
  CompoundResult result = CompoundOk;
  bool opened = false;  // after a complete load
  bool writable = false;
  CompoundHeader header;
  BlockTable bigTable = BlockTable(512);
  BlockTable smallTable = BlockTable(64);
  BlockList metaBlocks;
  BlockList metaData;  // table blocks beyond those of the header
  BigBlocks big;
  SmallBlocks small;
  DirectoryTree directory;

  explicit CompoundParts(uint64_t handle) : big(handle, bigTable), small(big, smallTable) {}
  CompoundParts(const CompoundParts&) = delete;
  CompoundParts& operator=(const CompoundParts&) = delete;

  // As of a file that was never loaded; `result`, the header and `rootKind` stay.
  void reset();

  // Reads header, tables and directory, and sets `result`; what was before is gone. A directory
  // that cannot be followed, or is longer than the file, is an empty one, and no failure. A failed
  // seek is CompoundOpenFailed.
  void load();

  // The blocks of the big table: those of the header and those of `metaData`.
  BlockList tableBlocks() const;
  // The same from the meta blocks in the file, which become known.
  BlockList readTableBlocks();
};

}  // namespace tarn

#endif
