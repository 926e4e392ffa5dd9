// Who is asked where fontconfig and FreeType answer: the family of that name and no other, its face
// nearest to regular, read once.
#include "Platform/GlyphCoverage.h"

#include <gtest/gtest.h>
#include <malloc.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "GlyphQuestion.h"
#include "support/TestFonts.h"

namespace tarn::test {
namespace {

// Every style of a family has a letter that the others lack.
std::vector<TestFont> FamilyWithStyles() {
  return {
      {.family = u"Styles", .characters = u"n", .style = u"Narrow", .width = 3},
      {.family = u"Styles", .characters = u"c", .style = u"Condensed Light", .weight = 300},
      {.family = u"Styles", .characters = u"b", .style = u"Bold", .weight = 700},
      {.family = u"Styles", .characters = u"i", .style = u"Italic", .italic = true},
      {.family = u"Styles", .characters = u"r", .style = u"Regular"},
      {.family = u"Styles",
       .characters = u"z",
       .style = u"Bold Italic",
       .weight = 700,
       .italic = true},
      {.family = u"No Regular", .characters = u"i", .style = u"Italic", .italic = true},
      {.family = u"No Regular", .characters = u"h", .style = u"Heavy", .weight = 900},
      {.family = u"No Regular", .characters = u"m", .style = u"Medium", .weight = 500},
  };
}

std::vector<TestFont> SpecialFonts() {
  return {
      {.family = u"Marks", .characters = UnitRange(0xF020, 0xF07E), .symbol = true},
      // A letter at U+F100, which is no byte's place.
      {.family = u"More Marks", .characters = u"\uF041\uF100", .symbol = true},
      {.family = u"Halves", .characters = UnitRange(0xD7F0, 0xE010)},
      {.family = u"Deleted Later", .characters = u"d"},
      {.family = u"Deleted Before", .characters = u"d"},
      {.family = u"Damaged", .characters = u"d"},
      {.family = u"Replaced Later", .characters = u"d"},
      {.family = u"Arial Black", .characters = u"k"},
  };
}

[[maybe_unused]] const bool kFonts = UseTestFonts(StandardTestFonts()) &&
                                     UseTestFonts(FamilyWithStyles()) &&
                                     UseTestFonts(SpecialFonts());

TEST(GlyphCoverageOfPosix, LooksAtTheNameAlone) {
  uint16_t glyph = 0;
  EXPECT_TRUE(platform::FontHasGlyphs({.faceName = u"Arial", .text = u"a", .glyphs = &glyph}));
}

TEST(GlyphCoverageOfPosix, TakesNoOtherNameForTheFamily) {
  EXPECT_FALSE(Has(u"", u"a"));
  EXPECT_FALSE(Has(u"Aria", u"a"));
  EXPECT_FALSE(Has(u"Arial ", u"a"));
  EXPECT_FALSE(Has(u" Arial", u"a"));
  EXPECT_FALSE(Has(u"Arial Regular", u"a"));
  EXPECT_FALSE(Has(u"Arial Black", u"a"));
  EXPECT_TRUE(Has(u"Arial Black", u"k"));
  EXPECT_FALSE(Has(u"Arial:bold", u"a"));
  EXPECT_FALSE(Has(std::u16string_view(u"Arial\0", 6), u"a"));
  EXPECT_FALSE(Has(u"MSGothic", u"a"));
  EXPECT_FALSE(Has(u"MS  Gothic", u"a"));
  EXPECT_FALSE(Has(u"@MS Gothic", u"a"));
}

TEST(GlyphCoverageOfPosix, SubstitutesNoFamily) {
  // The configuration would put Arial in place of the first, and any font in place of the others.
  EXPECT_FALSE(Has(u"Helvetica", u"a"));
  EXPECT_FALSE(Has(u"sans-serif", u"a"));
  EXPECT_FALSE(Has(u"No Such Face", u"a"));
  EXPECT_FALSE(Has(u"No Such Face", u""));
}

TEST(GlyphCoverageOfPosix, AsksTheFaceNearestToRegular) {
  EXPECT_TRUE(Has(u"Styles", u"r"));
  EXPECT_FALSE(Has(u"Styles", u"n"));
  EXPECT_FALSE(Has(u"Styles", u"b"));
  EXPECT_FALSE(Has(u"Styles", u"c"));
  EXPECT_FALSE(Has(u"Styles", u"i"));
  EXPECT_FALSE(Has(u"Styles", u"z"));
}

TEST(GlyphCoverageOfPosix, PrefersUprightAndThenAWeightNearRegular) {
  EXPECT_TRUE(Has(u"No Regular", u"m"));
  EXPECT_FALSE(Has(u"No Regular", u"i"));
  EXPECT_FALSE(Has(u"No Regular", u"h"));
}

TEST(GlyphCoverageOfPosix, ReadsSymbolFontsAtTheirPlaceAndAtTheBytes) {
  EXPECT_TRUE(Has(u"Marks", u"\uF041"));
  EXPECT_TRUE(Has(u"Marks", u"A"));
  EXPECT_TRUE(Has(u"Marks", u"A\uF041z"));
  EXPECT_FALSE(Has(u"Marks", u"\u007F"));
  EXPECT_FALSE(Has(u"Marks", u"\u00E9"));
  EXPECT_FALSE(Has(u"Marks", u"\u0391"));
  EXPECT_TRUE(Has(u"Symbol", u"\u00FF"));
}

TEST(GlyphCoverageOfPosix, TakesNoUnitButBytesForSymbols) {
  EXPECT_TRUE(Has(u"More Marks", u"\uF100"));
  EXPECT_FALSE(Has(u"More Marks", u"\u0100"));
}

TEST(GlyphCoverageOfPosix, FindsNoGlyphForHalvesOfPairs) {
  EXPECT_FALSE(Has(u"Halves", u"\U0001F600"));
  EXPECT_FALSE(Has(u"Halves", std::u16string(1, char16_t{0xD800})));
  EXPECT_FALSE(Has(u"Halves", std::u16string(1, char16_t{0xDFFF})));
  EXPECT_TRUE(Has(u"Halves", u"\uD7FF\uE000"));
}

// Each test runs in a process of its own or after the others; so all of it is in one.
TEST(GlyphCoverageOfPosix, OpensAFamilyOnce) {
  const TestFonts& fonts = InstalledTestFonts();
  EXPECT_TRUE(Has(u"Deleted Later", u"d"));
  EXPECT_TRUE(Has(u"Replaced Later", u"d"));

  std::filesystem::remove(fonts.file(u"Deleted Later"));
  std::filesystem::remove(fonts.file(u"Deleted Before"));
  // Cut in place: what had the file mapped into memory would crash now.
  std::filesystem::resize_file(fonts.file(u"Replaced Later"), 0);
  EXPECT_TRUE(Has(u"Deleted Later", u"d"));
  EXPECT_TRUE(Has(u"Replaced Later", u"d"));
  EXPECT_FALSE(Has(u"Deleted Before", u"d"));
}

TEST(GlyphCoverageOfPosix, FindsNothingInADamagedFile) {
  EXPECT_TRUE(Has(u"Arial", u"a"));  // the names of all families are known now
  std::filesystem::resize_file(InstalledTestFonts().file(u"Damaged"), 100);
  EXPECT_FALSE(Has(u"Damaged", u"d"));
  EXPECT_FALSE(Has(u"Damaged", u"d"));
}

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kCountsAllocations = false;
#elif defined(__has_feature)
constexpr bool kCountsAllocations = !__has_feature(address_sanitizer);
#else
constexpr bool kCountsAllocations = true;
#endif

TEST(GlyphCoverageOfPosix, KeepsNothingOfUnknownNames) {
  EXPECT_FALSE(Has(u"Unknown", u"a"));
  const size_t before = mallinfo2().uordblks;
  for (int n = 0; n < 100000; ++n) {
    const std::string number = std::to_string(n);
    ASSERT_FALSE(Has(u"Unknown " + std::u16string(number.begin(), number.end()), u"a"));
  }
  if (kCountsAllocations) {
    EXPECT_LT(mallinfo2().uordblks, before + 100000);
  }
}

// Asks with the given configuration only, in a process of its own: that runs the test from its
// beginning, and nothing but the folder of the test fonts is removed at its end.
void ExitWithAnswer(const char* configuration) {
  setenv("FONTCONFIG_FILE", configuration, 1);
  std::exit(Has(u"Arial", u"a") ? 1 : 0);
}

TEST(GlyphCoverageOfPosixDeathTest, KnowsNoFontWithoutAConfigurationAndSaysNothing) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const std::string missing = (InstalledTestFonts().folder() / "missing.conf").string();
  EXPECT_EXIT(ExitWithAnswer(missing.c_str()), ::testing::ExitedWithCode(0), ::testing::Eq(""));
}

TEST(GlyphCoverageOfPosixDeathTest, KnowsNoFontOfADamagedConfiguration) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const std::filesystem::path damaged = InstalledTestFonts().folder() / "damaged.conf";
  std::ofstream(damaged) << "<fontconfig><dir>";
  EXPECT_EXIT(ExitWithAnswer(damaged.c_str()), ::testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace tarn::test
