#include "rtf/FontCoverage.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Tarnbase/PlainKernel.h"
#include "rtf/FontSearch.h"
#include "rtf/FontTables.h"
#include "rtf/GraphicsProbe.h"
#include "support/FaultSweep.h"
#include "support/KernelUsage.h"
#include "support/TestFonts.h"

namespace tarn::test {
namespace {

std::vector<TestFont> SpecialFonts() {
  return {
      // 31 characters, the most that a face name may have.
      {.family = u"Name Of Thirty-One Characters 1", .characters = u"l"},
      {.family = u"Caf\u00E9", .characters = u"c"},
      {.family = u"Same Letters", .characters = u"\u0531"},
  };
}

[[maybe_unused]] const bool kFonts =
    UseTestFonts(StandardTestFonts()) && UseTestFonts(SpecialFonts()) &&
    UseTestFonts(PoorFonts({u"Nobody Has This", u"Ab\u00E9", u"Name Of Thirty-One Characters",
                            u"NNNNNNNNNNNNNNNNNNNNNNNNNNNNNNN", u"Caf\u00C3\u00A9", u"Arial Black",
                            u"Aria", u"XArial"}));

TEST(FontCoversText, AsksForEveryUnit) {
  EXPECT_TRUE(Covers("Arial", u"Plain"));
  EXPECT_TRUE(Covers("Arial", kArmenian));
  EXPECT_FALSE(Covers("Arial", kGeorgian));
  EXPECT_FALSE(Covers("Arial", u"a\u10D0"));
  EXPECT_FALSE(Covers("Arial", u"\u10D0a"));
  EXPECT_TRUE(Covers("arial", u"Plain"));
  EXPECT_TRUE(Covers("Symbol", u"\uF041A"));
  EXPECT_FALSE(Covers("Arial", kEmoji));
}

TEST(FontCoversText, HasNoAnswerWithoutAnArgument) {
  void* const context = KernelCreateDC(0, TARN_HERE);
  const GraphicsProbe probe;
  EXPECT_FALSE(FontCoversText(nullptr, "Arial", u"a", 1));
  EXPECT_FALSE(FontCoversText(context, nullptr, u"a", 1));
  EXPECT_FALSE(FontCoversText(context, "Arial", nullptr, 1));
  EXPECT_TRUE(probe.fonts.empty());
  EXPECT_TRUE(FontCoversText(context, "Arial", u"a", 1));
  KernelDeleteDC(context, TARN_HERE);
}

TEST(FontCoversText, HasNoAnswerWithoutAFont) {
  GraphicsProbe probe;
  probe.refusedFont = 1;
  const uint64_t before = AllocationCalls();
  EXPECT_FALSE(Covers("Arial", u"a"));
  EXPECT_EQ(AllocationCalls(), before);
  EXPECT_TRUE(Covers("Arial", u"a"));
}

TEST(FontCoversText, AsksForAFontOfWhichOnlyTheNameIsKnown) {
  const GraphicsProbe probe;
  EXPECT_FALSE(Covers("Ab\xE9", u"a"));
  EXPECT_TRUE(Covers("Name Of Thirty-One Characters 12", u"l"));
  LogFontBytes expected{};
  expected[28] = 'A';
  expected[30] = 'b';
  expected[32] = 0xE9;
  ASSERT_EQ(probe.fonts.size(), 2u);
  EXPECT_EQ(probe.fonts[0], expected);
  // 31 characters and a NUL fill the record.
  EXPECT_EQ(probe.faceNames()[1], u"Name Of Thirty-One Characters 1");
}

TEST(FontCoversText, ReadsThirtyOneBytesOfTheName) {
  EXPECT_TRUE(Covers("Name Of Thirty-One Characters 1", u"l"));
  EXPECT_TRUE(Covers("Name Of Thirty-One Characters 12", u"l"));
  EXPECT_TRUE(Covers("Name Of Thirty-One Characters 1 and many more of them", u"l"));
  EXPECT_FALSE(Covers("Name Of Thirty-One Characters", u"l"));
}

TEST(FontCoversText, ReadsNothingAfterTheName) {
  const std::vector<char> exact = {'A', 'r', 'i', 'a', 'l', '\0'};
  EXPECT_TRUE(Covers(exact.data(), u"a"));
  const std::vector<char> text = {'N'};
  EXPECT_FALSE(Covers(std::string(31, text[0]).c_str(), u"a"));
}

TEST(FontCoversText, ReadsTheNameInTheAnsiCodePage) {
  EXPECT_TRUE(Covers("Caf\xE9", u"c"));
  EXPECT_TRUE(Covers("Caf\xC9", u"c"));
  EXPECT_FALSE(Covers("Caf\xC3\xA9", u"c"));
}

TEST(FontCoversText, DeletesTheFontWithoutMemoryForGlyphs) {
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_FALSE(Covers("Arial", u"a"));
  EXPECT_TRUE(Covers("Arial", u"a"));
}

TEST(FontCoversText, TakesOneWordAUnitAndNothingElse) {
  PlainKernelUsageRecord before = {};
  PlainKernelUsage(&before);
  const std::u16string text(100000, u'a');
  EXPECT_TRUE(Covers("Arial", text));
  PlainKernelUsageRecord after = {};
  PlainKernelUsage(&after);
  EXPECT_EQ(after.allocationCalls, before.allocationCalls + 1);
  EXPECT_GE(after.peakBytes, before.liveBytes + 200000);
}

TEST(FindFontForText, TakesTheFirstOfTheTableThatCovers) {
  Document document("{\\f3 Gulim;}{\\f5 Same Letters;}{\\f4 Sylfaen;}{\\f1 Arial;}");
  EXPECT_EQ(Find(document.fonts, kArmenian), (Found{StatusOk, 5}));
  EXPECT_EQ(Find(document.fonts, kGeorgian), (Found{StatusOk, 4}));
  EXPECT_EQ(Find(document.fonts, kOgham), (Found{StatusOk, 3}));
  EXPECT_EQ(document.table().changed, 0u);
  EXPECT_EQ(document.table().count(), 4u);
}

TEST(FindFontForText, PrefersTheTableToTheCommonFaces) {
  Document document("{\\f7 Sylfaen;}");
  EXPECT_EQ(Find(document.fonts, kArmenian), (Found{StatusOk, 7}));
  EXPECT_EQ(Find(document.fonts, kHan), (Found{StatusOk, 8}));
}

TEST(FindFontForText, PassesOverFontsWithoutAName) {
  Document document("{\\f1}{\\f2\\fcharset0}{\\f3 Arial;}");
  ASSERT_EQ(document.table().entries[0].name, nullptr);
  EXPECT_EQ(Find(document.fonts, kArmenian), (Found{StatusOk, 3}));
}

TEST(FindFontForText, GivesTheNumberOfAnEntryWhateverItIs) {
  Document document("{\\fswiss Arial;}");
  EXPECT_EQ(document.table().entries[0].number, kNoRtfFont);
  EXPECT_EQ(Find(document.fonts, kArmenian), (Found{StatusOk, kNoRtfFont}));
  EXPECT_EQ(Find(document.fonts, kArmenian), (Found{StatusOk, kNoRtfFont}));
}

TEST(FindFontForText, AddsACommonFace) {
  Document document("{\\f11\\fcharset204 Nobody Has This;}");
  EXPECT_EQ(Find(document.fonts, kOgham), (Found{StatusOk, 12}));
  EXPECT_EQ(TableText(document.fonts),
            "\\fonttbl{\\f11\\fcharset204 Nobody Has This;}{\\f12 \\ \\fcharset0 Gulim}}");
  EXPECT_EQ(Show(document.fonts), "11:1251:0:Nobody Has This|12:0:0:Gulim");
  EXPECT_EQ(document.table().changed, 1u);
  EXPECT_EQ(document.table().nextNumber, 13u);
}

TEST(FindFontForText, AddsAFaceOnce) {
  Document document("{\\f0 Nobody Has This;}");
  EXPECT_EQ(Find(document.fonts, kOgham), (Found{StatusOk, 1}));
  EXPECT_EQ(Find(document.fonts, kOgham), (Found{StatusOk, 1}));
  EXPECT_EQ(Find(document.fonts, u"\u1682"), (Found{StatusOk, 1}));
  EXPECT_EQ(Show(document.fonts), "0:0:0:Nobody Has This|1:0:0:Gulim");
}

TEST(FindFontForText, TriesTheCommonFacesInOrder) {
  // All but the last are in a later face as well.
  const std::pair<std::u16string_view, const char*> expected[] = {{u"A", "Arial"},
                                                                  {u"\uF0B7", "Symbol"},
                                                                  {u"\u3041", "MS Gothic"},
                                                                  {u"\uAC00", "Batang"},
                                                                  {kOgham, "Gulim"}};
  for (const auto& [text, face] : expected) {
    Document document("{\\f0 Nobody Has This;}");
    EXPECT_EQ(Find(document.fonts, text), (Found{StatusOk, 1})) << face;
    EXPECT_EQ(Show(document.fonts), std::string("0:0:0:Nobody Has This|1:0:0:") + face);
  }
}

TEST(FindFontForText, AddsFacesOneAfterTheOther) {
  Document document("{\\f0 Nobody Has This;}");
  EXPECT_EQ(Find(document.fonts, kJamo), (Found{StatusOk, 1}));
  EXPECT_EQ(Find(document.fonts, kHan), (Found{StatusOk, 2}));
  EXPECT_EQ(Find(document.fonts, u"\u3041"), (Found{StatusOk, 1}));
  EXPECT_EQ(Find(document.fonts, u"\uFB13"), (Found{StatusOk, 3}));
  EXPECT_EQ(TableText(document.fonts),
            "\\fonttbl{\\f0 Nobody Has This;}{\\f1 \\ \\fcharset0 Batang}"
            "{\\f2 \\ \\fcharset0 MS Gothic}{\\f3 \\ \\fcharset0 Arial}}");
}

TEST(FindFontForText, PassesOverCommonFacesOfTheTable) {
  Document document("{\\f0 GULIM;}{\\f1 arial;}{\\f2 mS gOTHIC;}{\\f3 batang;}{\\f4 SYMBOL;}");
  const GraphicsProbe probe;
  EXPECT_EQ(Find(document.fonts, kNowhere), kNone);
  // Those of the table, and none of the common ones.
  EXPECT_EQ(probe.faceNames(),
            (std::vector<std::u16string>{u"GULIM", u"arial", u"mS gOTHIC", u"batang", u"SYMBOL"}));
}

TEST(FindFontForText, ComparesWholeNamesOfCommonFaces) {
  Document document("{\\f0 Arial Black;}{\\f1 Aria;}{\\f2 XArial;}");
  EXPECT_EQ(Find(document.fonts, u"\uFB13"), (Found{StatusOk, 3}));
  EXPECT_EQ(Show(document.fonts), "0:0:0:Arial Black|1:0:0:Aria|2:0:0:XArial|3:0:0:Arial");
}

TEST(FindFontForText, TriesSixCommonFacesAndSymbolTwice) {
  Document document("{\\f0 Nobody Has This;}");
  const GraphicsProbe probe;
  EXPECT_EQ(Find(document.fonts, kNowhere), kNone);
  EXPECT_EQ(probe.faceNames(),
            (std::vector<std::u16string>{u"Nobody Has This", u"Arial", u"Symbol", u"MS Gothic",
                                         u"Batang", u"Gulim", u"Symbol"}));
  EXPECT_EQ(document.table().count(), 1u);
  EXPECT_EQ(document.table().changed, 0u);
}

TEST(FindFontForText, StartsATableInADocumentWithoutOne) {
  RtfFonts fonts;
  ASSERT_EQ(Prepare(fonts, "{\\rtf1\\fromtext \\pard x}"), StatusOk);
  EXPECT_EQ(Find(fonts, kOgham), (Found{StatusOk, 0}));
  EXPECT_EQ(TableText(fonts), "\x0Conttbl{\\f0 \\ \\fcharset0 Gulim}}");
}

TEST(FindFontForText, FindsNothingForHalvesOfPairs) {
  Document document("{\\f0 Arial;}");
  EXPECT_EQ(Find(document.fonts, kEmoji), kNone);
}

TEST(FindFontForText, HasNoAnswerWithoutAText) {
  Document document("{\\f0 Arial;}");
  uint32_t number = kUntouched;
  EXPECT_EQ(FindFontForText(document.fonts, nullptr, 1, number), StatusFailed);
  EXPECT_EQ(number, kUntouched);
}

TEST(FindFontForText, FailsWithoutMemoryAndRecovers) {
  const std::string_view fonts = "{\\f0 Nobody Has This;}{\\f1 Same Letters;}";
  const std::string extended = "0:0:0:Nobody Has This|1:0:0:Same Letters|2:0:0:Gulim";
  int failures = 0;
  const auto round = [&](test::FaultedWork& faulted) {
    Document document{std::string(fonts)};
    const Found found = faulted([&] { return Find(document.fonts, kOgham); });
    if (!faulted.isReached()) {
      EXPECT_EQ(found.result, StatusOk);
    }
    // What comes last only remembers the answer.
    if (found.result.ok()) {
      EXPECT_EQ(found, (Found{StatusOk, 2}));
      EXPECT_EQ(Show(document.fonts), extended);
      return;
    }
    ++failures;
    EXPECT_EQ(found, kNoMemory);
    EXPECT_EQ(Show(document.fonts), "0:0:0:Nobody Has This|1:0:0:Same Letters");
    EXPECT_EQ(TableText(document.fonts), "\\fonttbl" + std::string(fonts) + "}");
    EXPECT_EQ(document.table().changed, 0u);
    // What memory hid is not remembered as an answer.
    EXPECT_EQ(Find(document.fonts, kOgham), (Found{StatusOk, 2}));
  };
  test::SweepFaults(PlainKernelFaultMemory, round);
  // The tests of seven faces, and the name and the entry of what is added; the text has room.
  EXPECT_EQ(failures, 9);
}

// A font is not passed over for want of memory: another one would look like the document's own.
TEST(FindFontForText, TakesNoOtherFontWhenMemoryHidesOne) {
  Document document("{\\f5 Sylfaen;}");
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_EQ(Find(document.fonts, kArmenian), kNoMemory);
  EXPECT_EQ(Show(document.fonts), "5:0:0:Sylfaen");
  EXPECT_EQ(Find(document.fonts, kArmenian), (Found{StatusOk, 5}));
}

TEST(FindFontForText, HasNoAnswerWithoutAContext) {
  Document document("{\\f0 Sylfaen;}");
  GraphicsProbe probe;
  probe.refusesContexts = true;
  EXPECT_EQ(Find(document.fonts, kArmenian), kNone);
  EXPECT_TRUE(probe.fonts.empty());
  EXPECT_EQ(document.fonts.coverageWork(), 0u);
  probe.refusesContexts = false;
  EXPECT_EQ(Find(document.fonts, kArmenian), (Found{StatusOk, 0}));
}

TEST(FindFontForText, PassesOverAFontThatCannotBeMade) {
  Document document("{\\f0 Sylfaen;}{\\f1 Arial;}");
  GraphicsProbe probe;
  probe.refusedFont = 1;
  EXPECT_EQ(Find(document.fonts, kArmenian), (Found{StatusOk, 1}));
  // What was hidden is not remembered.
  EXPECT_EQ(Find(document.fonts, kArmenian), (Found{StatusOk, 0}));
  EXPECT_EQ(probe.contexts, 2u);
}

TEST(FindFontForText, RemembersItsAnswers) {
  Document document("{\\f0 Sylfaen;}");
  EXPECT_EQ(Find(document.fonts, kArmenian), (Found{StatusOk, 0}));
  EXPECT_EQ(Find(document.fonts, kEmoji), kNone);
  const uint64_t before = AllocationCalls();
  EXPECT_EQ(Find(document.fonts, kArmenian), (Found{StatusOk, 0}));
  EXPECT_EQ(Find(document.fonts, kEmoji), kNone);
  EXPECT_EQ(Find(document.fonts, kEmoji), kNone);
  EXPECT_EQ(AllocationCalls(), before);
  // Another text, if only by a unit, is asked for.
  EXPECT_EQ(Find(document.fonts, u"\u0531\u0531"), (Found{StatusOk, 0}));
  EXPECT_EQ(AllocationCalls(), before + 1);
}

TEST(FindFontForText, AsksWhatWasAddedToTheTable) {
  Document document("{\\f0 Arial;}");
  EXPECT_EQ(Find(document.fonts, kGeorgian), kNone);
  ASSERT_EQ(Add(document.fonts, "Sylfaen", "nil", 0, 0), 1);
  EXPECT_EQ(Find(document.fonts, kGeorgian), (Found{StatusOk, 1}));
}

TEST(FindFontForText, ForgetsItsAnswersWithTheTable) {
  RtfFonts fonts;
  ASSERT_EQ(Prepare(fonts, "{\\fonttbl{\\f0 Arial;}}"), StatusOk);
  EXPECT_EQ(Find(fonts, kGeorgian), kNone);
  fonts.release();
  std::string_view text = "{\\f9 Sylfaen;}}";
  ASSERT_EQ(fonts.readTable(text), StatusOk);
  EXPECT_EQ(Find(fonts, kGeorgian), (Found{StatusOk, 9}));
}

TEST(FindFontForText, RemembersNothingOfTheCallersNumber) {
  Document document("{\\f0 Arial;}");
  uint32_t number = 1;
  EXPECT_EQ(FindFontForText(document.fonts, kGeorgian.data(), 1, number), StatusFailed);
  number = 2;
  EXPECT_EQ(FindFontForText(document.fonts, kGeorgian.data(), 1, number), StatusFailed);
  EXPECT_EQ(number, 2u);
}

TEST(FindFontForText, AsksAgainForLongCharacters) {
  Document document("{\\f0 Sylfaen;}");
  // The second ends with a unit that is its length.
  for (const std::u16string_view text : {u"\u0531aaaa", u"\u1400aaa\u0005"}) {
    Find(document.fonts, text);
    const uint64_t before = AllocationCalls();
    Find(document.fonts, text);
    EXPECT_GT(AllocationCalls(), before);
  }
}

TEST(FindFontForText, FindsNothingMissingInAnEmptyText) {
  Document document("{\\f3}{\\f4 Sylfaen;}");
  EXPECT_EQ(Find(document.fonts, u""), (Found{StatusOk, 4}));
}

}  // namespace
}  // namespace tarn::test
