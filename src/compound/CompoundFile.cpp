#include "compound/CompoundFile.h"

#include <algorithm>

#include "compound/LittleEndian.h"

namespace tarn {
namespace {

using Bytes = KernelVector<unsigned char>;

constexpr uint64_t kMostTableBytes = uint64_t{64} << 20;
constexpr uint64_t kRootStartOffset = 116;

// Bytes that all reads of a file may take together. A directory can name the same blocks as
// millions of streams; what programs write is read a few times at most.
uint64_t ReadBudget(uint64_t fileSize) {
  constexpr uint64_t kFixedBytes = uint64_t{1} << 32;
  constexpr uint64_t kBytesPerFileByte = 64;
  return kFixedBytes + kBytesPerFileByte * std::min(fileSize, UINT64_MAX / 256);
}

// All blocks of a list in a block of their size, zeros where the file gives nothing.
Bytes LoadWhole(CompoundFile& file, const BlockList& blocks) {
  Bytes bytes(blocks.size() * file.bigBlockSize(), 0);
  LoadBigBlocks(file, blocks.data(), blocks.size(), bytes.data(), bytes.size());
  return bytes;
}

bool IsTooLong(uint64_t blocks, uint64_t blockSize, uint64_t most) {
  return blocks > most / blockSize;
}

bool LoadTables(CompoundFile& file) {
  const uint64_t size = file.bigBlockSize();
  if (IsTooLong(file.header.tableBlockCount, size, kMostTableBytes)) return false;
  if (IsTooLong(file.header.metaBlockCount, size, kMostTableBytes)) return false;
  const BlockList big = BigTableBlocks(file, true);
  if (!big.empty()) {
    const Bytes bytes = LoadWhole(file, big);
    LoadBlockTable(file.bigTable, bytes.data(), bytes.size());
  }

  const BlockList small = FollowChain(file.bigTable, file.header.smallTableStart);
  if (IsTooLong(small.size(), size, kMostTableBytes)) return false;
  if (!small.empty()) {
    const Bytes bytes = LoadWhole(file, small);
    LoadBlockTable(file.smallTable, bytes.data(), bytes.size());
  }
  return true;
}

// A directory shorter than one record is empty, and then there is no container.
bool LoadEntries(CompoundFile& file) {
  const BlockList blocks = FollowChain(file.bigTable, file.header.directoryStart);
  const uint64_t most = std::max(kMostTableBytes, file.fileSize + file.bigBlockSize());
  if (IsTooLong(blocks.size(), file.bigBlockSize(), most)) return false;
  const Bytes bytes = LoadWhole(file, blocks);
  LoadDirectory(file.directory, bytes.data(), bytes.size());
  file.containerBlocks.clear();
  if (bytes.size() >= kDirectoryRecordSize) {
    file.containerBlocks = FollowChain(file.bigTable, LoadU32(bytes.data() + kRootStartOffset));
  }
  return true;
}

// Reads at a position as the reader of blocks takes it: its low 32 bits, signed. What the kernel
// does not give stays as it was.
void ReadAt(const CompoundFile& file, uint64_t position, unsigned char* buffer, uint64_t length) {
  const auto offset = static_cast<int32_t>(static_cast<uint32_t>(position));
  KernelFileSeek(file.handle, offset, KERNEL_SEEK_START);
  KernelFileRead(file.handle, buffer, static_cast<uint32_t>(length));
}

// Makes the window hold a block of the container, and some behind it: more each time that reading
// goes on where the window ended. Each block stands for itself: one that the file does not have is
// zeros. False when reads have cost too much.
bool MoveWindow(CompoundFile& file, uint64_t index) {
  constexpr uint64_t kFirstBytes = 4096;
  constexpr uint64_t kMostBytes = 65536;
  ContainerWindow& window = file.window;
  if (index >= window.first && index - window.first < window.count) return true;
  const uint64_t size = file.bigBlockSize();
  const bool goesOn = window.count != 0 && index == window.first + window.count;
  const uint64_t bytes =
      goesOn ? std::min<uint64_t>(2 * window.bytes.size(), kMostBytes) : kFirstBytes;
  const uint64_t count =
      std::min(std::max<uint64_t>(1, bytes / size), file.containerBlocks.size() - index);
  window.count = 0;
  window.first = index;
  if (!SpendBytes(file, count * size)) return false;
  window.bytes.assign(count * size, 0);
  const uint64_t* const blocks = file.containerBlocks.data() + window.first;
  for (uint64_t i = 0; i < count;) {
    const uint64_t run = std::max<uint64_t>(1, RunOfBlocks(file, blocks + i, count - i));
    LoadBigBlocks(file, blocks + i, run, window.bytes.data() + i * size, run * size);
    i += run;
  }
  window.count = count;
  return true;
}

}  // namespace

CompoundFile::CompoundFile(CompoundStorage& storage_, uint64_t handle_)
    : storage(&storage_), handle(handle_) {
  storage_.file = this;
  bigTable.blockSize = 512;
  smallTable.blockSize = 64;
}

CompoundFile::~CompoundFile() {
  CloseCompoundFile(*this);
  if (storage->file == this) storage->file = nullptr;
}

void LoadCompoundFile(CompoundFile& file) {
  file.result = CompoundOpenFailed;
  file.fileSize = KernelFileSeek(file.handle, 0, KERNEL_SEEK_END);
  if (file.fileSize == KERNEL_BAD_HANDLE) return;
  file.bytesLeft = ReadBudget(file.fileSize);
  ForgetChains(file);
  KernelFileSeek(file.handle, 0, KERNEL_SEEK_START);
  HeaderBytes bytes = {};
  KernelFileRead(file.handle, bytes.data(), static_cast<uint32_t>(bytes.size()));
  LoadHeader(file.header, bytes);

  file.result = CompoundNotCompound;
  if (file.header.magic != kCompoundMagic) return;
  file.result = CompoundDamaged;
  if (!file.header.isReadable()) return;
  file.bigTable.blockSize = uint64_t{1} << file.header.bigShift;
  file.smallTable.blockSize = uint64_t{1} << file.header.smallShift;
  if (!LoadTables(file) || !LoadEntries(file)) return;
  file.result = CompoundOk;
  file.opened = true;
}

void CloseCompoundFile(CompoundFile& file) { file.opened = false; }

BlockList BigTableBlocks(CompoundFile& file, bool loading) {
  const CompoundHeader& header = file.header;
  const uint64_t count = header.tableBlockCount;
  BlockList list(count, 0);
  std::copy_n(header.tableBlocks.begin(), std::min(count, kHeaderTableBlocks), list.begin());
  if (!loading) {
    for (uint64_t i = 0; i < file.metaData.size() && kHeaderTableBlocks + i < count; ++i) {
      list[kHeaderTableBlocks + i] = file.metaData[i];
    }
    return list;
  }

  file.metaBlocks.clear();
  file.metaData.clear();
  if (count <= kHeaderTableBlocks) return list;
  const uint64_t words = file.bigBlockSize() / 4;
  Bytes block(file.bigBlockSize(), 0);
  uint64_t next = kHeaderTableBlocks;  // place in the list
  uint64_t data = 0;                   // place in metaData
  for (uint64_t r = 0; r < header.metaBlockCount; ++r) {
    uint64_t number = header.metaStart;
    if (r != 0) {
      // The last word of the block before is the link to this one.
      --next;
      --data;
      number = list[next];
    }
    file.metaBlocks.push_back(number);
    file.metaData.resize(file.metaBlocks.size() * words);
    std::fill(block.begin(), block.end(), static_cast<unsigned char>(0));
    LoadBigBlock(file, number, block.data(), block.size());
    for (uint64_t i = 0; i < words && next < count; ++i) {
      list[next++] = file.metaData[data++] = LoadU32(block.data() + 4 * i);
    }
  }
  file.metaData.resize(data);
  return list;
}

void ForgetChains(CompoundFile& file) {
  file.window.count = 0;
  file.directoryChain.clear();
  file.smallTableChain.clear();
}

bool SpendBytes(CompoundFile& file, uint64_t bytes) {
  const bool enough = bytes <= file.bytesLeft;
  file.bytesLeft = enough ? file.bytesLeft - bytes : 0;
  return enough;
}

uint64_t RunOfBlocks(const CompoundFile& file, const uint64_t* blocks, uint64_t count) {
  constexpr uint64_t kMostRunBytes = uint64_t{1} << 26;
  const uint64_t size = file.bigBlockSize();
  const uint64_t end = std::min(file.fileSize, uint64_t{1} << 31);
  uint64_t run = 0;
  while (run < count && blocks[run] == blocks[0] + run && run < kMostRunBytes / size &&
         (blocks[run] + 2) * size <= end) {
    ++run;
  }
  return run;
}

uint64_t LoadBigBlocks(CompoundFile& file, const uint64_t* blocks, uint64_t count,
                       unsigned char* buffer, uint64_t length) {
  if (buffer == nullptr || count == 0 || length == 0) return 0;
  const uint64_t size = file.bigBlockSize();
  uint64_t read = 0;
  for (uint64_t i = 0; i < count && read < length;) {
    const uint64_t whole = std::min(count - i, (length - read) / size);
    const uint64_t run = RunOfBlocks(file, blocks + i, whole);
    const uint64_t position = (blocks[i] + 1) * size;
    if (position > file.fileSize) return 0;
    const uint64_t wanted = run != 0 ? run * size : std::min(size, length - read);
    const uint64_t part = std::min(wanted, file.fileSize - position);
    if (!SpendBytes(file, part)) return 0;
    ReadAt(file, position, buffer + read, part);
    read += part;
    i += std::max<uint64_t>(run, 1);
  }
  return read;
}

uint64_t LoadBigBlock(CompoundFile& file, uint64_t block, unsigned char* buffer, uint64_t length) {
  return LoadBigBlocks(file, &block, 1, buffer, length);
}

uint64_t LoadSmallBlocks(CompoundFile& file, const uint64_t* blocks, uint64_t count,
                         unsigned char* buffer, uint64_t length) {
  if (buffer == nullptr || count == 0 || length == 0) return 0;
  const uint64_t size = file.bigBlockSize();
  uint64_t copied = 0;
  for (uint64_t i = 0; i < count && copied < length; ++i) {
    const uint64_t position = blocks[i] * file.smallBlockSize();
    const uint64_t index = position / size;
    if (index >= file.containerBlocks.size()) break;
    if (!MoveWindow(file, index)) break;
    const uint64_t offset = position % size;
    const uint64_t part = std::min({length - copied, size - offset, file.smallBlockSize()});
    const unsigned char* const from =
        file.window.bytes.data() + (index - file.window.first) * size + offset;
    std::copy_n(from, part, buffer + copied);
    copied += part;
  }
  return copied;
}

uint64_t LoadSmallBlock(CompoundFile& file, uint64_t block, unsigned char* buffer,
                        uint64_t length) {
  return LoadSmallBlocks(file, &block, 1, buffer, length);
}

}  // namespace tarn
