#include "compound/BigBlocks.h"

#include <algorithm>
#include <cstring>

namespace tarn {
namespace {

constexpr uint64_t kCallCost = 4096;

// What programs write is read a few times at most.
uint64_t ReadBudget(uint64_t fileSize) {
  constexpr uint64_t kFixedBytes = uint64_t{1} << 28;
  constexpr uint64_t kBytesPerFileByte = 64;
  return kFixedBytes + kBytesPerFileByte * std::min(fileSize, UINT64_MAX / 256);
}

}  // namespace

void BigBlocks::reset() {
  fileSize_ = 0;
  bytesLeft_ = UINT64_MAX;
  failedSeeks_ = 0;
}

bool BigBlocks::measure() {
  const uint64_t size = KernelFileSeek(handle_, 0, KERNEL_SEEK_END);
  if (size == KERNEL_BAD_HANDLE || KernelFileSeek(handle_, 0, KERNEL_SEEK_START) != 0) {
    ++failedSeeks_;
    return false;
  }
  fileSize_ = size;
  bytesLeft_ = ReadBudget(size);
  return true;
}

HeaderBytes BigBlocks::readHeader() {
  HeaderBytes bytes = {};
  KernelFileRead(handle_, bytes.data(), kHeaderSize);
  return bytes;
}

void BigBlocks::writeHeader(const HeaderBytes& bytes) {
  ++writes_;
  KernelFileSeek(handle_, 0, KERNEL_SEEK_START);
  KernelFileWrite(handle_, bytes.data(), kHeaderSize);
}

bool BigBlocks::spend(uint64_t bytes) {
  const bool enough = bytes <= bytesLeft_;
  bytesLeft_ = enough ? bytesLeft_ - bytes : 0;
  return enough;
}

uint64_t BigBlocks::run(BlockView blocks) const {
  constexpr uint64_t kMostRunBytes = uint64_t{1} << 26;
  const uint64_t size = blockSize();
  const uint64_t end = std::min(fileSize_, uint64_t{1} << 31);
  uint64_t run = 0;
  while (run < blocks.size() && blocks[run] == blocks[0] + run && run < kMostRunBytes / size &&
         (blocks[run] + 2) * size <= end) {
    ++run;
  }
  return run;
}

// Goes to the low 32 bits of a position, signed. A negative one leads nowhere, and what comes next
// in the file is read then. False, and counted, when the kernel fails.
bool BigBlocks::seek(uint64_t position) {
  const auto low = static_cast<int32_t>(position);
  const uint64_t reached = KernelFileSeek(handle_, low, KERNEL_SEEK_START);
  if (low < 0 || reached == (position & UINT32_MAX)) return true;
  ++failedSeeks_;
  return false;
}

uint64_t BigBlocks::readBlocks(BlockView blocks, ByteSpan buffer, bool clear) {
  const uint64_t size = blockSize();
  uint64_t read = 0;
  while (!blocks.empty() && read < buffer.size()) {
    const uint64_t left = buffer.size() - read;
    const uint64_t side = run(blocks.first(std::min<uint64_t>(blocks.size(), left / size)));
    const uint64_t position = (blocks.front() + 1) * size;
    blocks = blocks.subspan(std::max<uint64_t>(side, 1));
    if (position > fileSize_) return 0;
    const uint64_t wanted = side != 0 ? side * size : std::min(size, left);
    const uint64_t part = std::min(wanted, fileSize_ - position);
    if (part == 0) continue;
    if (!spend(std::max(part, kCallCost))) return 0;
    if (!seek(position)) return 0;
    unsigned char* const to = buffer.data() + read;
    const uint64_t given =
        std::min<uint64_t>(part, KernelFileRead(handle_, to, static_cast<uint32_t>(part)));
    if (clear) std::memset(to + given, 0, part - given);
    read += part;
  }
  return read;
}

// Straight into the buffer, but for a first block that is not read from its beginning.
uint64_t BigBlocks::readChain(BlockView chain, uint64_t position, ByteSpan buffer) {
  const uint64_t size = blockSize();
  if (position / size >= chain.size()) return 0;
  chain = chain.subspan(position / size);
  uint64_t copied = 0;
  if (const uint64_t offset = position % size; offset != 0) {
    KernelVector<unsigned char> scratch(std::min(size, offset + buffer.size()));
    const uint64_t given = readCleared(chain.first(1), scratch);
    if (given == 0 && !spend(kChainBlockCost)) return 0;
    if (given > offset) {
      copied = given - offset;
      std::copy_n(scratch.data() + offset, copied, buffer.data());
    }
    chain = chain.subspan(1);
  }
  while (!chain.empty() && copied < buffer.size()) {
    const ByteSpan rest = buffer.subspan(copied);
    const uint64_t whole = std::min<uint64_t>(chain.size(), rest.size() / size);
    const uint64_t side = std::max<uint64_t>(1, run(chain.first(whole)));
    const uint64_t given =
        readCleared(chain.first(side), rest.first(std::min<uint64_t>(side * size, rest.size())));
    if (given == 0 && !spend(kChainBlockCost)) break;
    copied += given;
    chain = chain.subspan(side);
  }
  return copied;
}

uint64_t BigBlocks::write(BlockView blocks, uint64_t offset, ByteView data) {
  ++writes_;
  const uint64_t size = blockSize();
  uint64_t written = 0;
  for (; !blocks.empty() && written < data.size(); blocks = blocks.subspan(1)) {
    const uint64_t position = (blocks.front() + 1) * size + offset;
    const uint64_t part = std::min<uint64_t>(size - offset, data.size() - written);
    KernelFileSeek(handle_, static_cast<int64_t>(position), KERNEL_SEEK_START);
    KernelFileWrite(handle_, data.data() + written, static_cast<uint32_t>(part));
    written += part;
    cover(position + part);
    offset = 0;
  }
  return written;
}

void BigBlocks::cover(uint64_t end) { fileSize_ = std::max(fileSize_, end); }

}  // namespace tarn
