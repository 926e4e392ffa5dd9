// The work that a table is worth, and the answers that save it.
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "rtf/FontSearch.h"
#include "rtf/GraphicsProbe.h"
#include "rtf/RtfTextWriter.h"
#include "support/GuardedBytes.h"
#include "support/TestFonts.h"

namespace tarn::test {
namespace {

[[maybe_unused]] const bool kFonts =
    UseTestFonts(StandardTestFonts()) && UseTestFonts(PoorFonts({u"No Such Face"}));

constexpr uint64_t kWork = 2097152;  // for one table

// Fonts that nobody has, numbered from 0, named by a text and their number, or not at all. Made
// without a document: reading one with so many fonts takes long under a sanitizer.
RtfFonts ManyFonts(size_t count, const char* name) {
  KernelArray<RtfFontEntry> entries = ZeroEntries(count);
  for (uint32_t n = 0; n < count; ++n) {
    entries[n].number = n;
    if (name != nullptr) entries[n].name = CopyRtfFontName(name + std::to_string(n)).take();
  }
  return RtfFonts(std::move(entries));
}

// The n-th of many texts of two units that no font has.
std::u16string Unknown(int n) {
  return {static_cast<char16_t>(0x1400 + n % 256), static_cast<char16_t>(0x1400 + n / 256)};
}

void UseUp(RtfFonts& fonts) { fonts.setCoverageWork(kWork); }

TEST(FontSearchWork, ATestCountsOneAndTheUnitsOfItsText) {
  Document document("{\\f0 No Such Face;}{\\f1}{\\f2 arial;}");
  EXPECT_EQ(Find(document.fonts, kNowhere), kNone);
  // Two fonts of the table, one without a name, and five common faces; Arial is passed over.
  EXPECT_EQ(document.fonts.coverageWork(), 2u + 1 + 2 + 5 * 2);
  EXPECT_EQ(Find(document.fonts, kEmoji), kNone);
  EXPECT_EQ(document.fonts.coverageWork(), 15u + 3 + 1 + 3 + 5 * 3);
  EXPECT_EQ(Find(document.fonts, kArmenian), (Found{StatusOk, 2}));
  EXPECT_EQ(document.fonts.coverageWork(), 37u + 2 + 1 + 2);
}

TEST(FontSearchWork, NoStepBeginsWhenTheWorkIsUsedUp) {
  const std::vector<std::u16string> tested = {u"No Such Face", u"Arial", u"Symbol", u"MS Gothic"};
  // The work that is left after `used`, and the tests that begin with it: the last may go beyond.
  for (const uint64_t left : {0u, 1u, 2u, 3u, 4u, 5u, 6u}) {
    Document document("{\\f0 No Such Face;}");
    document.fonts.setCoverageWork(kWork - left);
    GraphicsProbe probe;
    EXPECT_EQ(Find(document.fonts, kOgham), kNone) << left;
    EXPECT_EQ(probe.faceNames(),
              std::vector(tested.begin(), tested.begin() + static_cast<int64_t>((left + 1) / 2)));
    EXPECT_EQ(document.table().count(), 1u);
    // What the search did not end with is not known: with work to spare the text is found.
    document.fonts.setCoverageWork(0);
    EXPECT_EQ(Find(document.fonts, kOgham), (Found{StatusOk, 1})) << left;
  }
}

TEST(FontSearchWork, TheLastStepMayBeTheAnswer) {
  Document document("{\\f0 No Such Face;}");
  document.fonts.setCoverageWork(kWork - 11);  // six tests of two
  EXPECT_EQ(Find(document.fonts, kOgham), (Found{StatusOk, 1}));
  EXPECT_EQ(Find(document.fonts, kOgham), (Found{StatusOk, 1}));
  EXPECT_EQ(Find(document.fonts, u"\u1682"), kNone);
}

TEST(FontSearchWork, ASearchThatEndsWithTheWorkIsRemembered) {
  Document document("{\\f0 Arial;}");
  document.fonts.setCoverageWork(kWork - 12);
  EXPECT_EQ(Find(document.fonts, kNowhere), kNone);
  EXPECT_EQ(document.fonts.coverageWork(), kWork);
  document.fonts.setCoverageWork(0);
  EXPECT_EQ(Find(document.fonts, kNowhere), kNone);
  EXPECT_EQ(document.fonts.coverageWork(), 0u);
}

TEST(FontSearchWork, WithoutWorkNothingIsMade) {
  Document document("{\\f0 Sylfaen;}");
  EXPECT_EQ(Find(document.fonts, kArmenian), (Found{StatusOk, 0}));
  UseUp(document.fonts);
  GraphicsProbe probe;
  EXPECT_EQ(Find(document.fonts, kGeorgian), kNone);
  EXPECT_EQ(Find(document.fonts, kArmenian), (Found{StatusOk, 0}));
  EXPECT_EQ(probe.contexts, 0u);
}

TEST(FontSearchWork, NamelessFontsCountToo) {
  RtfFonts fonts = ManyFonts(32767, nullptr);
  EXPECT_EQ(Find(fonts, u"A"), (Found{StatusOk, 32767}));
  EXPECT_EQ(fonts.coverageWork(), 32767u + 2);
  fonts.setCoverageWork(kWork - 32767);
  GraphicsProbe probe;
  EXPECT_EQ(Find(fonts, u"B"), kNone);
  EXPECT_EQ(probe.fonts.size(), 0u);
}

// A name may be as long as the document. This one ends where no byte can be read any more, without
// a NUL, and the common faces are compared with it after the work has been used up by the font
// before.
TEST(FontSearchWork, ANameIsComparedNoFurtherThanTheLongestFace) {
  constexpr std::string_view kName = "MS Gothic+";
  GuardedBytes page(kName.size());
  char* const name = page.end() - kName.size();
  kName.copy(name, kName.size());
  KernelArray<RtfFontEntry> entries = ZeroEntries(2);
  entries[1].name = name;
  RtfFonts fonts(std::move(entries));
  fonts.setCoverageWork(kWork - 1);
  EXPECT_EQ(Find(fonts, kHan), kNone);
  EXPECT_EQ(fonts.coverageWork(), kWork);
  // The name is not of the kernel.
  const_cast<RtfFontEntry&>(fonts.table().entries[1]).name = nullptr;
}

TEST(FontSearchWork, OneLongTextMayUseItUp) {
  Document document("{\\f0 Sylfaen;}");
  const std::u16string text = std::u16string(kWork, u'a') + u"\u1400";
  EXPECT_EQ(Find(document.fonts, text), kNone);
  EXPECT_EQ(Find(document.fonts, kArmenian), kNone);
}

TEST(FontSearchWork, ItBelongsToTheEntries) {
  Document document("{\\f0 Sylfaen;}");
  UseUp(document.fonts);
  document.fonts.release();
  EXPECT_EQ(document.fonts.coverageWork(), 0u);
}

// A list of receivers with the 43 letters of Georgian, over and over, in a document of 100 fonts.
TEST(FontSearchWork, RepeatedLettersCostNothing) {
  RtfFonts fonts = ManyFonts(99, "Unknown ");
  fonts.setAnsiCodePage(1252);
  ASSERT_EQ(Add(fonts, "Sylfaen", "swiss", 0, 0), 99);
  for (char16_t unit = 0; unit < 43; ++unit) {
    const char16_t letter = static_cast<char16_t>(0x10D0 + unit);
    ASSERT_EQ(Find(fonts, {&letter, 1}), (Found{StatusOk, 99}));
  }
  EXPECT_EQ(fonts.coverageWork(), 43u * 100 * 2);
  for (uint32_t n = 0; n < 100000; ++n) {
    const char16_t letter = static_cast<char16_t>(0x10D0 + n % 43);
    ASSERT_EQ(Find(fonts, {&letter, 1}), (Found{StatusOk, 99})) << n;
  }
  EXPECT_EQ(fonts.coverageWork(), 43u * 100 * 2);
}

// The same as it is written: every escape is in the font.
TEST(FontSearchWork, RepeatedLettersAreWrittenInTheirFont) {
  RtfRender render;
  std::string fonts = "\\ansicpg1252\\deff0{\\fonttbl";
  for (int n = 0; n < 99; ++n) {
    fonts += "{\\f" + std::to_string(n) + "\\fcharset0 Unknown " + std::to_string(n) + ";}";
  }
  ASSERT_EQ(Prepare(render.fonts, fonts + "{\\f99 Sylfaen;}}"), StatusOk);
  std::string text;
  std::string expected;
  for (int n = 0; n < 10000; ++n) {
    const int letter = 0x10D0 + n % 43;
    text += "\xE1\x83";  // U+10D0 to U+10FA, and a tab
    text += static_cast<char>(0x80 | (letter & 0x3F));
    text += '\t';
    expected += "\\f99 \\u" + std::to_string(letter) + " ?\\f0 \\'09";
  }
  EXPECT_EQ(WriteRtfUtf8Text(render, text.data(), text.size()), StatusOk);
  EXPECT_TRUE(render.output.view() == expected);
}

TEST(FontSearchWork, IsEnoughForWellFormedDocuments) {
  RtfFonts fonts = ManyFonts(200, "Unknown ");
  for (int round = 0; round < 2; ++round) {
    for (int n = 0; n < 3000; ++n) {
      const char16_t pair[] = {static_cast<char16_t>(0xD83C + n / 1024),
                               static_cast<char16_t>(0xDC00 + n % 1024)};
      ASSERT_EQ(Find(fonts, {pair, 2}), kNone);
    }
    EXPECT_EQ(fonts.coverageWork(), 3000u * 206 * 3);
  }
  EXPECT_EQ(Find(fonts, kOgham), (Found{StatusOk, 200}));
}

// How often 65536 texts ask for a font, in a table of so many, with an eighth of the work left.
size_t CountHostileTests(size_t count, const char* name) {
  RtfFonts fonts = ManyFonts(count, name);
  fonts.setCoverageWork(kWork / 8 * 7);
  const GraphicsProbe probe;
  for (int n = 0; n < 65536; ++n) EXPECT_EQ(Find(fonts, Unknown(n)), kNone);
  // The last test may go beyond.
  EXPECT_GE(fonts.coverageWork(), kWork);
  EXPECT_LE(fonts.coverageWork(), kWork + 2);
  return probe.fonts.size();
}

TEST(FontSearchWork, BoundsTheTestsOfAHostileDocument) {
  // A test of a text of two units counts three.
  EXPECT_EQ(CountHostileTests(32768, "Unknown "), 87382u);
  EXPECT_EQ(CountHostileTests(1, "Unknown "), 87382u);
  // Seven texts are looked up in all fonts of the table, and tested with six common faces.
  EXPECT_EQ(CountHostileTests(32768, nullptr), 42u);
}

TEST(FontSearchMemory, AnswersOfALaterSearchAreKeptToo) {
  RtfFonts fonts = ManyFonts(1, nullptr);
  for (int n = 0; n < 4096; ++n) ASSERT_EQ(Find(fonts, Unknown(n)), kNone);
  const uint64_t work = fonts.coverageWork();
  for (int n = 0; n < 4096; ++n) ASSERT_EQ(Find(fonts, Unknown(n)), kNone);
  EXPECT_EQ(fonts.coverageWork(), work);
  // One more is asked for again each time.
  EXPECT_EQ(Find(fonts, kEmoji), kNone);
  EXPECT_EQ(Find(fonts, kEmoji), kNone);
  EXPECT_EQ(fonts.coverageWork(), work + 2 * (1 + 6 * 3));
}

TEST(FontSearchMemory, OnlyNewFontsAreAskedForAKnownText) {
  Document document("{\\f0 No Such Face;}");
  EXPECT_EQ(Find(document.fonts, kGeorgian), kNone);
  ASSERT_EQ(Add(document.fonts, "Arial", "nil", 0, 0), 1);
  {
    GraphicsProbe probe;
    EXPECT_EQ(Find(document.fonts, kGeorgian), kNone);
    EXPECT_EQ(probe.faceNames(), (std::vector<std::u16string>{u"Arial"}));
    EXPECT_EQ(Find(document.fonts, kGeorgian), kNone);
    EXPECT_EQ(probe.contexts, 1u);
  }
  ASSERT_EQ(Add(document.fonts, "Batang", "nil", 0, 0), 2);
  ASSERT_EQ(Add(document.fonts, "Sylfaen", "nil", 0, 0), 3);
  GraphicsProbe probe;
  EXPECT_EQ(Find(document.fonts, kGeorgian), (Found{StatusOk, 3}));
  EXPECT_EQ(Find(document.fonts, kGeorgian), (Found{StatusOk, 3}));
  EXPECT_EQ(probe.faceNames(), (std::vector<std::u16string>{u"Batang", u"Sylfaen"}));
}

TEST(FontSearchMemory, AFoundFontStaysTheFirst) {
  Document document("{\\f0 No Such Face;}{\\f1 Sylfaen;}");
  EXPECT_EQ(Find(document.fonts, kArmenian), (Found{StatusOk, 1}));
  ASSERT_EQ(Add(document.fonts, "Arial", "nil", 0, 0), 2);
  GraphicsProbe probe;
  EXPECT_EQ(Find(document.fonts, kArmenian), (Found{StatusOk, 1}));
  EXPECT_EQ(probe.contexts, 0u);
}

}  // namespace
}  // namespace tarn::test
