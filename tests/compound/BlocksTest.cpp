// Big and small blocks by themselves: what reads cost, runs, chains, the window on the container.

#include <gtest/gtest.h>

#include "CompoundFiles.h"

namespace tarn::test {
namespace {

using Numbers = std::vector<uint64_t>;

// Blocks of 128 bytes over a memory file of so many bytes; small ones of 32.
struct BlocksOf {
  explicit BlocksOf(size_t size) : bytes(Pattern(size)) {
    KernelFileWriteLarge(memory.handle(), bytes.data(), bytes.size());
    EXPECT_TRUE(big.measure());
  }
  // What a block holds, and the whole of a list of them.
  std::string block(uint64_t number) const { return bytes.substr((number + 1) * 128, 128); }
  std::string blocks(const Numbers& numbers) const {
    std::string all;
    for (const uint64_t number : numbers) all += block(number);
    return all;
  }

  std::string bytes;
  GrowingFile memory;
  BlockTable bigTable = BlockTable(128);
  BlockTable smallTable = BlockTable(32);
  BigBlocks big = BigBlocks(memory.handle(), bigTable);
  SmallBlocks small = SmallBlocks(big, smallTable);
};

TEST(BigBlocks, MeasureTheFileAndLetReadsCostSoMuch) {
  BlocksOf file(1000);
  EXPECT_EQ(file.big.fileSize(), 1000u);
  EXPECT_EQ(file.big.bytesLeft(), (uint64_t{1} << 28) + 64 * 1000);
  EXPECT_EQ(file.big.failedSeeks(), 0u);
  file.big.reset();
  EXPECT_EQ(file.big.fileSize(), 0u);
  EXPECT_EQ(file.big.bytesLeft(), UINT64_MAX);

  BigBlocks none(KERNEL_BAD_HANDLE, file.bigTable);
  EXPECT_FALSE(none.measure());
  EXPECT_EQ(none.failedSeeks(), 1u);
  EXPECT_EQ(none.fileSize(), 0u);
}

TEST(BigBlocks, WhatIsSpentIsGone) {
  BlocksOf file(1000);
  EXPECT_TRUE(file.big.spend(file.big.bytesLeft() - 10));
  EXPECT_TRUE(file.big.spend(4));
  EXPECT_EQ(file.big.bytesLeft(), 6u);
  EXPECT_FALSE(file.big.spend(7));
  EXPECT_EQ(file.big.bytesLeft(), 0u);
  EXPECT_TRUE(file.big.spend(0));
  std::string room(128, '?');
  EXPECT_EQ(file.big.read(Blocks({1}), Room(room)), 0u);
  EXPECT_EQ(room, std::string(128, '?'));
}

TEST(BigBlocks, ARunIsOfWholeBlocksSideBySide) {
  const BlocksOf file(128 * 6 + 1);  // blocks 0 to 4, and one byte of block 5
  EXPECT_EQ(file.big.run({}), 0u);
  EXPECT_EQ(file.big.run(Blocks({1, 2, 3})), 3u);
  EXPECT_EQ(file.big.run(Blocks({1, 2, 4, 5})), 2u);
  EXPECT_EQ(file.big.run(Blocks({2, 1})), 1u);
  EXPECT_EQ(file.big.run(Blocks({3, 4, 5})), 2u);
  EXPECT_EQ(file.big.run(Blocks({5})), 0u);
}

TEST(BigBlocks, AChainIsReadFromAnyPosition) {
  BlocksOf file(128 * 9);
  const Numbers chain = {3, 4, 0, 7, 6};
  const std::string whole = file.blocks(chain);
  for (uint64_t position = 0; position < 5 * 128 + 2; ++position) {
    for (const uint64_t length : {1u, 127u, 128u, 129u, 300u, 700u}) {
      std::string room(length, '?');
      const std::string expected =
          position < whole.size() ? whole.substr(position, length) : std::string();
      ASSERT_EQ(file.big.readChain(Blocks(chain), position, Room(room)), expected.size());
      ASSERT_EQ(room.substr(0, expected.size()), expected) << position << " " << length;
    }
  }
  std::string room(10, '?');
  EXPECT_EQ(file.big.readChain({}, 0, Room(room)), 0u);
}

TEST(BigBlocks, AFirstBlockThatIsMissingIsPassedOver) {
  BlocksOf file(128 * 4);
  std::string room(128, '?');
  EXPECT_EQ(file.big.readChain(Blocks({50, 1}), 5, Room(room)), 128u);
  EXPECT_EQ(room, file.block(1));
}

TEST(BigBlocks, AFileIsAsLongAsWhatWasWrittenOrCovered) {
  BlocksOf file(100);
  EXPECT_EQ(file.big.write(Blocks({2, 0}), 120, Bytes("0123456789")), 10u);
  EXPECT_EQ(file.big.fileSize(), 4 * 128u);
  file.big.cover(300);
  EXPECT_EQ(file.big.fileSize(), 4 * 128u);
  file.big.cover(600);
  EXPECT_EQ(file.big.fileSize(), 600u);
  const std::string bytes = file.memory.end();
  EXPECT_EQ(bytes.substr(3 * 128 + 120), "01234567");
  EXPECT_EQ(bytes.substr(128, 2), "89");
}

TEST(SmallBlocks, AreSlicesOfTheContainer) {
  BlocksOf file(128 * 9);
  file.small.setContainer(Blocks({5, 2}));
  std::string room(64, '?');
  EXPECT_EQ(file.small.read(Blocks({3, 4}), Room(room)), 64u);
  EXPECT_EQ(room, file.block(5).substr(96) + file.block(2).substr(0, 32));
  EXPECT_EQ(file.small.read(Blocks({8}), Room(room)), 0u);
  file.small.addToContainer(0);
  EXPECT_EQ(file.small.read(Blocks({8}), Room(room)), 32u);
  EXPECT_EQ(room.substr(0, 32), file.block(0).substr(0, 32));
}

TEST(SmallBlocks, AChainIsReadFromAnyPosition) {
  BlocksOf file(128 * 9);
  file.small.setContainer(Blocks({5, 2}));
  const std::string container = file.blocks({5, 2});
  const std::string whole =
      container.substr(7 * 32, 32) + container.substr(0, 32) + container.substr(4 * 32, 32);
  for (uint64_t position = 0; position < 100; ++position) {
    for (const uint64_t length : {1u, 31u, 32u, 33u, 200u}) {
      std::string room(length, '?');
      const std::string expected =
          position < whole.size() ? whole.substr(position, length) : std::string();
      const BlockList chain = Blocks({7, 0, 4});
      ASSERT_EQ(file.small.readChain(chain, position, Room(room)), expected.size());
      ASSERT_EQ(room.substr(0, expected.size()), expected) << position << " " << length;
    }
  }
}

// Whoever writes, and to whatever block.
TEST(SmallBlocks, AWriteToTheFileIsSeen) {
  BlocksOf file(128 * 9);
  file.small.setContainer(Blocks({5, 2}));
  std::string room(2, '?');
  ASSERT_EQ(file.small.read(Blocks({0}), Room(room)), 2u);
  ASSERT_EQ(room, file.block(5).substr(0, 2));
  file.big.write(Blocks({5}), 0, Bytes("ab"));
  EXPECT_EQ(file.small.read(Blocks({0}), Room(room)), 2u);
  EXPECT_EQ(room, "ab");
  file.small.write(Blocks({0}), 1, Bytes("c"));
  EXPECT_EQ(file.small.read(Blocks({0}), Room(room)), 2u);
  EXPECT_EQ(room, "ac");
}

TEST(SmallBlocks, AnotherContainerIsReadAnew) {
  BlocksOf file(128 * 9);
  file.small.setContainer(Blocks({5}));
  std::string room(32, '?');
  file.small.read(Blocks({0}), Room(room));
  file.small.setContainer(Blocks({2}));
  EXPECT_EQ(file.small.read(Blocks({0}), Room(room)), 32u);
  EXPECT_EQ(room, file.block(2).substr(0, 32));
}

// The file counts as long as the small blocks need it, wherever their container lies.
TEST(SmallBlocks, WritingCoversTheirPlaces) {
  BlocksOf file(128);
  file.small.setContainer(Blocks({0, 0, 0, 0}));
  EXPECT_EQ(file.small.write(Blocks({15}), 0, Bytes(Pattern(32))), 32u);
  EXPECT_EQ(file.big.fileSize(), 512u);
}

}  // namespace
}  // namespace tarn::test
