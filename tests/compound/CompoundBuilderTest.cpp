// The writer that tests use, held against the published format with a reader of a few lines that
// knows nothing but the bytes.

#include <gtest/gtest.h>

#include "support/compound/CompoundBuilder.h"

#include <map>
#include <set>
#include <stdexcept>

namespace tarn::test {
namespace {

constexpr uint32_t kFree = 0xFFFFFFFF;
constexpr uint32_t kEnd = 0xFFFFFFFE;

class PlainReader {
 public:
  explicit PlainReader(const CompoundImage& image) : image_(image) {
    size_ = size_t{1} << image.get(30, 2);
    std::vector<uint32_t> tables;
    for (size_t i = 0; i < 109; ++i) add(tables, static_cast<uint32_t>(image.get(76 + 4 * i)));
    auto meta = static_cast<uint32_t>(image.get(68));
    for (; meta != kEnd; meta = word(meta, size_ / 4 - 1)) {
      metas_.push_back(meta);
      for (size_t i = 0; i + 1 < size_ / 4; ++i) add(tables, word(meta, i));
    }
    EXPECT_EQ(metas_.size(), image.get(72));
    EXPECT_EQ(tables.size(), image.get(44));
    for (const uint32_t table : tables) {
      for (size_t i = 0; i < size_ / 4; ++i) fat_.push_back(word(table, i));
    }
    for (const uint32_t table : tables) EXPECT_EQ(fat_.at(table), 0xFFFFFFFDu);
    for (const uint32_t block : metas_) EXPECT_EQ(fat_.at(block), 0xFFFFFFFCu);
    directory_ = content(static_cast<uint32_t>(image.get(48)));
    smallTable_ = content(static_cast<uint32_t>(image.get(60)));
    EXPECT_EQ(smallTable_.size(), image.get(64) * size_);
    container_ = content(field(0, RecordStart));
    walk(field(0, RecordChild), "");
  }

  const std::map<std::string, std::string>& streams() const { return streams_; }
  const std::set<uint32_t>& used() const { return used_; }
  size_t blocks() const { return image_.bytes.size() / size_ - 1; }
  size_t metaBlocks() const { return metas_.size(); }

 private:
  static void add(std::vector<uint32_t>& list, uint32_t number) {
    if (number != kFree) list.push_back(number);
  }
  uint32_t word(uint32_t block, size_t index) const {
    return static_cast<uint32_t>(image_.get((size_t{block} + 1) * size_ + 4 * index));
  }
  static uint32_t number(const std::string& bytes, size_t at) {
    uint32_t value = 0;
    for (size_t i = 0; i < 4; ++i) {
      value |= uint32_t{static_cast<unsigned char>(bytes.at(at + i))} << (8 * i);
    }
    return value;
  }
  uint32_t field(uint32_t entry, size_t offset) const {
    return number(directory_, size_t{entry} * 128 + offset);
  }
  std::string content(uint32_t start) {
    std::string bytes;
    for (uint32_t block = start; block != kEnd; block = fat_.at(block)) {
      EXPECT_TRUE(used_.insert(block).second) << "a block of two chains";
      bytes += image_.bytes.substr((size_t{block} + 1) * size_, size_);
    }
    return bytes;
  }

  std::string name(uint32_t entry) const {
    std::string text;
    const size_t length =
        static_cast<unsigned char>(directory_.at(size_t{entry} * 128 + RecordNameSize)) / 2u - 1;
    for (size_t i = 0; i < length; ++i) text.push_back(directory_.at(size_t{entry} * 128 + 2 * i));
    return text;
  }
  static bool before(std::string left, std::string right) {
    if (left.size() != right.size()) return left.size() < right.size();
    for (char& c : left) c = static_cast<char>(std::toupper(c));
    for (char& c : right) c = static_cast<char>(std::toupper(c));
    return left < right;
  }

  // The black nodes on every way down, which are to be as many on each.
  int walk(uint32_t entry, const std::string& path, bool belowRed = false) {
    if (entry == kFree) return 0;
    const std::string own = path + name(entry);
    const bool red = directory_.at(size_t{entry} * 128 + RecordColour) == '\0';
    EXPECT_FALSE(red && belowRed) << own;
    const uint32_t left = field(entry, RecordLeft);
    const uint32_t right = field(entry, RecordRight);
    if (left != kFree) {
      EXPECT_TRUE(before(name(left), name(entry))) << own;
    }
    if (right != kFree) {
      EXPECT_TRUE(before(name(entry), name(right))) << own;
    }
    const int blackLeft = walk(left, path, red);
    EXPECT_EQ(walk(right, path, red), blackLeft) << own;
    visit(entry, own);
    return blackLeft + (red ? 0 : 1);
  }

  void visit(uint32_t entry, const std::string& path) {
    const char type = directory_.at(size_t{entry} * 128 + RecordType);
    if (type == '\1') {
      walk(field(entry, RecordChild), path + "/");
      return;
    }
    EXPECT_EQ(type, '\2');
    const uint32_t size = field(entry, RecordSize);
    const uint32_t start = field(entry, RecordStart);
    if (size >= 4096) {
      streams_[path] = content(start).substr(0, size);
      return;
    }
    std::string bytes;
    for (uint32_t block = start; block != kEnd; block = number(smallTable_, 4 * size_t{block})) {
      bytes += container_.substr(size_t{block} * 64, 64);
    }
    streams_[path] = bytes.substr(0, size);
  }

  const CompoundImage& image_;
  size_t size_ = 0;
  std::vector<uint32_t> metas_;
  std::vector<uint32_t> fat_;
  std::string directory_;
  std::string smallTable_;
  std::string container_;
  std::map<std::string, std::string> streams_;
  std::set<uint32_t> used_;
};

TEST(CompoundBuilder, ANewFileHoldsTheRootOnly) {
  const CompoundImage image = CompoundBuilder().image();
  EXPECT_EQ(image.bytes.size(), 3u * 512);  // header, directory, FAT
  EXPECT_EQ(image.get(60), kEnd);
  EXPECT_EQ(image.get(image.record("") + RecordStart), kEnd);
  EXPECT_EQ(image.get(image.record("") + RecordType, 1), 5u);
  EXPECT_EQ(image.bytes.substr(image.record(""), 22),
            std::string("R\0o\0o\0t\0 \0E\0n\0t\0r\0y\0\0\0", 22));
  EXPECT_TRUE(PlainReader(image).streams().empty());
}

TEST(CompoundBuilder, TreesOfEverySizeAreInOrderAndBalanced) {
  for (int count = 0; count < 70; ++count) {
    CompoundBuilder builder;
    std::map<std::string, std::string> expected;
    for (int i = 0; i < count; ++i) {
      const std::string name = (i % 3 == 0 ? "N" : "n") + std::to_string(i * 37 % 101);
      builder.stream(name, std::to_string(i));
      expected[name] = std::to_string(i);
    }
    const CompoundImage image = builder.image();
    ASSERT_EQ(PlainReader(image).streams(), expected) << count;
  }
}

TEST(CompoundBuilder, StreamsOfBothKindsInBothVersions) {
  for (const CompoundVersion version : {CompoundVersion::V3, CompoundVersion::V4}) {
    for (const BlockOrder order :
         {BlockOrder::Ascending, BlockOrder::Descending, BlockOrder::Interleaved}) {
      CompoundOptions options;
      options.version = version;
      options.order = order;
      CompoundBuilder builder(options);
      std::map<std::string, std::string> expected;
      for (const size_t size : {0u, 1u, 64u, 65u, 4095u, 4096u, 4097u, 50000u}) {
        std::string bytes;
        for (size_t i = 0; i < size; ++i) bytes.push_back(static_cast<char>(i * 31 + i / 256));
        builder.at("a/b").stream("s" + std::to_string(size), bytes);
        expected["a/b/s" + std::to_string(size)] = bytes;
      }
      const CompoundImage image = builder.image();
      EXPECT_EQ(image.get(26, 2), version == CompoundVersion::V3 ? 3u : 4u);
      EXPECT_EQ(image.get(30, 2), version == CompoundVersion::V3 ? 9u : 12u);
      EXPECT_EQ(PlainReader(image).streams(), expected);
    }
  }
}

TEST(CompoundBuilder, TablesOfMoreThan109BlocksGoOnInTheDifat) {
  for (const uint32_t tables : {109u, 110u, 236u, 237u}) {
    CompoundOptions options;
    options.freeBlocks = (tables - 1) * 128 + 64 - 41 - tables - (tables + 17) / 127;
    const std::string bytes(20000, 'b');
    const CompoundImage image = CompoundBuilder(options).stream("b", bytes).image();
    EXPECT_EQ(image.tableBlocks.size(), tables);
    const PlainReader reader(image);
    EXPECT_EQ(reader.metaBlocks(), tables == 109 ? 0u : (tables - 109 + 126) / 127);
    EXPECT_EQ(reader.streams().at("b"), bytes);
  }
}

TEST(CompoundBuilder, NamesAndReplacements) {
  CompoundBuilder builder;
  EXPECT_THROW(builder.stream("", "x"), std::length_error);
  EXPECT_THROW(builder.stream(std::string(32, 'n'), "x"), std::length_error);
  builder.stream(std::string(31, 'n'), "1").stream("twice", "1").stream("twice", "2");
  const CompoundImage image = builder.image();
  EXPECT_EQ(PlainReader(image).streams().at("twice"), "2");
  EXPECT_EQ(image.get(image.record(std::string(31, 'n')) + RecordNameSize, 2), 64u);
  EXPECT_THROW(image.record("missing"), std::out_of_range);
}

}  // namespace
}  // namespace tarn::test
