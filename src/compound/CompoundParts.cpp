#include "compound/CompoundParts.h"

#include <algorithm>
#include <optional>

#include "Common/LittleEndian.h"

namespace tarn {
namespace {

using Bytes = KernelVector<unsigned char>;

constexpr uint64_t kMostTableBytes = uint64_t{64} << 20;
// Of blocks that the file does not give, that many bytes are made as zeros; and blocks that are
// named several times may be that much more than the file.
constexpr uint64_t kMostBytesBeyondFile = uint64_t{1} << 20;

// How much of a list of blocks the file has, up to the first block that begins after its end.
uint64_t BytesInFile(const BigBlocks& big, BlockView blocks) {
  const uint64_t size = big.blockSize();
  uint64_t bytes = 0;
  for (const uint64_t block : blocks) {
    const uint64_t position = (block + 1) * size;
    if (position > big.fileSize()) break;
    bytes += std::min(size, big.fileSize() - position);
  }
  return bytes;
}

// All blocks of a list, whole records of the directory, zeros where the file gives nothing. A long
// list of missing blocks at the end is left out. Nothing for blocks that are more than the file.
std::optional<Bytes> LoadWhole(BigBlocks& big, BlockView blocks) {
  const uint64_t present =
      (BytesInFile(big, blocks) + kDirectoryRecordSize - 1) & ~(kDirectoryRecordSize - 1);
  if (present > big.fileSize() + kMostBytesBeyondFile) return std::nullopt;
  const uint64_t all = blocks.size() * big.blockSize();
  Bytes bytes(std::min(all, present + kMostBytesBeyondFile), 0);
  big.read(blocks, bytes);
  return bytes;
}

bool IsTooLong(uint64_t blocks, uint64_t blockSize, uint64_t most) {
  return blocks > most / blockSize;
}

// The table keeps its entries when it has no blocks.
bool LoadTable(BigBlocks& big, BlockView blocks, BlockTable& table) {
  const std::optional<Bytes> bytes = LoadWhole(big, blocks);
  if (!bytes) return false;
  if (!blocks.empty()) LoadBlockTable(table, *bytes);
  return true;
}

bool LoadTables(CompoundParts& file) {
  const uint64_t size = file.big.blockSize();
  const CompoundHeader& header = file.header;
  if (IsTooLong(header.tableBlockCount, size, kMostTableBytes)) return false;
  if (header.tableBlockCount > kHeaderTableBlocks &&
      IsTooLong(header.metaBlockCount, size, kMostTableBytes)) {
    return false;
  }
  if (!LoadTable(file.big, file.readTableBlocks(), file.bigTable)) return false;

  const BlockList small = FollowChain(file.bigTable, header.smallTableStart);
  return !IsTooLong(small.size(), size, kMostTableBytes) &&
         LoadTable(file.big, small, file.smallTable);
}

// A directory that is longer than its file, or shorter than one record, is empty, and then there is
// no container.
void LoadEntries(CompoundParts& file) {
  BlockList blocks = FollowChain(file.bigTable, file.header.directoryStart);
  const uint64_t size = file.big.blockSize();
  const uint64_t most = std::max(kMostTableBytes, file.big.fileSize() + size);
  if (IsTooLong(blocks.size(), size, most)) blocks.clear();
  const Bytes bytes = LoadWhole(file.big, blocks).value_or(Bytes());
  LoadDirectory(file.directory, bytes);
  if (bytes.size() >= kDirectoryRecordSize) {
    const uint64_t start = LoadLittleEndian<uint32_t>(bytes.data() + kRecordStartOffset);
    file.small.setContainer(FollowChain(file.bigTable, start));
  }
}

}  // namespace

void CompoundParts::reset() {
  opened = false;
  bigTable = BlockTable(512);
  smallTable = BlockTable(64);
  metaBlocks.clear();
  metaData.clear();
  big.reset();
  small.setContainer({});
  const uint32_t rootKind = directory.rootKind;
  directory = DirectoryTree();
  directory.rootKind = rootKind;
}

void CompoundParts::load() {
  reset();
  result = CompoundOpenFailed;
  if (!big.measure()) return;
  LoadHeader(header, big.readHeader());
  result = CompoundNotCompound;
  if (header.magic != kCompoundMagic) return;
  result = CompoundDamaged;
  if (!header.isReadable()) return;
  bigTable.blockSize = uint64_t{1} << header.bigShift;
  smallTable.blockSize = uint64_t{1} << header.smallShift;
  if (!LoadTables(*this)) return;
  LoadEntries(*this);
  opened = big.failedSeeks() == 0;
  result = opened ? CompoundOk : CompoundOpenFailed;
}

BlockList CompoundParts::tableBlocks() const {
  const uint64_t count = header.tableBlockCount;
  BlockList list(count, 0);
  std::copy_n(header.tableBlocks.begin(), std::min(count, kHeaderTableBlocks), list.begin());
  for (uint64_t i = 0; i < metaData.size() && kHeaderTableBlocks + i < count; ++i) {
    list[kHeaderTableBlocks + i] = metaData[i];
  }
  return list;
}

BlockList CompoundParts::readTableBlocks() {
  metaBlocks.clear();
  metaData.clear();
  BlockList list = tableBlocks();
  if (list.size() <= kHeaderTableBlocks) return list;
  const uint64_t words = big.blockSize() / 4;
  Bytes block(big.blockSize(), 0);
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
    metaBlocks.push_back(number);
    block.assign(block.size(), 0);
    big.read(BlockView(&number, 1), block);
    metaData.resize(data + std::min<uint64_t>(words, list.size() - next));
    for (uint64_t i = 0; i < words && next < list.size(); ++i) {
      list[next++] = metaData[data++] = LoadLittleEndian<uint32_t>(block.data() + 4 * i);
    }
  }
  return list;
}

}  // namespace tarn
