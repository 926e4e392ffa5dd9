#include "compound/SmallBlocks.h"

#include <algorithm>

namespace tarn {

// How many blocks of the container the window takes in from one on.
uint64_t SmallBlocks::windowBlocks(uint64_t index) const {
  constexpr uint64_t kFirstBytes = 4096;
  constexpr uint64_t kMostBytes = 65536;
  const uint64_t size = big_.blockSize();
  const BlockView rest = BlockView(container_).subspan(index);
  const bool goesOn = window_.count != 0 && index == window_.first + window_.count;
  const uint64_t bytes =
      goesOn ? std::min<uint64_t>(2 * window_.bytes.size(), kMostBytes) : kFirstBytes;
  const uint64_t most = std::min<uint64_t>(std::max<uint64_t>(1, bytes / size), rest.size());
  return goesOn ? most : std::max<uint64_t>(1, big_.run(rest.first(most)));
}

// Makes the window hold a block of the container. Each block is read by itself: one that the file
// does not have is zeros. False when reads have cost too much, and after a failed seek.
bool SmallBlocks::moveWindow(uint64_t index) {
  if (window_.writes != big_.writes()) window_.count = 0;
  if (index >= window_.first && index - window_.first < window_.count) return true;
  const uint64_t size = big_.blockSize();
  const uint64_t count = windowBlocks(index);
  window_.count = 0;
  window_.first = index;
  if (big_.bytesLeft() == 0) return false;
  window_.bytes.assign(count * size, 0);
  const uint64_t failedBefore = big_.failedSeeks();
  const BlockView blocks = BlockView(container_).subspan(index, count);
  uint64_t read = 0;
  for (uint64_t i = 0; i < count;) {
    const uint64_t side = std::max<uint64_t>(1, big_.run(blocks.subspan(i)));
    read +=
        big_.read(blocks.subspan(i, side), ByteSpan(window_.bytes).subspan(i * size, side * size));
    i += side;
  }
  if (big_.failedSeeks() != failedBefore) return false;
  if (!big_.spend(window_.bytes.size() - read)) return false;
  window_.count = count;
  window_.writes = big_.writes();
  return true;
}

uint64_t SmallBlocks::read(BlockView blocks, ByteSpan buffer) {
  const uint64_t size = big_.blockSize();
  uint64_t copied = 0;
  for (; !blocks.empty() && copied < buffer.size(); blocks = blocks.subspan(1)) {
    const uint64_t position = blocks.front() * blockSize();
    const uint64_t index = position / size;
    if (index >= container_.size() || !moveWindow(index)) break;
    const uint64_t offset = position % size;
    const uint64_t part = std::min<uint64_t>({buffer.size() - copied, size - offset, blockSize()});
    std::copy_n(window_.bytes.data() + (index - window_.first) * size + offset, part,
                buffer.data() + copied);
    copied += part;
  }
  return copied;
}

uint64_t SmallBlocks::readChain(BlockView chain, uint64_t position, ByteSpan buffer) {
  const uint64_t size = blockSize();
  uint64_t offset = position % size;
  uint64_t copied = 0;
  KernelVector<unsigned char> scratch(size, 0);
  for (uint64_t i = position / size; i < chain.size() && copied < buffer.size(); ++i) {
    const uint64_t given = read(chain.subspan(i, 1), scratch);
    if (given == 0 && !big_.spend(kChainBlockCost)) break;
    if (given > offset) {
      const uint64_t part = std::min<uint64_t>(given - offset, buffer.size() - copied);
      std::copy_n(scratch.data() + offset, part, buffer.data() + copied);
      copied += part;
    }
    offset = 0;
  }
  return copied;
}

uint64_t SmallBlocks::write(BlockView blocks, uint64_t offset, ByteView data) {
  const uint64_t size = big_.blockSize();
  uint64_t written = 0;
  for (; !blocks.empty() && written < data.size(); blocks = blocks.subspan(1)) {
    const uint64_t position = blockSize() * blocks.front();
    const uint64_t index = position / size;
    if (index >= container_.size()) break;
    const uint64_t part = std::min<uint64_t>(data.size() - written, blockSize() - offset);
    const BlockView container = BlockView(container_).subspan(index, 1);
    big_.write(container, position % size + offset, data.subspan(written, part));
    written += part;
    big_.cover(position + part);
    offset = 0;
  }
  return written;
}

}  // namespace tarn
