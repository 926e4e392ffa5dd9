#include "Platform/GlyphCoverage.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "GlyphQuestion.h"
#include "support/TestFonts.h"

namespace tarn::test {
namespace {

std::vector<TestFont> SpecialFonts() {
  return {
      {.family = u"Private", .characters = u"\uF041"},
      {.family = u"Last Unit", .characters = u"\uFFFF"},
      {.family = u"Two Names", .characters = u"t", .otherFamily = u"\uFF34\u540D"},
      {.family = u"\u00C9t\u00E9 \u0416", .characters = u"e"},
      {.family = u"Empty", .characters = u""},
  };
}

[[maybe_unused]] const bool kFonts =
    UseTestFonts(StandardTestFonts()) && UseTestFonts(SpecialFonts());

TEST(GlyphCoverage, AsksForEveryUnit) {
  EXPECT_TRUE(Has(u"Arial", u"Plain text"));
  EXPECT_TRUE(Has(u"Arial", u"\u0531\u0561"));
  EXPECT_FALSE(Has(u"Arial", u"\u10D0"));
  EXPECT_FALSE(Has(u"Arial", u"\u10D0 first"));
  EXPECT_FALSE(Has(u"Arial", u"last \u10D0"));
  EXPECT_TRUE(Has(u"Sylfaen", u"last \u10D0"));
  EXPECT_FALSE(Has(u"Arial", u"a\nb"));
}

TEST(GlyphCoverage, TakesANulAsAUnitLikeOthers) {
  EXPECT_FALSE(Has(u"Arial", std::u16string_view(u"a\0b", 3)));
}

TEST(GlyphCoverage, FindsNothingMissingInAnEmptyText) {
  EXPECT_TRUE(Has(u"Arial", u""));
  EXPECT_TRUE(Has(u"Empty", u""));
}

TEST(GlyphCoverage, KnowsTheLastUnitAndItsNeighbour) {
  EXPECT_TRUE(Has(u"Last Unit", u"\uFFFF"));
  EXPECT_FALSE(Has(u"Last Unit", u"\uFFFE"));
  EXPECT_FALSE(Has(u"Arial", u"\uFFFF"));
}

TEST(GlyphCoverage, ComparesNamesWithoutCase) {
  EXPECT_TRUE(Has(u"ARIAL", u"a"));
  EXPECT_TRUE(Has(u"arial", u"a"));
  EXPECT_TRUE(Has(u"mS gOTHIC", u"\u3400"));
  EXPECT_TRUE(Has(u"\u00C9t\u00E9 \u0416", u"e"));
  EXPECT_TRUE(Has(u"\u00E9T\u00C9 \u0436", u"e"));
}

TEST(GlyphCoverage, KnowsAFamilyByItsNameInEveryLanguage) {
  EXPECT_TRUE(Has(u"Two Names", u"t"));
  EXPECT_TRUE(Has(u"\uFF34\u540D", u"t"));
  EXPECT_TRUE(Has(u"\uFF54\u540D", u"t"));
}

TEST(GlyphCoverage, TakesUnicodeFontsAsTheyAre) {
  EXPECT_TRUE(Has(u"Private", u"\uF041"));
  EXPECT_FALSE(Has(u"Private", u"A"));
}

TEST(GlyphCoverage, AnswersAllThreadsAlike) {
  std::atomic<int> wrong = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < 8; ++t) {
    threads.emplace_back([&wrong] {
      for (int n = 0; n < 200; ++n) {
        if (!Has(u"Batang", u"\uA960") || Has(u"Batang", u"\u1681")) ++wrong;
        if (!Has(u"Gulim", u"\u1681") || Has(u"Gulim", u"\uA960")) ++wrong;
        if (!Has(u"Arial", u"a") || Has(u"Sylfaen", u"\u0100")) ++wrong;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace tarn::test
