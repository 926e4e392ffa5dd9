// CompoundFile.h - a compound file over a handle of the kernel: header, both tables and the
// directory in memory, blocks read and written in place (MS-CFB).
//
//   file:  header (512) | block 0 | block 1 | ...      block n at (n + 1) x big block size
//
//   big table      chains big blocks; its own blocks are named by the header and by meta blocks
//   small table    chains small blocks, which lie in the container
//   container      the stream of the root entry, as a chain of big blocks
//
// The handle may be a file or a memory file; whoever opened it closes it. All memory is the
// kernel's; std::bad_alloc leaves every function here when it has none. Files are hostile: tables
// of more than 64 MiB, or of more than the file, are refused, and all that is read of a file
// together costs a bounded time. What a file does not give of its tables, directory, container and
// streams is zeros.
#ifndef TARN_COMPOUND_COMPOUNDFILE_H
#define TARN_COMPOUND_COMPOUNDFILE_H

#include "compound/BlockTable.h"
#include "compound/DirectoryTree.h"

namespace tarn {

enum CompoundResult : uint64_t {
  CompoundOk = 0,
  CompoundOpenFailed = 1,
  CompoundNotCompound = 2,
  CompoundDamaged = 3
};

struct CompoundStorage {
  CompoundFile* file = nullptr;
};

// The part of the container that was read last, for small streams that lie side by side. Every
// write to the file empties it.
struct ContainerWindow {
  uint64_t first = 0;  // place in containerBlocks
  uint64_t count = 0;  // blocks
  KernelVector<unsigned char> bytes;
};

struct CompoundFile {
  CompoundStorage* storage;
  uint64_t handle;  // not owned
  uint64_t result = CompoundOk;
  bool opened = false;    // after a complete load
  uint64_t fileSize = 0;  // grows with writes
  bool writable = false;
  CompoundHeader header;
  DirectoryTree directory;
  BlockTable bigTable;
  BlockTable smallTable;
  BlockList containerBlocks;
  BlockList metaBlocks;
  BlockList metaData;  // table blocks beyond those of the header
  bool metaDirty = false;
  uint64_t bytesLeft = UINT64_MAX;  // that reads may still cost; see SpendBytes
  BlockList directoryChain;         // of a file that is being written, once needed
  BlockList smallTableChain;        // likewise
  ContainerWindow window;
  uint64_t failedSeeks = 0;  // to places that reads have; see LoadBigBlocks

  CompoundFile(CompoundStorage& storage_, uint64_t handle_);
  CompoundFile(const CompoundFile&) = delete;
  CompoundFile& operator=(const CompoundFile&) = delete;
  ~CompoundFile();

  uint64_t bigBlockSize() const { return bigTable.blockSize; }
  uint64_t smallBlockSize() const { return smallTable.blockSize; }
};

// Reads header, tables and directory, and sets `result`; what the file was before is gone. A
// directory that cannot be followed, or is longer than the file, is an empty one, and no failure.
// A failed seek is CompoundOpenFailed, and counts.
void LoadCompoundFile(CompoundFile& file);

// The handle stays open.
void CloseCompoundFile(CompoundFile& file);

// The blocks of the big table. With `loading` the meta blocks are read, else they are known.
BlockList BigTableBlocks(CompoundFile& file, bool loading);

// Read blocks one behind the other. The result is the number of bytes; a block that lies behind the
// end of the file ends the read with 0, one that overlaps the end is read as far as it goes. What
// the kernel does not give of a block stays as it was in the buffer, and counts. A failed seek ends
// the read with 0 and is counted in `failedSeeks`, which tells it from what the file does not have.
// Positions are taken as signed 32-bit numbers: from 2 GiB on the seek fails and what stands where
// the read before ended is given, from 4 GiB on what stands at the position less 4 GiB.
uint64_t LoadBigBlocks(CompoundFile& file, const uint64_t* blocks, uint64_t count,
                       unsigned char* buffer, uint64_t length);
uint64_t LoadSmallBlocks(CompoundFile& file, const uint64_t* blocks, uint64_t count,
                         unsigned char* buffer, uint64_t length);
uint64_t LoadBigBlock(CompoundFile& file, uint64_t block, unsigned char* buffer, uint64_t length);
uint64_t LoadSmallBlock(CompoundFile& file, uint64_t block, unsigned char* buffer, uint64_t length);

// LoadBigBlocks, but what the kernel does not give of the bytes that count is zeros.
uint64_t LoadBigBlocksCleared(CompoundFile& file, const uint64_t* blocks, uint64_t count,
                              unsigned char* buffer, uint64_t length);

// Tables, directory, chains, window and bounds as those of a file that was never loaded; the
// header, the size and `rootKind` stay.
void ResetTables(CompoundFile& file);

// Takes from what reads may still cost; false when that is not enough, and then nothing is left.
// The unit is a byte that is read. A call of the kernel costs no less than 4096, however little it
// reads.
bool SpendBytes(CompoundFile& file, uint64_t bytes);

// How many blocks, from the first on, lie side by side in the file, whole and where positions do
// not wrap, so that LoadBigBlocks reads them at once.
uint64_t RunOfBlocks(const CompoundFile& file, const uint64_t* blocks, uint64_t count);

// Writing (CompoundWriter.cpp) ----------------------------------------------------------------

// Opens for reading or, with `create`, begins a new file. Whether `result` is 0.
bool OpenCompoundFile(CompoundFile& file, bool write, bool create);

// Four blocks: big table, directory, small table, container. What the file was before is gone.
void CreateCompoundLayout(CompoundFile& file);

// Writes header, tables, directory and meta blocks, as far as they changed.
void FlushCompoundFile(CompoundFile& file);

// Write to blocks one behind the other, into the first from `offset` on. The result is the number
// of bytes; whether the kernel wrote them is not examined.
uint64_t SaveBigBlocks(CompoundFile& file, const uint64_t* blocks, uint64_t count, uint64_t offset,
                       const unsigned char* data, uint64_t length);
uint64_t SaveBigBlock(CompoundFile& file, uint64_t block, uint64_t offset,
                      const unsigned char* data, uint64_t length);
uint64_t SaveSmallBlocks(CompoundFile& file, const BlockList& blocks, uint64_t offset,
                         const unsigned char* data, uint64_t length, uint64_t firstIndex);

// Adds a block to the end of a chain of big blocks, and gives its number.
uint64_t ExtendChain(CompoundFile& file, BlockList& chain);

void AddBigTableBlock(CompoundFile& file);

// Sees that the directory's chain has a block of that index.
void GrowDirectory(CompoundFile& file, uint64_t index);

}  // namespace tarn

#endif
