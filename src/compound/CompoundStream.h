// CompoundStream.h - one stream of a compound file.
#ifndef TARN_COMPOUND_COMPOUNDSTREAM_H
#define TARN_COMPOUND_COMPOUNDSTREAM_H

#include <string_view>

#include "compound/CompoundFile.h"

namespace tarn {

struct CompoundStream {
  CompoundFile* file;   // not owned; outlives the stream
  uint64_t entryIndex;  // all ones when the entry is not of the file
  KernelString fullName;
  BlockList blocks;  // the chain, of big or of small blocks
  uint64_t position = 0;

  CompoundStream(CompoundFile& file_, const DirectoryEntry& entry);

  // The directory entry, or null when it is not of the file.
  const DirectoryEntry* entry() const;
  uint64_t size() const;
  bool isBig() const;
};

// Copies bytes from `position` on and gives their number, which is less than the buffer's at the
// end of the stream and where its chain ends early. Does not move the stream's own position.
uint64_t StreamRead(CompoundStream& stream, uint64_t position, ByteSpan buffer);

// Writes at `position`, makes the stream as long as that takes, and adds the length to the stream's
// own position. Gives the number of bytes; 0 in a file that is not writable.
uint64_t StreamWrite(CompoundStream& stream, uint64_t position, ByteView data);

// A stream that crosses the limit between small and big moves to blocks of the other kind.
void StreamSetSize(CompoundStream& stream, uint64_t size);

}  // namespace tarn

#endif
