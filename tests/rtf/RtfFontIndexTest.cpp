#include "rtf/RtfFontIndex.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <random>
#include <string>
#include <utility>

#include "Tarnbase/PlainKernel.h"

namespace tarn {
namespace {

// A table with fonts of these numbers and code pages behind what it holds.
void Append(RtfFontTable& table, std::initializer_list<std::pair<uint32_t, uint32_t>> fonts) {
  std::string text;
  for (const auto& [number, codePage] : fonts) {
    text += "{\\f" + std::to_string(number) + "\\fcpg" + std::to_string(codePage) + ";}";
  }
  const char* cursor = text.data();
  ASSERT_EQ(ParseRtfFontTable(table, cursor, text.data() + text.size()), 1);
}

// The code page of a font, or 9.
uint32_t Find(const RtfFontIndex& index, uint32_t number) {
  const uint32_t* const codePage = index.find(number);
  return codePage == nullptr ? 9 : *codePage;
}

TEST(RtfFontIndex, FindsEachFont) {
  RtfFontTable table;
  RtfFontIndex index;
  EXPECT_EQ(Find(index, 0), 9U);
  Append(table, {{0, 1252}, {1, 932}, {2, 0}, {4294967294, 1251}});
  ASSERT_TRUE(index.update(table));
  EXPECT_EQ(Find(index, 0), 1252U);
  EXPECT_EQ(Find(index, 1), 932U);
  EXPECT_EQ(Find(index, 2), 0U);
  EXPECT_EQ(Find(index, 4294967294), 1251U);
  EXPECT_EQ(Find(index, 3), 9U);
  EXPECT_EQ(Find(index, 2147483648), 9U);
}

TEST(RtfFontIndex, TheFirstFontOfANumberStays) {
  RtfFontTable table;
  RtfFontIndex index;
  Append(table, {{5, 1252}, {5, 932}, {6, 1251}});
  ASSERT_TRUE(index.update(table));
  Append(table, {{5, 1250}, {6, 1250}, {7, 1250}});
  ASSERT_TRUE(index.update(table));
  EXPECT_EQ(Find(index, 5), 1252U);
  EXPECT_EQ(Find(index, 6), 1251U);
  EXPECT_EQ(Find(index, 7), 1250U);
}

TEST(RtfFontIndex, AllOnesIsNoNumber) {
  RtfFontTable table;
  RtfFontIndex index;
  Append(table, {{UINT32_MAX, 1252}});
  ASSERT_TRUE(index.update(table));
  EXPECT_EQ(Find(index, UINT32_MAX), 9U);
}

TEST(RtfFontIndex, IsLikeAWalkThroughTheTable) {
  std::mt19937 random(2);
  RtfFontTable table;
  RtfFontIndex index;
  for (uint32_t i = 0; i < 2000; ++i) {
    const auto bits = static_cast<uint32_t>(random());
    Append(table, {{random() % 2 == 0 ? bits % 64 : bits & 0xFFF00000, i}});
    ASSERT_TRUE(index.update(table));
    const uint32_t wanted = random() % 2 == 0 ? static_cast<uint32_t>(random() % 64)
                                              : table.entries[random() % (i + 1)].number;
    uint32_t expected = 9;
    for (int32_t j = table.count; j-- > 0;) {
      if (table.entries[j].number == wanted) expected = table.entries[j].codePage;
    }
    ASSERT_EQ(Find(index, wanted), expected) << wanted;
  }
}

// As many fonts as a table can have, in two steps; no room is made for more.
TEST(RtfFontIndex, TakesAFullTable) {
  RtfFontTable table;
  table.entries = AllocateZeroBlock<RtfFontEntry>(kMaxRtfFonts, TARN_HERE).take();
  for (int32_t i = 0; i < kMaxRtfFonts; ++i) {
    table.entries[i].number = static_cast<uint32_t>(i);
    table.entries[i].codePage = static_cast<uint32_t>(100000 + i);
  }
  PlainKernelUsageRecord before = {};
  PlainKernelUsage(&before);
  RtfFontIndex index;
  table.count = 20000;
  ASSERT_TRUE(index.update(table));
  EXPECT_EQ(Find(index, 19999), 119999U);
  EXPECT_EQ(Find(index, 20000), 9U);
  table.count = kMaxRtfFonts;
  ASSERT_TRUE(index.update(table));
  for (uint32_t i = 0; i < 32768; ++i) ASSERT_EQ(Find(index, i), 100000 + i);
  EXPECT_EQ(Find(index, 32768), 9U);
  PlainKernelUsageRecord after = {};
  PlainKernelUsage(&after);
  EXPECT_EQ(after.liveBytes - before.liveBytes, 32768U * 16);
}

TEST(RtfFontIndex, WithoutMemory) {
  RtfFontTable table;
  RtfFontIndex index;
  Append(table, {{5, 1252}});
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_FALSE(index.update(table));
  EXPECT_EQ(Find(index, 5), 9U);
  EXPECT_TRUE(index.update(table));
  EXPECT_EQ(Find(index, 5), 1252U);
}

}  // namespace
}  // namespace tarn
