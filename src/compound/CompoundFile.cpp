#include "compound/CompoundFile.h"

#include <algorithm>

#include "Common/LittleEndian.h"

namespace tarn {
namespace {

using Bytes = KernelVector<unsigned char>;

constexpr uint64_t kMostTableBytes = uint64_t{64} << 20;
// Of blocks that the file does not give, that many bytes are made as zeros; and blocks that are
// named several times may be that much more than the file.
constexpr uint64_t kMostBytesBeyondFile = uint64_t{1} << 20;
// The least that a call of the kernel costs of the bytes that reads may take.
constexpr uint64_t kCallCost = 4096;

// Bytes that all reads of a file may take together. A directory can name the same blocks as
// millions of streams; what programs write is read a few times at most.
uint64_t ReadBudget(uint64_t fileSize) {
  constexpr uint64_t kFixedBytes = uint64_t{1} << 28;
  constexpr uint64_t kBytesPerFileByte = 64;
  return kFixedBytes + kBytesPerFileByte * std::min(fileSize, UINT64_MAX / 256);
}

// How much of a list of blocks the file has, up to the first block that lies behind its end.
uint64_t BytesInFile(const CompoundFile& file, const BlockList& blocks) {
  const uint64_t size = file.bigBlockSize();
  uint64_t bytes = 0;
  for (const uint64_t block : blocks) {
    const uint64_t position = (block + 1) * size;
    if (position > file.fileSize) break;
    bytes += std::min(size, file.fileSize - position);
  }
  return bytes;
}

// All blocks of a list, whole records of the directory, zeros where the file gives nothing. A long
// list of missing blocks at the end is left out. False for blocks that are more than the file.
bool LoadWhole(CompoundFile& file, const BlockList& blocks, Bytes& bytes) {
  const uint64_t present =
      (BytesInFile(file, blocks) + kDirectoryRecordSize - 1) & ~(kDirectoryRecordSize - 1);
  if (present > file.fileSize + kMostBytesBeyondFile) return false;
  const uint64_t all = blocks.size() * file.bigBlockSize();
  bytes.assign(std::min(all, present + kMostBytesBeyondFile), 0);
  LoadBigBlocks(file, blocks.data(), blocks.size(), bytes.data(), bytes.size());
  return true;
}

bool IsTooLong(uint64_t blocks, uint64_t blockSize, uint64_t most) {
  return blocks > most / blockSize;
}

bool LoadTables(CompoundFile& file) {
  const uint64_t size = file.bigBlockSize();
  const CompoundHeader& header = file.header;
  if (IsTooLong(header.tableBlockCount, size, kMostTableBytes)) return false;
  if (header.tableBlockCount > kHeaderTableBlocks &&
      IsTooLong(header.metaBlockCount, size, kMostTableBytes)) {
    return false;
  }
  Bytes bytes;
  const BlockList big = BigTableBlocks(file, true);
  if (!LoadWhole(file, big, bytes)) return false;
  if (!big.empty()) LoadBlockTable(file.bigTable, bytes.data(), bytes.size());

  const BlockList small = FollowChain(file.bigTable, header.smallTableStart);
  if (IsTooLong(small.size(), size, kMostTableBytes)) return false;
  if (!LoadWhole(file, small, bytes)) return false;
  if (!small.empty()) LoadBlockTable(file.smallTable, bytes.data(), bytes.size());
  return true;
}

// A directory that is longer than its file, or shorter than one record, is empty, and then there is
// no container.
void LoadEntries(CompoundFile& file) {
  BlockList blocks = FollowChain(file.bigTable, file.header.directoryStart);
  const uint64_t most = std::max(kMostTableBytes, file.fileSize + file.bigBlockSize());
  if (IsTooLong(blocks.size(), file.bigBlockSize(), most)) blocks.clear();
  Bytes bytes;
  if (!LoadWhole(file, blocks, bytes)) bytes.clear();
  LoadDirectory(file.directory, bytes.data(), bytes.size());
  if (bytes.size() >= kDirectoryRecordSize) {
    file.containerBlocks =
        FollowChain(file.bigTable, LoadLittleEndian<uint32_t>(bytes.data() + kRecordStartOffset));
  }
}

// Goes to a position as the reader of blocks takes it: its low 32 bits, signed. A negative one
// leads nowhere, and what comes next in the file is read then. False, and counted, when the kernel
// fails.
bool SeekBlock(CompoundFile& file, uint64_t position) {
  const auto offset = static_cast<int32_t>(static_cast<uint32_t>(position));
  const uint64_t reached = KernelFileSeek(file.handle, offset, KERNEL_SEEK_START);
  if (offset < 0 || reached == static_cast<uint64_t>(offset)) return true;
  ++file.failedSeeks;
  return false;
}

// Gives what the kernel gave; the rest of the buffer stays as it was.
uint64_t ReadHere(const CompoundFile& file, unsigned char* buffer, uint64_t length) {
  return std::min<uint64_t>(length,
                            KernelFileRead(file.handle, buffer, static_cast<uint32_t>(length)));
}

// LoadBigBlocks; with `clear`, what the kernel does not give of the bytes that count is zeros.
uint64_t ReadBigBlocks(CompoundFile& file, const uint64_t* blocks, uint64_t count,
                       unsigned char* buffer, uint64_t length, bool clear) {
  if (buffer == nullptr || count == 0 || length == 0) return 0;
  const uint64_t size = file.bigBlockSize();
  uint64_t read = 0;
  for (uint64_t i = 0; i < count && read < length;) {
    const uint64_t whole = std::min(count - i, (length - read) / size);
    const uint64_t run = RunOfBlocks(file, blocks + i, whole);
    const uint64_t position = (blocks[i] + 1) * size;
    i += std::max<uint64_t>(run, 1);
    if (position > file.fileSize) return 0;
    const uint64_t wanted = run != 0 ? run * size : std::min(size, length - read);
    const uint64_t part = std::min(wanted, file.fileSize - position);
    if (part == 0) continue;
    if (!SpendBytes(file, std::max(part, kCallCost))) return 0;
    if (!SeekBlock(file, position)) return 0;
    const uint64_t given = ReadHere(file, buffer + read, part);
    if (clear) std::fill_n(buffer + read + given, part - given, static_cast<unsigned char>(0));
    read += part;
  }
  return read;
}

// How many blocks of the container the window takes in from one on. What lies side by side costs
// no more calls; other blocks are read ahead when reading goes on where the window ended, more each
// time.
uint64_t WindowBlocks(const CompoundFile& file, uint64_t index) {
  constexpr uint64_t kFirstBytes = 4096;
  constexpr uint64_t kMostBytes = 65536;
  const ContainerWindow& window = file.window;
  const uint64_t size = file.bigBlockSize();
  const uint64_t rest = file.containerBlocks.size() - index;
  if (window.count != 0 && index == window.first + window.count) {
    const uint64_t bytes = std::min<uint64_t>(2 * window.bytes.size(), kMostBytes);
    return std::min(std::max<uint64_t>(1, bytes / size), rest);
  }
  const uint64_t most = std::min(std::max<uint64_t>(1, kFirstBytes / size), rest);
  return std::max<uint64_t>(1, RunOfBlocks(file, file.containerBlocks.data() + index, most));
}

// Makes the window hold a block of the container. Each block stands for itself: one that the file
// does not have is zeros. False when reads have cost too much, and after a failed seek.
bool MoveWindow(CompoundFile& file, uint64_t index) {
  ContainerWindow& window = file.window;
  if (index >= window.first && index - window.first < window.count) return true;
  const uint64_t size = file.bigBlockSize();
  const uint64_t count = WindowBlocks(file, index);
  window.count = 0;
  window.first = index;
  if (file.bytesLeft == 0) return false;
  window.bytes.assign(count * size, 0);
  const uint64_t failedBefore = file.failedSeeks;
  const uint64_t* const blocks = file.containerBlocks.data() + index;
  uint64_t read = 0;
  for (uint64_t i = 0; i < count;) {
    const uint64_t run = std::max<uint64_t>(1, RunOfBlocks(file, blocks + i, count - i));
    read += LoadBigBlocks(file, blocks + i, run, window.bytes.data() + i * size, run * size);
    i += run;
  }
  if (file.failedSeeks != failedBefore) return false;
  if (!SpendBytes(file, window.bytes.size() - read)) return false;
  window.count = count;
  return true;
}

}  // namespace

CompoundFile::CompoundFile(CompoundStorage& storage_, uint64_t handle_)
    : storage(&storage_), handle(handle_) {
  storage_.file = this;
  ResetTables(*this);
}

CompoundFile::~CompoundFile() {
  CloseCompoundFile(*this);
  if (storage->file == this) storage->file = nullptr;
}

void LoadCompoundFile(CompoundFile& file) {
  file.result = CompoundOpenFailed;
  ResetTables(file);
  file.fileSize = KernelFileSeek(file.handle, 0, KERNEL_SEEK_END);
  if (file.fileSize == KERNEL_BAD_HANDLE ||
      KernelFileSeek(file.handle, 0, KERNEL_SEEK_START) != 0) {
    ++file.failedSeeks;
    return;
  }
  file.bytesLeft = ReadBudget(file.fileSize);
  HeaderBytes bytes = {};
  KernelFileRead(file.handle, bytes.data(), static_cast<uint32_t>(bytes.size()));
  LoadHeader(file.header, bytes);

  file.result = CompoundNotCompound;
  if (file.header.magic != kCompoundMagic) return;
  file.result = CompoundDamaged;
  if (!file.header.isReadable()) return;
  file.bigTable.blockSize = uint64_t{1} << file.header.bigShift;
  file.smallTable.blockSize = uint64_t{1} << file.header.smallShift;
  if (!LoadTables(file)) return;
  LoadEntries(file);
  if (file.failedSeeks != 0) {
    file.result = CompoundOpenFailed;
    return;
  }
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
    std::fill(block.begin(), block.end(), static_cast<unsigned char>(0));
    LoadBigBlock(file, number, block.data(), block.size());
    file.metaData.resize(std::min(data + words, data + (count - next)));
    for (uint64_t i = 0; i < words && next < count; ++i) {
      list[next++] = file.metaData[data++] = LoadLittleEndian<uint32_t>(block.data() + 4 * i);
    }
  }
  return list;
}

void ResetTables(CompoundFile& file) {
  file.bigTable = BlockTable();
  file.bigTable.blockSize = 512;
  file.smallTable = BlockTable();
  file.smallTable.blockSize = 64;
  const uint32_t rootKind = file.directory.rootKind;
  file.directory = DirectoryTree();
  file.directory.rootKind = rootKind;
  file.containerBlocks.clear();
  file.metaBlocks.clear();
  file.metaData.clear();
  file.metaDirty = false;
  file.bytesLeft = UINT64_MAX;
  file.directoryChain.clear();
  file.smallTableChain.clear();
  file.window.count = 0;
  file.failedSeeks = 0;
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
  return ReadBigBlocks(file, blocks, count, buffer, length, false);
}

uint64_t LoadBigBlocksCleared(CompoundFile& file, const uint64_t* blocks, uint64_t count,
                              unsigned char* buffer, uint64_t length) {
  return ReadBigBlocks(file, blocks, count, buffer, length, true);
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
