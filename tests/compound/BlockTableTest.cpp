#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "CompoundFiles.h"

namespace tarn::test {
namespace {

using Numbers = std::vector<uint64_t>;

BlockTable Table(const Numbers& entries) {
  BlockTable table;
  table.entries = Blocks(entries);
  return table;
}

// The chain as it is defined: look back over all of it before each step.
Numbers SlowChain(const Numbers& entries, uint64_t start) {
  Numbers chain;
  for (uint64_t p = start; p < entries.size();) {
    chain.push_back(p);
    const uint64_t next = entries[p];
    if (std::find(chain.begin(), chain.end(), next) != chain.end()) break;
    p = next;
  }
  return chain;
}

TEST(BlockTable, ANewOneHas128FreeEntries) {
  const BlockTable table;
  EXPECT_EQ(table.blockSize, 4096u);
  EXPECT_EQ(List(table.entries), Numbers(128, 0xFFFFFFFF));
  EXPECT_TRUE(DirtyMarks().bigTable.empty());
  EXPECT_TRUE(DirtyMarks().smallTable.empty());
  EXPECT_TRUE(table.maybeFragmented);
}

TEST(BlockTable, GrowsByFreeEntries) {
  BlockTable table = Table({1});
  table.maybeFragmented = false;
  SetBlockEntry(table, 3, 7);
  EXPECT_EQ(List(table.entries), (Numbers{1, 0xFFFFFFFF, 0xFFFFFFFF, 7}));
  EXPECT_FALSE(table.maybeFragmented);  // only a free value that is stored tells
  SetBlockEntry(table, 0, 0xFFFFFFFF);
  EXPECT_TRUE(table.maybeFragmented);
}

TEST(Chain, ABlockThatPointsToItselfIsOne) {
  EXPECT_EQ(List(FollowChain(Table({0}), 0)), (Numbers{0}));
}

TEST(Chain, EndsBeforeItComesBack) {
  EXPECT_EQ(List(FollowChain(Table({1, 0}), 0)), (Numbers{0, 1}));
  EXPECT_EQ(List(FollowChain(Table({1, 2, 3, 1}), 0)), (Numbers{0, 1, 2, 3}));
}

TEST(Chain, AStartBeyondTheTableIsEmpty) {
  EXPECT_TRUE(FollowChain(Table({0, 1}), 2).empty());
  EXPECT_TRUE(FollowChain(Table({0, 1}), 3).empty());
  EXPECT_TRUE(FollowChain(Table({0, 1}), 0xFFFFFFFE).empty());
  EXPECT_TRUE(FollowChain(Table({}), 0).empty());
}

TEST(Chain, EndsAtEverySpecialValueAndBeyondTheTable) {
  for (const uint64_t end : {0xFFFFFFFCu, 0xFFFFFFFDu, 0xFFFFFFFEu, 0xFFFFFFFFu, 3u}) {
    EXPECT_EQ(List(FollowChain(Table({2, end, 1}), 0)), (Numbers{0, 2, 1})) << end;
  }
}

TEST(Chain, AllWaysThroughSmallTables) {
  // Every table of five entries, each of which leads to a block or ends.
  Numbers entries(5);
  for (uint32_t code = 0; code < 6 * 6 * 6 * 6 * 6; ++code) {
    for (uint32_t i = 0, rest = code; i < 5; ++i, rest /= 6) {
      entries[i] = rest % 6 == 5 ? 0xFFFFFFFE : rest % 6;
    }
    const BlockTable table = Table(entries);
    for (uint64_t start = 0; start < 5; ++start) {
      const Numbers slow = SlowChain(entries, start);
      ASSERT_EQ(List(FollowChain(table, start)), slow) << code << " " << start;
      for (uint64_t most = 0; most < 7; ++most) {
        const Numbers cut(slow.begin(), slow.begin() + static_cast<std::ptrdiff_t>(
                                                           std::min<uint64_t>(most, slow.size())));
        ASSERT_EQ(List(FollowChain(table, start, most)), cut)
            << code << " " << start << " " << most;
      }
    }
  }
}

TEST(Chain, TailsAndCyclesOfAllLengths) {
  for (uint64_t tail = 0; tail < 40; ++tail) {
    for (uint64_t cycle = 1; cycle < 40; ++cycle) {
      Numbers entries;
      for (uint64_t i = 1; i < tail + cycle; ++i) entries.push_back(i);
      entries.push_back(tail);
      const BlockTable table = Table(entries);
      for (const uint64_t most :
           {uint64_t{UINT64_MAX}, tail + cycle + 1, 2 * (tail + cycle), 3 * (tail + cycle)}) {
        ASSERT_EQ(FollowChain(table, 0, most).size(), tail + cycle) << tail << " " << cycle;
      }
      ASSERT_EQ(FollowChain(table, 0, tail + cycle - 1).size(), tail + cycle - 1);
    }
  }
}

TEST(Chain, RandomTables) {
  std::mt19937 random(5);
  for (int round = 0; round < 2000; ++round) {
    Numbers entries(1 + random() % 200);
    for (uint64_t& entry : entries) entry = random() % (entries.size() + 1);
    const uint64_t start = random() % entries.size();
    ASSERT_EQ(List(FollowChain(Table(entries), start)), SlowChain(entries, start)) << round;
  }
}

TEST(FirstFree, AnEmptyTableOf128EntriesGives0) {
  BlockTable table;
  EXPECT_EQ(FirstFreeBlock(table), 0u);
  EXPECT_TRUE(table.maybeFragmented);
  for (uint64_t i = 0; i < 128; ++i) {
    EXPECT_EQ(FirstFreeBlock(table), i);
    SetBlockEntry(table, i, 0xFFFFFFFE);
  }
  EXPECT_EQ(FirstFreeBlock(table), 128u);
  EXPECT_EQ(table.entries.size(), 128u);
  EXPECT_FALSE(table.maybeFragmented);
}

TEST(FirstFree, DoesNotSearchAgainUntilAnEntryIsFreed) {
  BlockTable table = Table({1, 1});
  EXPECT_EQ(FirstFreeBlock(table), 2u);
  SetBlockEntry(table, 4, 1);  // entries 2 and 3 are free now
  EXPECT_EQ(FirstFreeBlock(table), 5u);
  SetBlockEntry(table, 1, 0xFFFFFFFF);
  EXPECT_EQ(FirstFreeBlock(table), 1u);
  SetBlockEntry(table, 1, 1);
  EXPECT_EQ(FirstFreeBlock(table), 2u);
}

TEST(FirstFree, ATableOfNothingGives0) {
  BlockTable table = Table({});
  EXPECT_EQ(FirstFreeBlock(table), 0u);
  EXPECT_FALSE(table.maybeFragmented);
}

TEST(TableMarks, CountInBigBlocksForBothTables) {
  BlockMarks marks;
  MarkTableDirty(marks, 128, 512);
  MarkTableDirty(marks, 127, 512);
  MarkTableDirty(marks, 0, 512);
  MarkTableDirty(marks, 255, 512);
  MarkTableDirty(marks, 1024, 4096);
  EXPECT_EQ(List(marks.numbers()), (Numbers{1, 0}));
  marks.clear();
  EXPECT_TRUE(marks.empty());
  EXPECT_FALSE(marks.contains(1));
  MarkTableDirty(marks, 128, 512);
  EXPECT_TRUE(marks.contains(1));
  EXPECT_FALSE(marks.contains(0));
}

TEST(LoadTable, TakesAsManyEntriesAsThereAreBytes) {
  BlockTable table;
  table.maybeFragmented = false;
  LoadBlockTable(table, Bytes(std::string_view("\x01\x02\x03\x04\xFE\xFF\xFF\xFF\x09", 9)));
  EXPECT_EQ(List(table.entries), (Numbers{0x04030201, 0xFFFFFFFE}));
  EXPECT_FALSE(table.maybeFragmented);
  LoadBlockTable(table, Bytes(std::string(12, '\xFF')));
  EXPECT_EQ(List(table.entries), Numbers(3, 0xFFFFFFFF));
  EXPECT_TRUE(table.maybeFragmented);
  LoadBlockTable(table, Bytes("abcd"));
  EXPECT_EQ(List(table.entries), (Numbers{0x64636261}));
  EXPECT_TRUE(table.maybeFragmented);  // stays as it was
  LoadBlockTable(table, {});
  EXPECT_TRUE(table.entries.empty());
}

TEST(FlushTable, WritesTheMarkedBlocksOnly) {
  NewFile made;
  CompoundFile& file = made.file();
  BlockTable table = Table({});
  for (uint64_t i = 0; i < 130; ++i) SetBlockEntry(table, i, 0x01020300 + i);
  const std::string untouched(512, '.');
  for (const uint64_t block : {5u, 6u, 7u}) SaveBigBlock(file, block, 0, Bytes(untouched));

  BlockMarks marks;
  MarkTableDirty(marks, 129, 512);
  MarkTableDirty(marks, 1000, 512);  // a block that the table does not have
  FlushBlockTable(table, marks, Blocks({6, 5}), made.parts().big);
  EXPECT_TRUE(marks.empty());
  const std::string bytes = made.end();
  EXPECT_EQ(bytes.substr(7 * 512, 512), untouched);
  EXPECT_EQ(bytes.substr(8 * 512, 512), untouched);
  EXPECT_EQ(bytes.substr(6 * 512, 512),
            std::string("\x80\x03\x02\x01\x81\x03\x02\x01", 8) + std::string(504, '\xFF'));
}

TEST(FlushTable, EntriesFollowEachOtherWithoutAGap) {
  NewFile made;
  BlockTable table = Table(Numbers(256, 0x61616161));
  SetBlockEntry(table, 127, 0x62626262);
  SetBlockEntry(table, 128, 0x63636363);
  BlockMarks marks;
  MarkTableDirty(marks, 0, 512);
  MarkTableDirty(marks, 128, 512);
  FlushBlockTable(table, marks, Blocks({4, 9}), made.parts().big);
  const std::string bytes = made.end();
  EXPECT_EQ(bytes.substr(5 * 512, 512), std::string(508, 'a') + "bbbb");
  EXPECT_EQ(bytes.substr(10 * 512, 512), "cccc" + std::string(508, 'a'));
}

TEST(FlushTable, EntriesBeyondItsBlocksAreLeftOut) {
  NewFile made;
  BlockTable table = Table(Numbers(300, 0x61616161));
  BlockMarks marks;
  MarkTableDirty(marks, 0, 512);
  MarkTableDirty(marks, 299, 512);
  FlushBlockTable(table, marks, Blocks({4}), made.parts().big);
  EXPECT_EQ(made.end().substr(5 * 512), std::string(512, 'a'));
}

}  // namespace
}  // namespace tarn::test
