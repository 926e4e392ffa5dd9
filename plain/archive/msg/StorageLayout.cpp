#include "archive/msg/StorageLayout.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <utility>

#include "Common/LittleEndian.h"
#include "compound/CompoundHeader.h"
#include "compound/DirectoryTree.h"

namespace tarn::archive::msg {
namespace {

constexpr uint64_t kBlock = 512;
constexpr uint64_t kSmallBlock = 64;
constexpr uint64_t kBlocksInFat = kBlock / 4;
constexpr uint64_t kNumbersInDifat = kBlocksInFat - 1;
constexpr uint64_t kLargestFile = (uint64_t{1} << 31) - kBlock;

// Fields of a directory record.
enum RecordOffset : size_t {
  kNameSizeAt = 64,
  kTypeAt = 66,
  kColourAt = 67,
  kLeftAt = 68,
  kRightAt = 72,
  kChildAt = 76,
  kStartAt = 116,
  kSizeAt = 120,
  kHighSizeAt = 124
};
constexpr unsigned char kTypeRoot = 5;
constexpr unsigned char kRed = 0;
constexpr unsigned char kBlack = 1;

uint64_t Blocks(uint64_t bytes, uint64_t size) { return (bytes + size - 1) / size; }

struct Node {
  EntryNumber source = 0;
  bool isStorage = false;
  uint64_t size = 0;
  uint32_t start = static_cast<uint32_t>(kChainEnd);
  unsigned char colour = kBlack;
  uint32_t left = static_cast<uint32_t>(kNoEntry);
  uint32_t right = static_cast<uint32_t>(kNoEntry);
  uint32_t child = static_cast<uint32_t>(kNoEntry);
};

struct Sections {
  uint64_t fat = 0;
  uint64_t difat = 0;
  uint64_t directory = 0;
  uint64_t miniFat = 0;
  uint64_t mini = 0;
  uint64_t big = 0;

  uint64_t all() const { return fat + difat + directory + miniFat + mini + big; }
};

class Layout {
 public:
  explicit Layout(StorageFile& file) : file_(file) {}

  Outcome<StorageLayout> make(EntryNumber storage) {
    if (!collect(storage)) {
      return Trouble{TroubleKind::Damaged, "a stream of the object is larger than the file"};
    }
    placeStreams();
    if (sections_.all() * kBlock > kLargestFile) {
      return Trouble{TroubleKind::TooLarge, "the object is larger than a compound file can be"};
    }
    layout_.head = header() + fat() + difat();
    if (const std::optional<Trouble> trouble = addDirectory()) return *trouble;
    layout_.head += miniFat();
    return std::move(layout_);
  }

 private:
  bool collect(EntryNumber storage);
  uint32_t hang(uint32_t first, size_t count, unsigned depth, unsigned fullLevels);
  void placeStreams();
  void placeBig();
  void countTables();
  std::string header() const;
  std::string fat() const;
  std::string difat() const;
  std::optional<Trouble> addDirectory();
  std::string miniFat() const;

  StorageFile& file_;
  std::vector<Node> nodes_;
  Sections sections_;
  uint64_t miniSize_ = 0;  // bytes of the mini stream
  StorageLayout layout_;
};

void Put(std::string& bytes, uint64_t number, size_t width = 4) {
  for (size_t at = 0; at < width; ++at) bytes.push_back(static_cast<char>(number >> (8 * at)));
}

void FillBlock(std::string& bytes, uint64_t number) {
  while (bytes.size() % kBlock != 0) Put(bytes, number);
}

// Blocks one after the other, and the end.
void PutChain(std::string& bytes, uint64_t first, uint64_t count) {
  for (uint64_t at = 1; at < count; ++at) Put(bytes, first + at);
  if (count != 0) Put(bytes, kChainEnd);
}

// Storages come before what is in them; the children of one side by side, in their order.
bool Layout::collect(EntryNumber storage) {
  nodes_.push_back({storage, true});
  for (size_t at = 0; at < nodes_.size(); ++at) {
    if (!nodes_[at].isStorage) continue;
    const std::span<const EntryNumber> children = file_.children(nodes_[at].source);
    const auto first = static_cast<uint32_t>(nodes_.size());
    for (const EntryNumber child : children) {
      if (file_.sizeOf(child) > file_.size()) return false;
      nodes_.push_back({child, file_.isStorage(child), file_.sizeOf(child)});
    }
    unsigned fullLevels = 0;
    while ((size_t{2} << fullLevels) - 1 <= children.size()) ++fullLevels;
    nodes_[at].child = hang(first, children.size(), 0, fullLevels);
  }
  return true;
}

// A balanced tree of nodes that are in order: black, but for the last level where it is not full.
uint32_t Layout::hang(uint32_t first, size_t count, unsigned depth, unsigned fullLevels) {
  if (count == 0) return static_cast<uint32_t>(kNoEntry);
  const size_t before = count / 2;
  const uint32_t middle = first + static_cast<uint32_t>(before);
  nodes_[middle].colour = depth < fullLevels ? kBlack : kRed;
  nodes_[middle].left = hang(first, before, depth + 1, fullLevels);
  nodes_[middle].right = hang(middle + 1, count - before - 1, depth + 1, fullLevels);
  return middle;
}

void Layout::placeStreams() {
  for (Node& node : nodes_) {
    if (node.isStorage || node.size == 0 || node.size >= kSmallStreamLimit) continue;
    node.start = static_cast<uint32_t>(miniSize_ / kSmallBlock);
    const uint64_t whole = Blocks(node.size, kSmallBlock) * kSmallBlock;
    layout_.pieces.push_back({node.source, static_cast<size_t>(whole - node.size)});
    miniSize_ += whole;
  }
  if (miniSize_ % kBlock != 0) layout_.pieces.back().padding += kBlock - miniSize_ % kBlock;
  for (const Node& node : nodes_) {
    if (node.size >= kSmallStreamLimit) sections_.big += Blocks(node.size, kBlock);
  }
  sections_.mini = Blocks(miniSize_, kBlock);
  sections_.miniFat = Blocks(miniSize_ / kSmallBlock * 4, kBlock);
  sections_.directory = Blocks(nodes_.size() * kDirectoryRecordSize, kBlock);
  countTables();
  placeBig();
}

void Layout::countTables() {
  for (;;) {
    const uint64_t fat = Blocks(sections_.all(), kBlocksInFat);
    const uint64_t difat =
        fat > kHeaderTableBlocks ? Blocks(fat - kHeaderTableBlocks, kNumbersInDifat) : 0;
    if (fat == sections_.fat && difat == sections_.difat) return;
    sections_.fat = fat;
    sections_.difat = difat;
  }
}

void Layout::placeBig() {
  uint64_t next = sections_.all() - sections_.big;
  for (Node& node : nodes_) {
    if (node.size < kSmallStreamLimit) continue;
    node.start = static_cast<uint32_t>(next);
    const uint64_t blocks = Blocks(node.size, kBlock);
    layout_.pieces.push_back({node.source, static_cast<size_t>(blocks * kBlock - node.size)});
    next += blocks;
  }
  nodes_[0].size = miniSize_;
  if (miniSize_ != 0) {
    nodes_[0].start = static_cast<uint32_t>(sections_.all() - sections_.big - sections_.mini);
  }
}

std::string Layout::header() const {
  std::string bytes(kCompoundMagic.begin(), kCompoundMagic.end());
  const uint64_t directory = sections_.fat + sections_.difat;
  bytes.append(16, '\0');
  Put(bytes, 62, 2);
  Put(bytes, 3, 2);
  Put(bytes, 0xFFFE, 2);
  Put(bytes, 9, 2);
  Put(bytes, 6, 2);
  bytes.append(10, '\0');
  Put(bytes, sections_.fat);
  Put(bytes, directory);
  Put(bytes, 0);
  Put(bytes, kSmallStreamLimit);
  Put(bytes, sections_.miniFat != 0 ? directory + sections_.directory : kChainEnd);
  Put(bytes, sections_.miniFat);
  Put(bytes, sections_.difat != 0 ? sections_.fat : kChainEnd);
  Put(bytes, sections_.difat);
  for (uint64_t at = 0; at < kHeaderTableBlocks; ++at) {
    Put(bytes, at < sections_.fat ? at : kFreeBlock);
  }
  return bytes;
}

std::string Layout::fat() const {
  std::string bytes;
  for (uint64_t at = 0; at < sections_.fat; ++at) Put(bytes, kTableBlock);
  for (uint64_t at = 0; at < sections_.difat; ++at) Put(bytes, kMetaBlock);
  uint64_t next = sections_.fat + sections_.difat;
  for (const uint64_t count : {sections_.directory, sections_.miniFat, sections_.mini}) {
    PutChain(bytes, next, count);
    next += count;
  }
  for (const Node& node : nodes_) {
    if (!node.isStorage && node.size >= kSmallStreamLimit) {
      PutChain(bytes, node.start, Blocks(node.size, kBlock));
    }
  }
  FillBlock(bytes, kFreeBlock);
  return bytes;
}

std::string Layout::difat() const {
  std::string bytes;
  for (uint64_t block = 0; block < sections_.difat; ++block) {
    const uint64_t first = kHeaderTableBlocks + block * kNumbersInDifat;
    for (uint64_t at = first; at < first + kNumbersInDifat; ++at) {
      Put(bytes, at < sections_.fat ? at : kFreeBlock);
    }
    Put(bytes, block + 1 < sections_.difat ? sections_.fat + block + 1 : kChainEnd);
  }
  return bytes;
}

void NameRoot(EntryRecord& record) {
  constexpr std::string_view kRootName = "Root Entry";
  std::fill_n(record.begin(), kNameSizeAt, static_cast<unsigned char>(0));
  for (size_t at = 0; at < kRootName.size(); ++at) {
    record[2 * at] = static_cast<unsigned char>(kRootName[at]);
  }
  StoreLittleEndian<uint16_t>(record.data() + kNameSizeAt, 2 * kRootName.size() + 2);
  record[kTypeAt] = kTypeRoot;
}

std::optional<Trouble> Layout::addDirectory() {
  for (size_t at = 0; at < nodes_.size(); ++at) {
    const Node& node = nodes_[at];
    Outcome<EntryRecord> read = file_.record(node.source);
    if (!read) return read.trouble();
    EntryRecord& record = *read;
    if (at == 0) NameRoot(record);
    record[kColourAt] = node.colour;
    StoreLittleEndian<uint32_t>(record.data() + kLeftAt, node.left);
    StoreLittleEndian<uint32_t>(record.data() + kRightAt, node.right);
    StoreLittleEndian<uint32_t>(record.data() + kChildAt, node.child);
    const bool hasStream = at == 0 || !node.isStorage;
    StoreLittleEndian<uint32_t>(record.data() + kStartAt, hasStream ? node.start : 0);
    StoreLittleEndian<uint32_t>(record.data() + kSizeAt, node.size);
    StoreLittleEndian<uint32_t>(record.data() + kHighSizeAt, 0);
    layout_.head.append(record.begin(), record.end());
  }
  // Records that nothing uses: zeros, but for the links.
  while (layout_.head.size() % kBlock != 0) {
    EntryRecord unused{};
    for (const size_t link : {kLeftAt, kRightAt, kChildAt}) {
      StoreLittleEndian<uint32_t>(unused.data() + link, kNoEntry);
    }
    layout_.head.append(unused.begin(), unused.end());
  }
  return std::nullopt;
}

std::string Layout::miniFat() const {
  std::string bytes;
  for (const Node& node : nodes_) {
    if (!node.isStorage && node.size < kSmallStreamLimit) {
      PutChain(bytes, node.start, Blocks(node.size, kSmallBlock));
    }
  }
  FillBlock(bytes, kFreeBlock);
  return bytes;
}

}  // namespace

Outcome<StorageLayout> LayOutStorage(StorageFile& file, EntryNumber storage) {
  return Layout(file).make(storage);
}

}  // namespace tarn::archive::msg
