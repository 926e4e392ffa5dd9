// BigBlocks.h - the blocks of a compound file, read and written in place through a handle of the
// kernel.
//
//   file:  header (512) | block 0 | block 1 | ...      block n at (n + 1) x block size
//
// What all reads of a file cost together is bounded, since a directory can name the same blocks as
// millions of streams. The unit is a byte that is read; a call of the kernel costs 4096 at least.
//
// Reads take positions as signed 32-bit numbers. From 2 GiB on the position is negative: there is
// no seek, and what follows the read before is given. From 4 GiB on it is what lies at the position
// less 4 GiB. Writes take all 64 bits.
#ifndef TARN_COMPOUND_BIGBLOCKS_H
#define TARN_COMPOUND_BIGBLOCKS_H

#include "compound/BlockTable.h"

namespace tarn {

// What reads pay for a block of a chain: once when the chain is followed, and again each time that
// they find nothing in it.
inline constexpr uint64_t kChainBlockCost = sizeof(uint64_t);

class BigBlocks {
 public:
  // The handle is its opener's. The table gives the size of a block, and outlives this.
  BigBlocks(uint64_t handle, const BlockTable& table) : handle_(handle), table_(table) {}

  uint64_t blockSize() const { return table_.blockSize; }
  uint64_t fileSize() const { return fileSize_; }        // grows with writes
  uint64_t failedSeeks() const { return failedSeeks_; }  // by measure(), and by reads below 2 GiB
  uint64_t writes() const { return writes_; }            // to the file so far
  uint64_t bytesLeft() const { return bytesLeft_; }      // that reads may still cost

  // As for a new file: empty, and reads cost nothing.
  void reset();

  // Learns the file's size, goes to its start and sets what reads may cost. False, and counted,
  // when a seek fails.
  bool measure();

  // The first 512 bytes, from the start that measure() went to; zeros for those that are missing.
  HeaderBytes readHeader();
  void writeHeader(const HeaderBytes& bytes);

  // Reads blocks one after the other; gives the number of bytes. A block that begins after the end
  // of the file ends the read with 0, and so does a failed seek, which counts; one that overlaps
  // the end is read as far as it goes. What the kernel does not give of a block stays as it was in
  // the buffer, and counts.
  uint64_t read(BlockView blocks, ByteSpan buffer) { return readBlocks(blocks, buffer, false); }
  // The same, but what the kernel does not give is zeros.
  uint64_t readCleared(BlockView blocks, ByteSpan buffer) {
    return readBlocks(blocks, buffer, true);
  }

  // Reads a stream that lies in these blocks, from a position on; gives the number of bytes. That
  // is less than the buffer where the chain ends early or reads may cost no more, and 0 for a
  // position after the chain. A block that the file does not have is left out: what follows moves
  // up. What the kernel does not give of a block is zeros, and counts.
  uint64_t readChain(BlockView chain, uint64_t position, ByteSpan buffer);

  // Writes to blocks one after the other, into the first from `offset` on; gives the number of
  // bytes. Whether the kernel wrote them is not examined.
  uint64_t write(BlockView blocks, uint64_t offset, ByteView data);

  // The file counts as no shorter than that.
  void cover(uint64_t end);

  // How many blocks, from the first on, lie side by side in the file, whole and where positions do
  // not wrap, so that one call of the kernel reads them.
  uint64_t run(BlockView blocks) const;

  // Takes from what reads may still cost; false when that is not enough, and then nothing is left.
  bool spend(uint64_t bytes);

 private:
  uint64_t readBlocks(BlockView blocks, ByteSpan buffer, bool clear);
  bool seek(uint64_t position);

  uint64_t handle_;
  const BlockTable& table_;
  uint64_t fileSize_ = 0;
  uint64_t bytesLeft_ = UINT64_MAX;
  uint64_t failedSeeks_ = 0;
  uint64_t writes_ = 0;
};

}  // namespace tarn

#endif
