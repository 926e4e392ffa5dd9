#include "mutators/CompoundTree.h"

#include <algorithm>
#include <set>

namespace tarn::fuzz {
namespace {

using namespace tarn::test;

constexpr uint32_t kLastBlock = 0xFFFFFFF9;  // numbers above are marks
constexpr size_t kHeaderBytes = 512;
constexpr size_t kShift = 30;
constexpr size_t kDirectoryStart = 48;
constexpr size_t kSmallTableStart = 60;
constexpr size_t kMetaStart = 68;
constexpr size_t kHeaderTable = 76;
constexpr size_t kHeaderTableBlocks = 109;
constexpr size_t kRecordBytes = 128;
constexpr size_t kSmallLimit = 4096;
constexpr size_t kMostUnits = 31;
constexpr int kDeepest = 16;

class ImageMapper {
 public:
  explicit ImageMapper(std::string_view file) { image_.bytes = file; }

  std::optional<CompoundImage> map() {
    if (image_.bytes.size() < kHeaderBytes) return std::nullopt;
    const uint64_t shift = image_.get(kShift, 2);
    if (shift < 7 || shift > 14) return std::nullopt;
    image_.blockSize = size_t{1} << shift;
    findTable();
    image_.directoryBlocks = chain(number(kDirectoryStart));
    image_.smallTableBlocks = chain(number(kSmallTableStart));
    if (image_.directoryBlocks.empty()) return std::nullopt;
    image_.containerBlocks = chain(number(image_.record(0) + RecordStart));
    return std::move(image_);
  }

 private:
  uint32_t number(size_t offset) const { return static_cast<uint32_t>(image_.get(offset)); }

  bool isWhole(uint32_t block) const {
    return block <= kLastBlock && image_.block(block) + image_.blockSize <= image_.bytes.size();
  }

  void findTable() {
    for (size_t i = 0; i < kHeaderTableBlocks; ++i) addTableBlock(kHeaderTable + 4 * i);
    const size_t links = image_.blockSize / 4 - 1;
    std::set<uint32_t> seen;
    uint32_t block = number(kMetaStart);
    while (isWhole(block) && seen.insert(block).second) {
      image_.metaBlocks.push_back(block);
      for (size_t i = 0; i < links; ++i) addTableBlock(image_.block(block) + 4 * i);
      block = number(image_.block(block) + 4 * links);
    }
  }

  void addTableBlock(size_t offset) {
    const uint32_t block = number(offset);
    if (isWhole(block) && known_.insert(block).second) image_.tableBlocks.push_back(block);
  }

  std::vector<uint32_t> chain(uint32_t block) const {
    std::vector<uint32_t> blocks;
    std::set<uint32_t> seen;
    while (isWhole(block) && seen.insert(block).second) {
      blocks.push_back(block);
      if (block / (image_.blockSize / 4) >= image_.tableBlocks.size()) break;
      block = number(image_.tableEntry(block));
    }
    return blocks;
  }

  CompoundImage image_;
  std::set<uint32_t> known_;
};

class TreeReader {
 public:
  explicit TreeReader(const CompoundImage& image) : image_(image), room_(2 * image.bytes.size()) {}

  CompoundEntry read() {
    CompoundEntry root;
    readRecord(0, root, 0);
    return root;
  }

 private:
  uint32_t number(size_t offset) const { return static_cast<uint32_t>(image_.get(offset)); }

  bool exists(uint32_t entry) const {
    return entry < image_.directoryBlocks.size() * (image_.blockSize / kRecordBytes);
  }

  void readRecord(uint32_t entry, CompoundEntry& made, int depth) {
    const size_t record = image_.record(entry);
    const size_t units = std::min<size_t>(image_.get(record + RecordNameSize, 2) / 2, 32);
    for (size_t i = 0; i + 1 < units; ++i) {
      made.name.push_back(static_cast<char16_t>(image_.get(record + 2 * i, 2)));
    }
    made.isStream = image_.get(record + RecordType, 1) == 2;
    for (size_t i = 0; i < made.classId.size(); ++i) {
      made.classId[i] = static_cast<unsigned char>(image_.get(record + RecordClassId + i, 1));
    }
    if (made.isStream) {
      made.bytes = content(number(record + RecordStart), number(record + RecordSize));
    } else if (depth < kDeepest) {
      readChildren(number(record + RecordChild), made, depth);
    }
  }

  void readChildren(uint32_t first, CompoundEntry& parent, int depth) {
    std::vector<uint32_t> open = {first};
    while (!open.empty()) {
      const uint32_t entry = open.back();
      open.pop_back();
      if (!exists(entry) || !seen_.insert(entry).second) continue;
      open.push_back(number(image_.record(entry) + RecordRight));
      open.push_back(number(image_.record(entry) + RecordLeft));
      CompoundEntry child;
      readRecord(entry, child, depth + 1);
      const bool isKnown =
          std::any_of(parent.children.begin(), parent.children.end(),
                      [&child](const CompoundEntry& other) { return other.name == child.name; });
      if (child.name.empty() || isKnown) continue;
      parent.children.push_back(std::move(child));
    }
  }

  std::string content(uint32_t start, size_t size) {
    size = std::min({size, room_, image_.bytes.size()});
    std::string bytes;
    std::set<uint32_t> seen;
    const bool isSmall = size < kSmallLimit;
    const size_t blockSize = isSmall ? image_.smallBlockSize : image_.blockSize;
    while (bytes.size() < size && seen.insert(start).second) {
      const std::optional<size_t> place = isSmall ? smallBlock(start) : bigBlock(start);
      if (!place) break;
      bytes.append(image_.bytes, *place, std::min(blockSize, size - bytes.size()));
      start = next(start, isSmall);
    }
    room_ -= bytes.size();
    return bytes;
  }

  std::optional<size_t> bigBlock(uint32_t block) const {
    if (block > kLastBlock || image_.block(block) >= image_.bytes.size()) return std::nullopt;
    return image_.block(block);
  }

  std::optional<size_t> smallBlock(uint32_t block) const {
    const size_t place = size_t{block} * image_.smallBlockSize / image_.blockSize;
    if (place >= image_.containerBlocks.size()) return std::nullopt;
    return image_.smallBlock(block);
  }

  uint32_t next(uint32_t block, bool isSmall) const {
    const std::vector<uint32_t>& table = isSmall ? image_.smallTableBlocks : image_.tableBlocks;
    if (block / (image_.blockSize / 4) >= table.size()) return UINT32_MAX;
    return number(isSmall ? image_.smallTableEntry(block) : image_.tableEntry(block));
  }

  const CompoundImage& image_;
  size_t room_;
  std::set<uint32_t> seen_;
};

void Write(const CompoundEntry& entry, CompoundFolder& folder) {
  folder.classId(entry.classId);
  for (const CompoundEntry& child : entry.children) {
    const std::u16string_view name = std::u16string_view(child.name).substr(0, kMostUnits);
    if (name.empty()) continue;
    if (child.isStream) {
      folder.stream(name, child.bytes);
    } else {
      Write(child, folder.storage(name));
    }
  }
}

}  // namespace

std::optional<CompoundImage> MapCompoundFile(std::string_view file) {
  return ImageMapper(file).map();
}

CompoundEntry ReadCompoundTree(const CompoundImage& image) { return TreeReader(image).read(); }

std::string WriteCompoundTree(const CompoundEntry& root, const CompoundOptions& options) {
  CompoundBuilder file(options);
  Write(root, file.root());
  return file.write();
}

}  // namespace tarn::fuzz
