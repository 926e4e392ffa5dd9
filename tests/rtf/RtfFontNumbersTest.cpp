// Fonts by their numbers.
#include <gtest/gtest.h>

#include <initializer_list>
#include <random>
#include <string>
#include <utility>

#include "Tarnbase/PlainKernel.h"
#include "rtf/FontTables.h"

namespace tarn {
namespace {

// Reads another table, with fonts of these numbers and code pages.
Status Read(RtfFonts& fonts, std::initializer_list<std::pair<uint32_t, uint32_t>> added) {
  std::string text;
  for (const auto& [number, codePage] : added) {
    text += "{\\f" + std::to_string(number) + "\\fcpg" + std::to_string(codePage) + ";}";
  }
  std::string_view rest = text;
  return fonts.readTable(rest);
}

// The code page of a font, or 9.
uint32_t Find(const RtfFonts& fonts, uint32_t number) {
  const uint32_t* const codePage = fonts.codePageOf(number);
  return codePage == nullptr ? 9 : *codePage;
}

TEST(RtfFontNumbers, FindsEachFont) {
  RtfFonts fonts;
  EXPECT_EQ(Find(fonts, 0), 9U);
  ASSERT_EQ(Read(fonts, {{0, 1252}, {1, 932}, {2, 0}, {4294967294, 1251}}), StatusOk);
  EXPECT_EQ(Find(fonts, 0), 1252U);
  EXPECT_EQ(Find(fonts, 1), 932U);
  EXPECT_EQ(Find(fonts, 2), 0U);
  EXPECT_EQ(Find(fonts, 4294967294), 1251U);
  EXPECT_EQ(Find(fonts, 3), 9U);
  EXPECT_EQ(Find(fonts, 2147483648), 9U);
}

TEST(RtfFontNumbers, TheFirstFontOfANumberStays) {
  RtfFonts fonts;
  ASSERT_EQ(Read(fonts, {{5, 1252}, {5, 932}, {6, 1251}}), StatusOk);
  ASSERT_EQ(Read(fonts, {{5, 1250}, {6, 1250}, {7, 1250}}), StatusOk);
  EXPECT_EQ(Find(fonts, 5), 1252U);
  EXPECT_EQ(Find(fonts, 6), 1251U);
  EXPECT_EQ(Find(fonts, 7), 1250U);
}

TEST(RtfFontNumbers, AllOnesIsNoNumber) {
  RtfFonts fonts;
  ASSERT_EQ(Read(fonts, {{UINT32_MAX, 1252}}), StatusOk);
  EXPECT_EQ(Find(fonts, UINT32_MAX), 9U);
}

TEST(RtfFontNumbers, IsLikeAWalkThroughTheTable) {
  std::mt19937 random(2);
  RtfFonts fonts;
  for (uint32_t i = 0; i < 2000; ++i) {
    const auto bits = static_cast<uint32_t>(random());
    ASSERT_EQ(Read(fonts, {{random() % 2 == 0 ? bits % 64 : bits & 0xFFF00000, i}}), StatusOk);
    const uint32_t wanted = random() % 2 == 0 ? static_cast<uint32_t>(random() % 64)
                                              : fonts.table().entries[random() % (i + 1)].number;
    uint32_t expected = 9;
    for (size_t j = fonts.table().count(); j-- > 0;) {
      const RtfFontEntry& entry = fonts.table().entries[j];
      if (entry.number == wanted) expected = entry.codePage;
    }
    ASSERT_EQ(Find(fonts, wanted), expected) << wanted;
  }
}

// A table that the header rows prepare is not read for the numbers of its fonts.
TEST(RtfFontNumbers, AreThoseOfTablesThatWereReadForThem) {
  RtfFonts fonts;
  ASSERT_EQ(test::Prepare(fonts, "{\\fonttbl{\\f1\\fcharset204 A;}}"), StatusOk);
  EXPECT_EQ(Find(fonts, 1), 9U);
}

// As many fonts as a table can have, in two steps.
TEST(RtfFontNumbers, OfAFullTableTakeTwelveBytesEach) {
  KernelArray<RtfFontEntry> entries = test::ZeroEntries(kMaxRtfFonts);
  for (uint32_t i = 0; i < kMaxRtfFonts; ++i) {
    entries[i].number = i;
    entries[i].codePage = 100000 + i;
  }
  entries.truncate(20000);
  PlainKernelUsageRecord before = {};
  PlainKernelUsage(&before);
  RtfFonts fonts(std::move(entries));
  ASSERT_EQ(Read(fonts, {}), StatusOk);
  EXPECT_EQ(Find(fonts, 19999), 119999U);
  EXPECT_EQ(Find(fonts, 20000), 9U);
  std::string text;
  for (uint32_t i = 20000; i < kMaxRtfFonts; ++i) {
    text += "{\\f" + std::to_string(i) + "\\fcpg" + std::to_string(100000 + i) + "}";
  }
  std::string_view rest = text;
  ASSERT_EQ(fonts.readTable(rest), StatusOk);
  for (uint32_t i = 0; i < 32768; ++i) ASSERT_EQ(Find(fonts, i), 100000 + i);
  EXPECT_EQ(Find(fonts, 32768), 9U);
  PlainKernelUsageRecord after = {};
  PlainKernelUsage(&after);
  EXPECT_LE(after.liveBytes - before.liveBytes, 32768U * 12);
}

TEST(RtfFontNumbers, WithoutMemory) {
  RtfFonts fonts;
  PlainKernelFailAt(PlainKernelFaultMemory, 2);  // the entry comes first
  EXPECT_EQ(Read(fonts, {{5, 1252}}), StatusOutOfMemory);
  EXPECT_EQ(Find(fonts, 5), 9U);
  EXPECT_EQ(Read(fonts, {}), StatusOk);
  EXPECT_EQ(Find(fonts, 5), 1252U);
}

}  // namespace
}  // namespace tarn
