#include "Common/KernelMap.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

#include "KernelUse.h"

namespace tarn {
namespace {

using Numbers = KernelMap<uint32_t, uint32_t>;

// The value of a key, or -1.
int64_t Find(const Numbers& map, uint32_t key) {
  const uint32_t* const value = map.find(key);
  return value == nullptr ? -1 : int64_t{*value};
}

TEST(KernelMap, AnEmptyOneFindsNothing) {
  const uint64_t before = test::Allocations();
  const Numbers map;
  EXPECT_EQ(Find(map, 0), -1);
  EXPECT_EQ(map.size(), 0u);
  EXPECT_EQ(test::Allocations(), before);
}

TEST(KernelMap, FindsEachKey) {
  Numbers map;
  const uint32_t keys[] = {7, 0, UINT32_MAX, 3, 8, 5};
  for (const uint32_t key : keys) ASSERT_TRUE(map.add(key, key + 1));
  EXPECT_EQ(map.size(), 6u);
  for (const uint32_t key : keys) EXPECT_EQ(Find(map, key), int64_t{key + 1});
  for (const uint32_t key : {1u, 2u, 4u, 6u, 9u, UINT32_MAX - 1}) EXPECT_EQ(Find(map, key), -1);
}

TEST(KernelMap, AValueMayBeReplaced) {
  Numbers map;
  for (uint32_t key = 0; key < 7; ++key) ASSERT_TRUE(map.add(key, 0));
  *map.find(5) = 9;
  EXPECT_EQ(Find(map, 5), 9);
  EXPECT_EQ(Find(map, 4), 0);
  ASSERT_TRUE(map.add(7, 0));
  EXPECT_EQ(Find(map, 5), 9);
}

TEST(KernelMap, IsLikeAnyMap) {
  std::mt19937 random(4);
  for (const uint32_t range : {40u, 3000u, UINT32_MAX}) {
    Numbers map;
    std::map<uint32_t, uint32_t> expected;
    for (uint32_t i = 0; i < 3000; ++i) {
      const auto key = static_cast<uint32_t>(random() % range);
      if (expected.emplace(key, i).second) {
        ASSERT_EQ(Find(map, key), -1);
        ASSERT_TRUE(map.add(key, i));
      } else {
        ASSERT_EQ(Find(map, key), int64_t{expected[key]});
      }
    }
    ASSERT_EQ(map.size(), expected.size());
    for (const auto& [key, value] : expected) ASSERT_EQ(Find(map, key), int64_t{value});
  }
}

TEST(KernelMap, ClearedItKnowsNothing) {
  const uint64_t before = test::Usage().liveBlocks;
  Numbers map;
  ASSERT_TRUE(map.add(1, 2));
  map.clear();
  EXPECT_EQ(test::Usage().liveBlocks, before);
  EXPECT_EQ(Find(map, 1), -1);
  ASSERT_TRUE(map.add(1, 3));
  EXPECT_EQ(Find(map, 1), 3);
}

TEST(KernelMap, WithoutMemoryItIsAsItWas) {
  Numbers map;
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_FALSE(map.add(0, 1));
  for (uint32_t key = 0; key < 64; ++key) ASSERT_TRUE(map.add(key, key));
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_FALSE(map.add(64, 64));
  EXPECT_EQ(Find(map, 64), -1);
  EXPECT_EQ(map.size(), 64u);
  for (uint32_t key = 0; key < 64; ++key) EXPECT_EQ(Find(map, key), key);
}

// A key that counts how often it is compared.
struct Counted {
  uint32_t number;
  static inline uint64_t comparisons = 0;
  friend bool operator<(const Counted& a, const Counted& b) {
    ++comparisons;
    return a.number < b.number;
  }
};

// The comparisons that the n keys take, and then the most that one look-up takes.
template <typename KeyOf>
void Measure(uint32_t n, KeyOf keyOf, uint64_t& all, uint64_t& most) {
  KernelMap<Counted, char> map;
  Counted::comparisons = 0;
  for (uint32_t i = 0; i < n; ++i) ASSERT_TRUE(map.add({keyOf(i)}, 'x'));
  all = Counted::comparisons;
  most = 0;
  for (uint32_t i = 0; i < n; ++i) {
    Counted::comparisons = 0;
    ASSERT_NE(map.find({keyOf(i)}), nullptr);
    most = std::max(most, Counted::comparisons);
  }
}

TEST(KernelMap, NoOrderOfKeysMakesItSlow) {
  constexpr uint32_t kKeys = 32767;  // of 15 runs
  constexpr uint64_t kLog = 15;
  uint64_t all = 0;
  uint64_t most = 0;
  Measure(
      kKeys, [](uint32_t i) { return i; }, all, most);
  EXPECT_LE(all, kKeys * kLog / 2);
  EXPECT_LE(most, kLog * (kLog + 1));
  Measure(
      kKeys, [](uint32_t i) { return kKeys - i; }, all, most);
  EXPECT_LE(all, kKeys * kLog * kLog / 2);
  EXPECT_LE(most, kLog * (kLog + 1));
  Measure(
      kKeys, [](uint32_t i) { return i * 2654435761u; }, all, most);
  EXPECT_LE(all, kKeys * kLog * kLog / 2);
  EXPECT_LE(most, kLog * (kLog + 1));
}

}  // namespace
}  // namespace tarn
