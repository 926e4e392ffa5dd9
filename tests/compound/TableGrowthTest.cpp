// The big table's own blocks and its meta blocks, as a file grows.

#include <gtest/gtest.h>

#include "CompoundFiles.h"

namespace tarn::test {
namespace {

constexpr uint32_t kEnd = 0xFFFFFFFE;
constexpr uint32_t kMeta = 0xFFFFFFFC;

std::string Words(const std::vector<uint32_t>& words) {
  std::string bytes;
  for (const uint32_t word : words) {
    for (int i = 0; i < 4; ++i) bytes.push_back(static_cast<char>(word >> (8 * i)));
  }
  return bytes;
}

std::string Padded(std::string bytes, size_t size, char filler) {
  bytes.resize(size, filler);
  return bytes;
}

TEST(TableBlocks, HandingOutBlock64AddsTheSecond) {
  NewFile made;
  CompoundFile& file = made.file();
  BlockList chain;
  for (uint64_t block = 4; block < 64; ++block) EXPECT_EQ(ExtendChain(file, chain), block);
  EXPECT_EQ(PartsOf(file).header.tableBlockCount, 1u);
  EXPECT_EQ(ExtendChain(file, chain), 64u);
  EXPECT_EQ(PartsOf(file).header.tableBlockCount, 2u);
  EXPECT_EQ(PartsOf(file).header.tableBlocks[1], 65u);
  EXPECT_EQ(PartsOf(file).bigTable.entries[65], kMeta);
  EXPECT_EQ(PartsOf(file).bigTable.entries[0], kEnd);
  EXPECT_EQ(ExtendChain(file, chain), 66u);
  EXPECT_EQ(List(FollowChain(PartsOf(file).bigTable, 4)), List(chain));
  while (ExtendChain(file, chain) < 127) {
  }
  EXPECT_EQ(PartsOf(file).header.tableBlockCount, 2u);
  EXPECT_EQ(ExtendChain(file, chain), 128u);
  EXPECT_EQ(PartsOf(file).header.tableBlocks[2], 129u);
}

TEST(TableBlocks, The110thGoesToAMetaBlock) {
  NewFile made;
  CompoundFile& file = made.file();
  while (PartsOf(file).header.tableBlockCount < 109) AddBigTableBlock(file);
  EXPECT_EQ(PartsOf(file).header.tableBlocks[108], 4u + 107);
  EXPECT_TRUE(PartsOf(file).metaBlocks.empty());
  EXPECT_FALSE(WriterOf(file).marks().meta);
  WriterOf(file).marks().header = false;
  AddBigTableBlock(file);
  EXPECT_TRUE(WriterOf(file).marks().header);
  EXPECT_TRUE(WriterOf(file).marks().meta);
  EXPECT_EQ(List(PartsOf(file).metaData), (std::vector<uint64_t>{112}));
  EXPECT_EQ(List(PartsOf(file).metaBlocks), (std::vector<uint64_t>{113}));
  EXPECT_EQ(PartsOf(file).header.metaStart, 113u);
  EXPECT_EQ(PartsOf(file).header.metaBlockCount, 1u);
  EXPECT_EQ(PartsOf(file).bigTable.entries[113], kMeta);
  while (PartsOf(file).header.tableBlockCount < 109 + 63) AddBigTableBlock(file);
  EXPECT_EQ(PartsOf(file).metaBlocks.size(), 1u);
  AddBigTableBlock(file);
  EXPECT_EQ(PartsOf(file).metaBlocks.size(), 2u);
  EXPECT_EQ(PartsOf(file).header.metaStart, 113u);
  EXPECT_EQ(PartsOf(file).header.metaBlockCount, 2u);
  const BlockList list = BigTableBlocks(file, false);
  ASSERT_EQ(list.size(), 109u + 64);
  EXPECT_EQ(list[109], 112u);
  EXPECT_EQ(list[109 + 63], PartsOf(file).metaData[63]);
}

TEST(TableBlocks, MetaBlocksHold63NumbersAndALinkTwiceOver) {
  NewFile made;
  CompoundFile& file = made.file();
  while (PartsOf(file).header.tableBlockCount < 109 + 64) AddBigTableBlock(file);
  const std::vector<uint64_t> numbers = List(PartsOf(file).metaData);
  const std::vector<uint64_t> metas = List(PartsOf(file).metaBlocks);
  ASSERT_EQ(metas.size(), 2u);
  made.flush();
  EXPECT_FALSE(WriterOf(file).marks().meta);
  const std::string bytes = made.end();
  std::vector<uint32_t> image(numbers.begin(), numbers.begin() + 63);
  image.push_back(static_cast<uint32_t>(metas[1]));  // at byte 252
  image.push_back(static_cast<uint32_t>(numbers[63]));
  EXPECT_EQ(bytes.substr((metas[0] + 1) * 512, 512), Padded(Words(image), 512, '\xFF'));
  EXPECT_EQ(bytes.substr((metas[1] + 1) * 512, 512), std::string(512, '\xFF'));
}

TEST(TableBlocks, TheLastFullGroupEndsTheChain) {
  NewFile made;
  CompoundFile& file = made.file();
  while (PartsOf(file).header.tableBlockCount < 109 + 63) AddBigTableBlock(file);
  const std::vector<uint64_t> numbers = List(PartsOf(file).metaData);
  const uint64_t meta = PartsOf(file).metaBlocks[0];
  made.flush();
  std::vector<uint32_t> image(numbers.begin(), numbers.end());
  image.push_back(kEnd);
  EXPECT_EQ(made.end().substr((meta + 1) * 512, 512), Padded(Words(image), 512, '\xFF'));
}

}  // namespace
}  // namespace tarn::test
