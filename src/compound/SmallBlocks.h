// SmallBlocks.h - the small blocks of a compound file: slices of its container, which is a chain of
// big blocks.
//
// Small streams that lie side by side are read through a window on the container. It holds one
// block and those that lie side by side with it, up to 4 KiB, and twice as much each time that
// reading goes on where the window ended, up to 64 KiB. Every write to the file empties it.
#ifndef TARN_COMPOUND_SMALLBLOCKS_H
#define TARN_COMPOUND_SMALLBLOCKS_H

#include <utility>

#include "compound/BigBlocks.h"

namespace tarn {

class SmallBlocks {
 public:
  // The table gives the size of a block. Both outlive this.
  SmallBlocks(BigBlocks& big, const BlockTable& table) : big_(big), table_(table) {}

  uint64_t blockSize() const { return table_.blockSize; }
  const BlockList& container() const { return container_; }
  void setContainer(BlockList blocks) {
    container_ = std::move(blocks);
    window_.count = 0;
  }
  void addToContainer(uint64_t block) { container_.push_back(block); }

  // Reads blocks one after the other; gives the number of bytes. Ends at a block that is not in
  // the container. Of the container, what the file does not have is zeros.
  uint64_t read(BlockView blocks, ByteSpan buffer);

  // Reads a stream that lies in these blocks, from a position on. Less than the buffer where the
  // chain ends early; blocks that are not in the container are passed over.
  uint64_t readChain(BlockView chain, uint64_t position, ByteSpan buffer);

  // Writes to blocks one after the other, into the first from `offset` on; gives the number of
  // bytes. Ends at a block that is not in the container.
  uint64_t write(BlockView blocks, uint64_t offset, ByteView data);

 private:
  struct Window {
    uint64_t first = 0;   // place in the container
    uint64_t count = 0;   // blocks
    uint64_t writes = 0;  // to the file when the window was filled
    KernelVector<unsigned char> bytes;
  };

  uint64_t windowBlocks(uint64_t index) const;
  bool moveWindow(uint64_t index);

  BigBlocks& big_;
  const BlockTable& table_;
  BlockList container_;
  Window window_;
};

}  // namespace tarn

#endif
