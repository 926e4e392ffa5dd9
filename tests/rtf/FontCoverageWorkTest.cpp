// The work that a table is worth, and the answers that save it.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

#include "rtf/FontSearch.h"
#include "rtf/GraphicsProbe.h"
#include "rtf/RtfTextWriter.h"
#include "support/TestFonts.h"

namespace tarn::test {
namespace {

[[maybe_unused]] const bool kFonts =
    UseTestFonts(StandardTestFonts()) && UseTestFonts(PoorFonts({u"No Such Face"}));

constexpr uint64_t kWork = 2097152;  // for one table

// Fonts that nobody has, numbered from 0, named by a text and their number, or not at all. Made
// without a document: reading one with so many fonts takes long under a sanitizer.
void FillWithFonts(RtfFontTable& table, int32_t count, const char* name) {
  const auto fonts = static_cast<uint32_t>(count);
  table.entries = AllocateZeroBlock<RtfFontEntry>(fonts, TARN_HERE).take();
  ASSERT_NE(table.entries, nullptr);
  for (uint32_t n = 0; n < fonts; ++n) {
    RtfFontEntry& entry = table.entries[n];
    entry.number = n;
    if (name == nullptr) continue;
    const std::string full = name + std::to_string(n);
    entry.name = AllocateZeroBlock<char>(full.size() + 1, TARN_HERE).take();
    ASSERT_NE(entry.name, nullptr);
    full.copy(entry.name, full.size());
  }
  table.count = count;
  table.nextNumber = fonts;
}

// The n-th of many texts of two units that no font has.
std::u16string Unknown(int n) {
  return {static_cast<char16_t>(0x1400 + n % 256), static_cast<char16_t>(0x1400 + n / 256)};
}

void UseUp(RtfFontTable& table) { table.coverageWork = kWork; }

TEST(FontSearchWork, ATestCountsOneAndTheUnitsOfItsText) {
  Document document("{\\f0 No Such Face;}{\\f1}{\\f2 arial;}");
  EXPECT_EQ(Find(document.table, kNowhere), kNone);
  // Two fonts of the table, one without a name, and five common faces; Arial is passed over.
  EXPECT_EQ(document.table.coverageWork, 2u + 1 + 2 + 5 * 2);
  EXPECT_EQ(Find(document.table, kEmoji), kNone);
  EXPECT_EQ(document.table.coverageWork, 15u + 3 + 1 + 3 + 5 * 3);
  EXPECT_EQ(Find(document.table, kArmenian), (Found{1, 2}));
  EXPECT_EQ(document.table.coverageWork, 37u + 2 + 1 + 2);
}

TEST(FontSearchWork, NoStepBeginsWhenTheWorkIsUsedUp) {
  const std::vector<std::u16string> tested = {u"No Such Face", u"Arial", u"Symbol", u"MS Gothic"};
  // The work that is left behind `used`, and the tests that begin with it: the last may go beyond.
  for (const uint64_t left : {0u, 1u, 2u, 3u, 4u, 5u, 6u}) {
    Document document("{\\f0 No Such Face;}");
    document.table.coverageWork = kWork - left;
    GraphicsProbe probe;
    EXPECT_EQ(Find(document.table, kOgham), kNone) << left;
    EXPECT_EQ(probe.faceNames(),
              std::vector(tested.begin(), tested.begin() + static_cast<int64_t>((left + 1) / 2)));
    EXPECT_EQ(document.table.count, 1);
    // What the search did not end with is not known: with work to spare the text is found.
    document.table.coverageWork = 0;
    EXPECT_EQ(Find(document.table, kOgham), (Found{1, 1})) << left;
  }
}

TEST(FontSearchWork, TheLastStepMayBeTheAnswer) {
  Document document("{\\f0 No Such Face;}");
  document.table.coverageWork = kWork - 11;  // six tests of two
  EXPECT_EQ(Find(document.table, kOgham), (Found{1, 1}));
  EXPECT_EQ(Find(document.table, kOgham), (Found{1, 1}));
  EXPECT_EQ(Find(document.table, u"\u1682"), kNone);
}

TEST(FontSearchWork, ASearchThatEndsWithTheWorkIsRemembered) {
  Document document("{\\f0 Arial;}");
  document.table.coverageWork = kWork - 12;
  EXPECT_EQ(Find(document.table, kNowhere), kNone);
  EXPECT_EQ(document.table.coverageWork, kWork);
  document.table.coverageWork = 0;
  EXPECT_EQ(Find(document.table, kNowhere), kNone);
  EXPECT_EQ(document.table.coverageWork, 0u);
}

TEST(FontSearchWork, WithoutWorkNothingIsMade) {
  Document document("{\\f0 Sylfaen;}");
  EXPECT_EQ(Find(document.table, kArmenian), (Found{1, 0}));
  UseUp(document.table);
  GraphicsProbe probe;
  EXPECT_EQ(Find(document.table, kGeorgian), kNone);
  EXPECT_EQ(Find(document.table, kArmenian), (Found{1, 0}));
  EXPECT_EQ(probe.contexts, 0u);
}

TEST(FontSearchWork, NamelessFontsCountToo) {
  RtfFontTable table;
  FillWithFonts(table, 32767, nullptr);
  EXPECT_EQ(Find(table, u"A"), (Found{1, 32767}));
  EXPECT_EQ(table.coverageWork, 32767u + 2);
  table.coverageWork = kWork - 32767;
  GraphicsProbe probe;
  EXPECT_EQ(Find(table, u"B"), kNone);
  EXPECT_EQ(probe.fonts.size(), 0u);
}

TEST(FontSearchWork, OneLongTextMayUseItUp) {
  Document document("{\\f0 Sylfaen;}");
  const std::u16string text = std::u16string(kWork, u'a') + u"\u1400";
  EXPECT_EQ(Find(document.table, text), kNone);
  EXPECT_EQ(Find(document.table, kArmenian), kNone);
}

TEST(FontSearchWork, ItBelongsToTheEntries) {
  Document document("{\\f0 Sylfaen;}");
  UseUp(document.table);
  ReleaseRtfFontTable(document.table);
  EXPECT_EQ(document.table.coverageWork, 0u);
}

// A list of receivers with the 43 letters of Georgian, over and over, in a document of 100 fonts.
TEST(FontSearchWork, RepeatedLettersCostNothing) {
  RtfFontTable table;
  FillWithFonts(table, 99, "Unknown ");
  table.ansiCodePage = 1252;
  uint32_t sylfaen = 0;
  ASSERT_EQ(AddRtfFont(table, "Sylfaen", "swiss", 0, 0, sylfaen), StatusOk);
  for (char16_t unit = 0; unit < 43; ++unit) {
    const char16_t letter = static_cast<char16_t>(0x10D0 + unit);
    ASSERT_EQ(Find(table, {&letter, 1}), (Found{1, 99}));
  }
  EXPECT_EQ(table.coverageWork, 43u * 100 * 2);
  for (uint32_t n = 0; n < 100000; ++n) {
    const char16_t letter = static_cast<char16_t>(0x10D0 + n % 43);
    ASSERT_EQ(Find(table, {&letter, 1}), (Found{1, 99})) << n;
  }
  EXPECT_EQ(table.coverageWork, 43u * 100 * 2);
}

// The same as it is written: every escape stands in the font.
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
  EXPECT_TRUE(std::string(render.output.data(), render.output.length()) == expected);
}

TEST(FontSearchWork, IsEnoughForWellFormedDocuments) {
  RtfFontTable table;
  FillWithFonts(table, 200, "Unknown ");
  for (int round = 0; round < 2; ++round) {
    for (int n = 0; n < 3000; ++n) {
      const char16_t pair[] = {static_cast<char16_t>(0xD83C + n / 1024),
                               static_cast<char16_t>(0xDC00 + n % 1024)};
      ASSERT_EQ(Find(table, {pair, 2}), kNone);
    }
    EXPECT_EQ(table.coverageWork, 3000u * 206 * 3);
  }
  EXPECT_EQ(Find(table, kOgham), (Found{1, 200}));
}

// How often 65536 texts ask for a font, in a table of so many, with an eighth of the work left.
size_t CountHostileTests(int32_t fonts, const char* name) {
  RtfFontTable table;
  FillWithFonts(table, fonts, name);
  table.coverageWork = kWork / 8 * 7;
  const GraphicsProbe probe;
  const auto start = std::chrono::steady_clock::now();
  for (int n = 0; n < 65536; ++n) EXPECT_EQ(Find(table, Unknown(n)), kNone);
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start;
  EXPECT_LT(time.count(), 20.0);
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
  RtfFontTable table;
  FillWithFonts(table, 1, nullptr);
  for (int n = 0; n < 4096; ++n) ASSERT_EQ(Find(table, Unknown(n)), kNone);
  const uint64_t work = table.coverageWork;
  for (int n = 0; n < 4096; ++n) ASSERT_EQ(Find(table, Unknown(n)), kNone);
  EXPECT_EQ(table.coverageWork, work);
  // One more is asked for again each time.
  EXPECT_EQ(Find(table, kEmoji), kNone);
  EXPECT_EQ(Find(table, kEmoji), kNone);
  EXPECT_EQ(table.coverageWork, work + 2 * (1 + 6 * 3));
}

TEST(FontSearchMemory, OnlyNewFontsAreAskedForAKnownText) {
  Document document("{\\f0 No Such Face;}");
  EXPECT_EQ(Find(document.table, kGeorgian), kNone);
  uint32_t number = 0;
  ASSERT_EQ(AddRtfFont(document.table, "Arial", "nil", 0, 0, number), StatusOk);
  {
    GraphicsProbe probe;
    EXPECT_EQ(Find(document.table, kGeorgian), kNone);
    EXPECT_EQ(probe.faceNames(), (std::vector<std::u16string>{u"Arial"}));
    EXPECT_EQ(Find(document.table, kGeorgian), kNone);
    EXPECT_EQ(probe.contexts, 1u);
  }
  ASSERT_EQ(AddRtfFont(document.table, "Batang", "nil", 0, 0, number), StatusOk);
  ASSERT_EQ(AddRtfFont(document.table, "Sylfaen", "nil", 0, 0, number), StatusOk);
  GraphicsProbe probe;
  EXPECT_EQ(Find(document.table, kGeorgian), (Found{1, 3}));
  EXPECT_EQ(Find(document.table, kGeorgian), (Found{1, 3}));
  EXPECT_EQ(probe.faceNames(), (std::vector<std::u16string>{u"Batang", u"Sylfaen"}));
}

TEST(FontSearchMemory, AFoundFontStaysTheFirst) {
  Document document("{\\f0 No Such Face;}{\\f1 Sylfaen;}");
  EXPECT_EQ(Find(document.table, kArmenian), (Found{1, 1}));
  uint32_t number = 0;
  ASSERT_EQ(AddRtfFont(document.table, "Arial", "nil", 0, 0, number), StatusOk);
  GraphicsProbe probe;
  EXPECT_EQ(Find(document.table, kArmenian), (Found{1, 1}));
  EXPECT_EQ(probe.contexts, 0u);
}

}  // namespace
}  // namespace tarn::test
