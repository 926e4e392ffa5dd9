// From the description to the bytes: directory records first, then blocks, then the tables.

#include <algorithm>
#include <bit>

#include "support/compound/CompoundBuilder.h"

namespace tarn::test {
namespace {

constexpr uint32_t kFree = 0xFFFFFFFF;
constexpr uint32_t kEnd = 0xFFFFFFFE;
constexpr uint32_t kFatMark = 0xFFFFFFFD;
constexpr uint32_t kDifatMark = 0xFFFFFFFC;
constexpr uint32_t kNoEntry = 0xFFFFFFFF;

constexpr size_t kHeaderBytes = 512;
constexpr size_t kHeaderTableBlocks = 109;
constexpr size_t kSmallLimit = 4096;
constexpr size_t kSmallBlock = 64;

constexpr size_t Blocks(size_t bytes, size_t blockSize) {
  return (bytes + blockSize - 1) / blockSize;
}

char16_t UpperCase(char16_t unit) {
  const bool ascii = unit >= u'a' && unit <= u'z';
  const bool latin = unit >= 0xE0 && unit <= 0xFE && unit != 0xF7;
  return ascii || latin ? static_cast<char16_t>(unit - 0x20) : unit;
}

bool NameBefore(std::u16string_view left, std::u16string_view right) {
  if (left.size() != right.size()) return left.size() < right.size();
  return std::lexicographical_compare(
      left.begin(), left.end(), right.begin(), right.end(),
      [](char16_t a, char16_t b) { return UpperCase(a) < UpperCase(b); });
}

struct Record {
  const CompoundFolder* folder = nullptr;
  bool red = false;
  uint32_t left = kNoEntry;
  uint32_t right = kNoEntry;
  uint32_t child = kNoEntry;
  uint32_t start = 0;
  uint64_t size = 0;
};

}  // namespace

class CompoundImageWriter {
 public:
  CompoundImageWriter(const CompoundOptions& options, const CompoundFolder& root)
      : options_(options), root_(root) {
    image_.blockSize = size_t{1} << shift();
  }

  CompoundImage write() {
    addRecord(root_, "");
    linkChildren(root_, 0, "");
    // A block smaller than the header would begin inside of it.
    const size_t reserved = Blocks(kHeaderBytes, image_.blockSize) - 1;
    fat_.assign(reserved + options_.freeBlocks, kFree);
    layOutStreams();
    layOutContainer();
    layOutSmallTable();
    layOutDirectory();
    layOutTables();
    putBlocks();
    putHeader();
    return std::move(image_);
  }

 private:
  using Chain = std::vector<uint32_t>;

  uint32_t shift() const {
    if (options_.bigShift != 0) return options_.bigShift;
    return options_.version == CompoundVersion::V3 ? 9 : 12;
  }

  static bool isStream(const CompoundFolder& folder) { return folder.isStream_; }

  uint32_t addRecord(const CompoundFolder& folder, const std::string& path) {
    const auto index = static_cast<uint32_t>(records_.size());
    records_.emplace_back();
    records_.back().folder = &folder;
    image_.entries.emplace(path, index);
    return index;
  }

  // Records for the children in the order in which they were made, then for theirs.
  void linkChildren(const CompoundFolder& folder, uint32_t index, const std::string& path) {
    std::vector<uint32_t> children;
    std::vector<std::string> paths;
    for (const auto& child : folder.children_) {
      std::string name;
      for (const char16_t unit : child->name_) name.push_back(static_cast<char>(unit));
      paths.push_back(path.empty() ? name : path + "/" + name);
      children.push_back(addRecord(*child, paths.back()));
    }
    for (size_t i = 0; i < children.size(); ++i) {
      linkChildren(*folder.children_[i], children[i], paths[i]);
    }
    std::sort(children.begin(), children.end(), [this](uint32_t left, uint32_t right) {
      return NameBefore(records_[left].folder->name_, records_[right].folder->name_);
    });
    const bool full = std::has_single_bit(children.size() + 1);
    const auto levels = static_cast<uint32_t>(std::bit_width(children.size()));
    records_[index].child = linkSiblings(children, 0, children.size(), full ? 0 : levels);
  }

  // The root of a tree of sorted siblings. All levels but the deepest are full; that one is red
  // unless it is full too, so that each path down meets the same number of black nodes. `toRed`
  // counts down to the red level; 0 means that there is none.
  uint32_t linkSiblings(const std::vector<uint32_t>& sorted, size_t first, size_t last,
                        uint32_t toRed) {
    if (options_.shape != SiblingShape::Balanced) return linkList(sorted);
    if (first == last) return kNoEntry;
    const size_t middle = first + (last - first) / 2;
    Record& record = records_[sorted[middle]];
    record.red = toRed == 1;
    const uint32_t below = toRed > 1 ? toRed - 1 : 0;
    record.left = linkSiblings(sorted, first, middle, below);
    record.right = linkSiblings(sorted, middle + 1, last, below);
    return sorted[middle];
  }

  uint32_t linkList(const std::vector<uint32_t>& sorted) {
    if (sorted.empty()) return kNoEntry;
    const bool toRight = options_.shape == SiblingShape::RightList;
    for (size_t i = 1; i < sorted.size(); ++i) {
      if (toRight) {
        records_[sorted[i - 1]].right = sorted[i];
      } else {
        records_[sorted[i]].left = sorted[i - 1];
      }
    }
    return toRight ? sorted.front() : sorted.back();
  }

  // Puts bytes into new blocks, in the order asked for; the tail of the last is zeros.
  Chain place(std::string_view bytes, BlockOrder order) {
    const size_t count = Blocks(bytes.size(), image_.blockSize);
    Chain chain = newBlocks(count, order);
    for (size_t i = 0; i < count; ++i) {
      blocks_.emplace_back(chain[i], bytes.substr(i * image_.blockSize, image_.blockSize));
      fat_[chain[i]] = i + 1 < count ? chain[i + 1] : kEnd;
    }
    return chain;
  }

  Chain newBlocks(size_t count, BlockOrder order) {
    const auto first = static_cast<uint32_t>(fat_.size());
    fat_.resize(fat_.size() + count, kEnd);
    Chain chain;
    for (uint32_t i = 0; i < count; ++i) chain.push_back(first + i);
    if (order == BlockOrder::Descending) std::reverse(chain.begin(), chain.end());
    if (order == BlockOrder::Interleaved) {
      std::stable_partition(chain.begin(), chain.end(),
                            [first](uint32_t block) { return (block - first) % 2 == 0; });
    }
    return chain;
  }

  void layOutStreams() {
    for (Record& record : records_) {
      if (!isStream(*record.folder)) continue;
      const std::string& bytes = record.folder->bytes_;
      record.size = bytes.size();
      if (bytes.empty()) {
        record.start = kEnd;
      } else if (bytes.size() < kSmallLimit) {
        placeSmall(record);
      } else {
        record.start = place(bytes, options_.order).front();
      }
    }
  }

  void placeSmall(Record& record) {
    const std::string& bytes = record.folder->bytes_;
    const auto first = static_cast<uint32_t>(miniFat_.size());
    const auto count = static_cast<uint32_t>(Blocks(bytes.size(), kSmallBlock));
    record.start = first;
    for (uint32_t i = 1; i < count; ++i) miniFat_.push_back(first + i);
    miniFat_.push_back(kEnd);
    container_ += bytes;
    container_.resize(miniFat_.size() * kSmallBlock, '\0');
  }

  void layOutContainer() {
    image_.containerBlocks = place(container_, options_.order);
    Record& root = records_.front();
    root.start = container_.empty() ? kEnd : image_.containerBlocks.front();
    root.size = container_.size();
  }

  void layOutSmallTable() {
    std::string bytes = numbers(miniFat_);
    pad(bytes, '\xFF');
    image_.smallTableBlocks = place(bytes, BlockOrder::Ascending);
  }

  void layOutDirectory() {
    std::string bytes;
    for (const Record& record : records_) bytes += recordBytes(record);
    while (bytes.size() % image_.blockSize != 0) bytes += unusedRecord();
    image_.directoryBlocks = place(bytes, options_.order);
  }

  static std::string unusedRecord() {
    std::string bytes(kRecordBytes, '\0');
    for (const size_t link : {RecordLeft, RecordRight, RecordChild}) put(bytes, link, kNoEntry, 4);
    return bytes;
  }

  std::string recordBytes(const Record& record) const {
    const bool isRoot = record.folder == &root_;
    const std::u16string& name = isRoot ? kRootName : record.folder->name_;
    std::string bytes(kRecordBytes, '\0');
    for (size_t i = 0; i < name.size(); ++i) put(bytes, RecordName + 2 * i, name[i], 2);
    put(bytes, RecordNameSize, 2 * name.size() + 2, 2);
    put(bytes, RecordType, isRoot ? 5 : isStream(*record.folder) ? 2 : 1, 1);
    put(bytes, RecordColour, record.red ? 0 : 1, 1);
    put(bytes, RecordLeft, record.left, 4);
    put(bytes, RecordRight, record.right, 4);
    put(bytes, RecordChild, record.child, 4);
    const auto& id = record.folder->classId_;
    for (size_t i = 0; i < id.size(); ++i) put(bytes, RecordClassId + i, id[i], 1);
    put(bytes, RecordStart, record.start, 4);
    put(bytes, RecordSize, record.size, 8);
    return bytes;
  }

  // The FAT covers its own blocks and those of the DIFAT.
  void layOutTables() {
    const size_t perBlock = image_.blockSize / 4;
    const size_t data = fat_.size();
    size_t fatCount = 1;
    size_t difatCount = 0;
    for (bool fits = false; !fits;) {
      difatCount =
          fatCount <= kHeaderTableBlocks ? 0 : Blocks(fatCount - kHeaderTableBlocks, perBlock - 1);
      const size_t needed = Blocks(data + fatCount + difatCount, perBlock);
      fits = needed <= fatCount;
      fatCount = std::max(fatCount, needed);
    }
    image_.tableBlocks = newBlocks(fatCount, BlockOrder::Ascending);
    image_.metaBlocks = newBlocks(difatCount, BlockOrder::Ascending);
    for (const uint32_t block : image_.tableBlocks) fat_[block] = kFatMark;
    for (const uint32_t block : image_.metaBlocks) fat_[block] = kDifatMark;
    putFat();
    putDifat();
  }

  void putFat() {
    std::string bytes = numbers(fat_);
    bytes.resize(image_.tableBlocks.size() * image_.blockSize, '\xFF');
    for (size_t i = 0; i < image_.tableBlocks.size(); ++i) {
      blocks_.emplace_back(image_.tableBlocks[i],
                           bytes.substr(i * image_.blockSize, image_.blockSize));
    }
  }

  // Each DIFAT block ends with the number of the next.
  void putDifat() {
    const size_t perBlock = image_.blockSize / 4 - 1;
    for (size_t i = 0; i < image_.metaBlocks.size(); ++i) {
      Chain words(perBlock + 1, kFree);
      for (size_t j = 0; j < perBlock; ++j) {
        const size_t index = kHeaderTableBlocks + i * perBlock + j;
        if (index < image_.tableBlocks.size()) words[j] = image_.tableBlocks[index];
      }
      words[perBlock] = i + 1 < image_.metaBlocks.size() ? image_.metaBlocks[i + 1] : kEnd;
      blocks_.emplace_back(image_.metaBlocks[i], numbers(words));
    }
  }

  void putBlocks() {
    image_.bytes.assign(std::max(kHeaderBytes, image_.block(0) + fat_.size() * image_.blockSize),
                        '\0');
    for (const auto& [number, bytes] : blocks_) {
      std::copy(bytes.begin(), bytes.end(),
                image_.bytes.begin() + static_cast<std::ptrdiff_t>(image_.block(number)));
    }
  }

  void putHeader() {
    constexpr std::string_view kMagic = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1";
    const bool v3 = options_.version == CompoundVersion::V3;
    image_.bytes.replace(0, kMagic.size(), kMagic);
    image_.put(24, 0x3E, 2);
    image_.put(26, v3 ? 3 : 4, 2);
    image_.put(28, 0xFFFE, 2);
    image_.put(30, shift(), 2);
    image_.put(32, 6, 2);
    image_.put(40, v3 ? 0 : image_.directoryBlocks.size());
    image_.put(44, image_.tableBlocks.size());
    image_.put(48, image_.directoryBlocks.front());
    image_.put(56, kSmallLimit);
    image_.put(60, firstOf(image_.smallTableBlocks));
    image_.put(64, image_.smallTableBlocks.size());
    image_.put(68, firstOf(image_.metaBlocks));
    image_.put(72, image_.metaBlocks.size());
    for (size_t i = 0; i < kHeaderTableBlocks; ++i) {
      const bool used = i < image_.tableBlocks.size();
      image_.put(76 + 4 * i, used ? image_.tableBlocks[i] : kFree);
    }
  }

  static uint32_t firstOf(const Chain& chain) { return chain.empty() ? kEnd : chain.front(); }

  static void put(std::string& bytes, size_t offset, uint64_t value, size_t width) {
    for (size_t i = 0; i < width; ++i) bytes.at(offset + i) = static_cast<char>(value >> (8 * i));
  }

  static std::string numbers(const Chain& words) {
    std::string bytes(4 * words.size(), '\0');
    for (size_t i = 0; i < words.size(); ++i) put(bytes, 4 * i, words[i], 4);
    return bytes;
  }

  void pad(std::string& bytes, char filler) const {
    bytes.resize(Blocks(bytes.size(), image_.blockSize) * image_.blockSize, filler);
  }

  inline static const std::u16string kRootName = u"Root Entry";

  const CompoundOptions& options_;
  const CompoundFolder& root_;
  std::vector<Record> records_;
  Chain fat_;
  Chain miniFat_;
  std::string container_;
  std::vector<std::pair<uint32_t, std::string>> blocks_;
  CompoundImage image_;
};

CompoundImage CompoundBuilder::image() const {
  return CompoundImageWriter(options_, root_).write();
}

}  // namespace tarn::test
