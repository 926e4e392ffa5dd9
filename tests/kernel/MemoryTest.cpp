#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

#include "Scratch.h"
#include "Tarnbase/PlainKernel.h"
#include "support/Environment.h"

namespace tarn::test {
namespace {

constexpr const char16_t* kHere = u"MemoryTest.cpp";

TEST(Memory, AllocGivesCountTimesSizeBytes) {
  const PlainKernelUsageRecord before = Usage();
  void* const block = KernelAlloc(25, 4, 1, kHere);
  ASSERT_NE(block, nullptr);
  std::memset(block, 0xAA, 100);
  EXPECT_EQ(Usage().liveBlocks, before.liveBlocks + 1);
  EXPECT_EQ(Usage().liveBytes, before.liveBytes + 100);
  KernelFree(block, 2, kHere);
  EXPECT_EQ(Usage().liveBlocks, before.liveBlocks);
  EXPECT_EQ(Usage().liveBytes, before.liveBytes);
}

TEST(Memory, AllocZeroClearsReusedMemory) {
  for (int round = 0; round < 8; ++round) {
    auto* const block = static_cast<unsigned char*>(KernelAllocZero(333, 3, 1, kHere));
    ASSERT_NE(block, nullptr);
    EXPECT_TRUE(std::all_of(block, block + 999, [](unsigned char byte) { return byte == 0; }));
    std::memset(block, 0xFF, 999);
    KernelFree(block, 2, kHere);
  }
}

TEST(Memory, BlocksOfNoBytesAreDifferentBlocks) {
  void* const blocks[] = {KernelAlloc(0, 1, 1, kHere), KernelAlloc(1, 0, 1, kHere),
                          KernelAllocZero(0, 0, 1, kHere), KernelRealloc(nullptr, 0, 1, kHere)};
  for (void* const block : blocks) {
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(std::count(std::begin(blocks), std::end(blocks), block), 1);
  }
  for (void* const block : blocks) KernelFree(block, 2, kHere);
}

TEST(Memory, CountsThatOverflowGiveNull) {
  EXPECT_EQ(KernelAlloc(UINT64_MAX, 2, 1, kHere), nullptr);
  EXPECT_EQ(KernelAlloc(uint64_t{1} << 32, uint64_t{1} << 32, 1, kHere), nullptr);  // 2^64
  EXPECT_EQ(KernelAllocZero((uint64_t{1} << 63) + 1, 2, 1, kHere), nullptr);        // 2^64 + 2
}

TEST(Memory, RequestsBeyondAllMemoryGiveNull) {
  EXPECT_EQ(KernelAlloc(UINT64_MAX, 1, 1, kHere), nullptr);
  EXPECT_EQ(KernelAllocZero(uint64_t{1} << 62, 1, 1, kHere), nullptr);
  EXPECT_EQ(KernelRealloc(nullptr, UINT64_MAX, 1, kHere), nullptr);
}

TEST(Memory, ReallocKeepsContentsUpToTheSmallerSize) {
  char* block = static_cast<char*>(KernelRealloc(nullptr, 4, 1, kHere));
  ASSERT_NE(block, nullptr);
  std::memcpy(block, "abcd", 4);
  block = static_cast<char*>(KernelRealloc(block, 5000000, 2, kHere));
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(std::memcmp(block, "abcd", 4), 0);
  std::memset(block + 4, 'x', 4999996);
  block = static_cast<char*>(KernelRealloc(block, 6, 3, kHere));
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(std::memcmp(block, "abcdxx", 6), 0);
  EXPECT_EQ(Usage().liveBytes, 6U);
  KernelFree(block, 4, kHere);
}

// The heap gives addresses out again, and a block may move to where another one was.
TEST(Memory, AddressesThatComeBackAreNewBlocks) {
  const PlainKernelUsageRecord before = Usage();
  for (int round = 0; round < 50; ++round) {
    std::vector<void*> blocks;
    for (uint64_t i = 0; i < 1000; ++i) blocks.push_back(KernelAlloc(i % 90, 16, 1, kHere));
    for (size_t i = 0; i < blocks.size(); i += 2) KernelFree(blocks[i], 2, kHere);
    for (size_t i = 1; i < blocks.size(); i += 2) {
      blocks[i] = KernelRealloc(blocks[i], i * 7 % 3000, 3, kHere);
      ASSERT_NE(blocks[i], nullptr);
    }
    EXPECT_EQ(Usage().liveBlocks, before.liveBlocks + 500);
    for (size_t i = 1; i < blocks.size(); i += 2) KernelFree(blocks[i], 4, kHere);
  }
  EXPECT_EQ(Usage().liveBlocks, before.liveBlocks);
  EXPECT_EQ(Usage().liveBytes, before.liveBytes);
}

TEST(Memory, ReallocToNoBytesKeepsABlock) {
  void* block = KernelAlloc(100, 1, 1, kHere);
  block = KernelRealloc(block, 0, 2, kHere);
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(Usage().liveBytes, 0U);
  KernelFree(block, 3, kHere);
}

TEST(Memory, AFailedReallocLeavesTheOldBlockValid) {
  char* const block = static_cast<char*>(KernelAlloc(3, 1, 1, kHere));
  std::memcpy(block, "xyz", 3);
  EXPECT_EQ(KernelRealloc(block, UINT64_MAX, 2, kHere), nullptr);
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_EQ(KernelRealloc(block, 4, 3, kHere), nullptr);
  EXPECT_EQ(std::memcmp(block, "xyz", 3), 0);
  EXPECT_EQ(Usage().liveBytes, 3U);
  KernelFree(block, 4, kHere);
}

TEST(Memory, PeakIsTheMostThatWasEverLive) {
  const uint64_t size = Usage().peakBytes + 1000;
  void* const first = KernelAlloc(size, 1, 1, kHere);
  EXPECT_EQ(Usage().peakBytes, size);
  void* const second = KernelAlloc(10, 1, 1, kHere);
  EXPECT_EQ(Usage().peakBytes, size + 10);
  KernelFree(first, 2, kHere);
  void* const third = KernelAlloc(20, 1, 1, kHere);
  EXPECT_EQ(Usage().peakBytes, size + 10);
  KernelFree(second, 2, kHere);
  KernelFree(third, 2, kHere);
}

TEST(Memory, CountsTheCallsOfTheFaultGroup) {
  const uint64_t before = Usage().allocationCalls;
  void* block = KernelAlloc(1, 1, 1, kHere);
  void* const zeros = KernelAllocZero(1, 1, 1, kHere);
  block = KernelRealloc(block, 2, 1, kHere);
  void* const fresh = KernelRealloc(nullptr, 2, 1, kHere);
  EXPECT_EQ(KernelAlloc(UINT64_MAX, UINT64_MAX, 1, kHere), nullptr);
  EXPECT_EQ(Usage().allocationCalls, before + 5);
  for (void* const owned : {block, zeros, fresh}) KernelFree(owned, 2, kHere);
  EXPECT_EQ(Usage().allocationCalls, before + 5);
}

TEST(Memory, ManyBlocksGrowShrinkAndGoInAnyOrder) {
  std::mt19937_64 random(4711);
  std::vector<unsigned char*> blocks(5000);
  for (size_t i = 0; i < blocks.size(); ++i) {
    blocks[i] = static_cast<unsigned char*>(KernelAlloc(8, 1, 1, kHere));
    ASSERT_NE(blocks[i], nullptr);
    std::memcpy(blocks[i], &i, 8);
  }
  for (size_t i = 0; i < blocks.size(); ++i) {
    blocks[i] =
        static_cast<unsigned char*>(KernelRealloc(blocks[i], 8 + random() % 2000, 2, kHere));
    ASSERT_NE(blocks[i], nullptr);
  }
  std::vector<size_t> order(blocks.size());
  for (size_t i = 0; i < order.size(); ++i) order[i] = i;
  std::shuffle(order.begin(), order.end(), random);
  for (const size_t i : order) {
    EXPECT_EQ(std::memcmp(blocks[i], &i, 8), 0);
    KernelFree(blocks[i], 3, kHere);
  }
  EXPECT_EQ(Usage().liveBlocks, 0U);
  EXPECT_EQ(Usage().liveBytes, 0U);
}

TEST(MemoryDeathTest, FreeingTwiceAborts) {
  EXPECT_DEATH(
      {
        void* const block = KernelAlloc(1, 1, 1, kHere);
        KernelFree(block, 2, kHere);
        KernelFree(block, 77, kHere);
      },
      "^Tarnbase: KernelFree: not a live block: 0x\\w+ \\(line 77 of MemoryTest.cpp\\)");
}

TEST(MemoryDeathTest, FreeingWhatIsNoBlockAborts) {
  int local = 0;
  EXPECT_DEATH(KernelFree(&local, 5, nullptr), "KernelFree: not a live block.*line 5 of \\?");
  EXPECT_DEATH(KernelFree(nullptr, 6, kHere), "KernelFree: not a live block: 0x0 ");
  char* const block = static_cast<char*>(KernelAlloc(64, 1, 1, kHere));
  EXPECT_DEATH(KernelFree(block + 16, 7, kHere), "KernelFree: not a live block");
  KernelFree(block, 2, kHere);
}

TEST(MemoryDeathTest, ResizingWhatIsNoBlockAborts) {
  char local[32] = {};
  EXPECT_DEATH(KernelRealloc(local, 5, 8, kHere), "KernelRealloc: not a live block.*line 8 of");
}

TEST(MemoryDeathTest, LeaksAreListedAtTheEndForThoseWhoAsk) {
  const auto leak = [](bool ask) {
    if (ask) SetVariable("TARNBASE_REPORT_LEAKS", "1");
    KernelAlloc(5, 1, 123, u"Leaking.cpp");
    static const int object = 0;
    KernelTrackObject(KERNEL_TRACK_OBJECT, &object, 124, u"Tracking.cpp");
    std::exit(0);
  };
  EXPECT_EXIT(leak(true), ::testing::ExitedWithCode(0),
              "still alive: block 0x\\w+ \\(line 123 of Leaking.cpp\\)\n"
              "Tarnbase: still alive: object 0x\\w+ \\(line 124 of Tracking.cpp\\)");
  EXPECT_EXIT(leak(false), ::testing::ExitedWithCode(0), "^$");
}

}  // namespace
}  // namespace tarn::test
