#include "Common/KernelArray.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>

#include "KernelUse.h"

namespace tarn {
namespace {

struct Pair {
  uint32_t first;
  char second;
};

// An array of the bytes.
KernelArray<char> Made(std::string_view bytes) {
  KernelArray<char> array;
  for (const char byte : bytes) EXPECT_TRUE(array.append(byte));
  return array;
}

std::string Shown(const KernelArray<char>& array) {
  return std::string(array.begin(), array.end());
}

TEST(KernelArray, AFreshOneHasNoBlock) {
  const uint64_t before = test::Allocations();
  const KernelArray<int> array;
  EXPECT_EQ(array.size(), 0u);
  EXPECT_TRUE(array.empty());
  EXPECT_EQ(array.capacity(), 0u);
  EXPECT_EQ(array.data(), nullptr);
  EXPECT_EQ(array.begin(), array.end());
  EXPECT_EQ(test::Allocations(), before);
}

TEST(KernelArray, KeepsWhatIsAppended) {
  KernelArray<Pair> array;
  for (uint32_t i = 0; i < 1000; ++i) ASSERT_TRUE(array.append({i, static_cast<char>(i)}));
  ASSERT_EQ(array.size(), 1000u);
  for (uint32_t i = 0; i < 1000; ++i) {
    ASSERT_EQ(array[i].first, i);
    ASSERT_EQ(array[i].second, static_cast<char>(i));
  }
  EXPECT_EQ(array.back().first, 999u);
  EXPECT_EQ(array.end() - array.begin(), 1000);
}

TEST(KernelArray, GrowsByHalf) {
  const uint64_t before = test::Allocations();
  KernelArray<uint64_t> array;
  size_t capacities = 0;
  for (size_t i = 0, last = 0; i < 1000000; ++i) {
    ASSERT_TRUE(array.append(i));
    if (array.capacity() == last) continue;
    EXPECT_EQ(array.capacity(), last == 0 ? 64 : last + last / 2);
    last = array.capacity();
    ++capacities;
  }
  EXPECT_EQ(test::Allocations() - before, capacities);
  EXPECT_EQ(capacities, 25u);
}

TEST(KernelArray, AnElementOfItsOwnMayBeAppended) {
  KernelArray<char> array = Made(std::string(63, 'a') + 'b');
  ASSERT_EQ(array.capacity(), array.size());
  ASSERT_TRUE(array.append(array.back()));
  EXPECT_EQ(Shown(array), std::string(63, 'a') + "bb");
}

TEST(KernelArray, ReservesExactlyWhatIsAskedFor) {
  KernelArray<Pair> array;
  ASSERT_TRUE(array.reserve(3));
  EXPECT_EQ(array.capacity(), 3u);
  EXPECT_TRUE(array.empty());
  ASSERT_TRUE(array.append({1, 'a'}));
  const uint64_t before = test::Allocations();
  ASSERT_TRUE(array.reserve(2));
  ASSERT_TRUE(array.reserve(3));
  EXPECT_EQ(test::Allocations(), before);
  ASSERT_TRUE(array.reserve(4));
  EXPECT_EQ(array.capacity(), 4u);
  EXPECT_EQ(array[0].second, 'a');
}

TEST(KernelArray, PutsWithinItsRoom) {
  KernelArray<char> array = Made("a");
  const char* const block = array.data();
  array.put('b');
  array.put(std::span<const char>());
  array.put(std::string_view("cde"));
  EXPECT_EQ(Shown(array), "abcde");
  EXPECT_EQ(array.data(), block);
  KernelArray<char> none;
  none.put(std::span<const char>());
  EXPECT_TRUE(none.empty());
}

TEST(KernelArray, TruncatesAndKeepsItsRoom) {
  KernelArray<char> array = Made("abc");
  array.truncate(1);
  EXPECT_EQ(Shown(array), "a");
  EXPECT_EQ(array.capacity(), 64u);
}

TEST(KernelArray, ClearedItHasNoBlock) {
  const uint64_t before = test::Usage().liveBlocks;
  KernelArray<char> array = Made("abc");
  EXPECT_EQ(test::Usage().liveBlocks, before + 1);
  array.clear();
  EXPECT_EQ(test::Usage().liveBlocks, before);
  EXPECT_EQ(array.capacity(), 0u);
  ASSERT_TRUE(array.append('d'));
  EXPECT_EQ(Shown(array), "d");
}

TEST(KernelArray, ShrinksToItsElements) {
  KernelArray<uint32_t> array;
  const uint64_t before = test::Usage().liveBytes;
  for (uint32_t i = 0; i < 10; ++i) ASSERT_TRUE(array.append(i));
  array.shrink();
  EXPECT_EQ(array.capacity(), 10u);
  EXPECT_EQ(test::Usage().liveBytes - before, 10 * sizeof(uint32_t));
  const uint64_t calls = test::Allocations();
  array.shrink();
  EXPECT_EQ(test::Allocations(), calls);
  EXPECT_EQ(array.back(), 9u);
}

TEST(KernelArray, AShrinkThatFailsChangesNothing) {
  KernelArray<char> array = Made("abc");
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  array.shrink();
  EXPECT_EQ(array.capacity(), 64u);
  EXPECT_EQ(Shown(array), "abc");
}

TEST(KernelArray, GivesItsBlockAway) {
  KernelArray<char> array = Made("abc");
  const KernelBlock<char> block = array.take();
  EXPECT_EQ(std::string_view(block.get(), 3), "abc");
  EXPECT_TRUE(array.empty());
  EXPECT_EQ(array.capacity(), 0u);
  EXPECT_EQ(array.data(), nullptr);
}

TEST(KernelArray, Moves) {
  const uint64_t before = test::Usage().liveBlocks;
  KernelArray<char> first = Made("abc");
  KernelArray<char> second(std::move(first));
  EXPECT_EQ(Shown(second), "abc");
  EXPECT_TRUE(first.empty());
  EXPECT_EQ(first.capacity(), 0u);
  KernelArray<char> third = Made("xy");
  third = std::move(second);
  EXPECT_EQ(Shown(third), "abc");
  EXPECT_EQ(test::Usage().liveBlocks, before + 1);
  KernelArray<char>& same = third;
  third = std::move(same);
  EXPECT_EQ(Shown(third), "abc");
  ASSERT_TRUE(second.append('z'));
  EXPECT_EQ(Shown(second), "z");
}

TEST(KernelArray, WithoutMemoryItIsAsItWas) {
  KernelArray<char> array;
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_FALSE(array.append('a'));
  EXPECT_EQ(array.data(), nullptr);
  array = Made(std::string(64, 'a'));
  const char* const block = array.data();
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_FALSE(array.append('b'));
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_FALSE(array.reserve(65));
  EXPECT_EQ(array.data(), block);
  EXPECT_EQ(array.capacity(), 64u);
  EXPECT_EQ(Shown(array), std::string(64, 'a'));
}

TEST(KernelArray, MoreThanThereCanBeIsNoMemory) {
  KernelArray<uint64_t> array;
  const uint64_t before = test::Allocations();
  EXPECT_FALSE(array.reserve(SIZE_MAX / sizeof(uint64_t) + 1));
  EXPECT_EQ(test::Allocations(), before);
  EXPECT_EQ(array.capacity(), 0u);
}

}  // namespace
}  // namespace tarn
