#include "rtf/RtfFonts.h"

#include <gtest/gtest.h>

#include <string>

#include "Tarnbase/PlainKernel.h"
#include "rtf/FontTables.h"
#include "support/FaultSweep.h"

namespace tarn {
namespace {

using test::Add;
using test::Prepare;
using test::Show;
using test::TableText;

constexpr std::string_view kDocument =
    "{\\rtf1\\ansi\\ansicpg1251\\deff3{\\fonttbl{\\f3\\fcharset204 Arial;}{\\f9 "
    "B;}}\\pard x\\par}";

// The result of FontForCodePage, or the number of the font.
int64_t Font(RtfFonts& fonts, uint32_t codePage) {
  uint32_t number = 77777;
  const Status status = FontForCodePage(fonts, codePage, number);
  return status.ok() ? int64_t{number} : int64_t{status.code()};
}

TEST(PrepareRtfFontTable, ReadsADocument) {
  RtfFonts fonts;
  EXPECT_EQ(Prepare(fonts, kDocument), StatusOk);
  EXPECT_EQ(fonts.table().ansiCodePage, 1251u);
  EXPECT_EQ(fonts.table().defaultFont, 3u);
  EXPECT_EQ(fonts.table().parsed, 1u);
  EXPECT_EQ(fonts.table().changed, 0u);
  EXPECT_EQ(fonts.table().nextNumber, 10u);
  EXPECT_EQ(fonts.table().tableStart, 30u);
  EXPECT_EQ(fonts.table().tableEnd, 71u);
  EXPECT_EQ(TableText(fonts), "\\fonttbl{\\f3\\fcharset204 Arial;}{\\f9 B;}}");
  EXPECT_EQ(Show(fonts), "3:1251:0:Arial|9:0:0:B");
}

TEST(PrepareRtfFontTable, AFreshTable) {
  const RtfFonts fonts{};
  EXPECT_EQ(fonts.table().entries.data(), nullptr);
  EXPECT_EQ(fonts.table().count(), 0u);
  EXPECT_EQ(fonts.table().parsed, 0u);
  EXPECT_EQ(fonts.table().defaultFont, 0u);
  EXPECT_EQ(fonts.table().changed, 0u);
  EXPECT_EQ(fonts.table().nextNumber, 0xFFFFFFFFu);
}

TEST(PrepareRtfFontTable, ReadsOnlyOnce) {
  RtfFonts fonts;
  EXPECT_EQ(Prepare(fonts, kDocument), StatusOk);
  EXPECT_EQ(Prepare(fonts, "no RTF at all"), StatusOk);
  EXPECT_EQ(Prepare(fonts, kDocument), StatusOk);
  EXPECT_EQ(Show(fonts), "3:1251:0:Arial|9:0:0:B");
}

// A table that was added to a document without one is not taken for that of the next.
TEST(PrepareRtfFontTable, ASecondDocumentBringsItsOwnText) {
  RtfFonts fonts;
  EXPECT_EQ(Prepare(fonts, "{\\rtf1\\fromtext x}"), StatusOk);
  EXPECT_EQ(Add(fonts, "Symbol", "nil", 42, 2), 0);
  EXPECT_EQ(TableText(fonts), "\x0Conttbl{\\f0 \\nil \\fcharset2 Symbol}}");
  EXPECT_EQ(Prepare(fonts, kDocument), StatusOk);
  EXPECT_EQ(TableText(fonts), "\\fonttbl{\\f3\\fcharset204 Arial;}{\\f9 B;}}");
  EXPECT_EQ(Show(fonts), "0:42:2:Symbol|3:1251:0:Arial|9:0:0:B");
  EXPECT_EQ(fonts.table().nextNumber, 10u);
}

// From 8,000,000 bytes on the host is asked.
TEST(PrepareRtfFontTable, ARefusedBudgetIsTheResult) {
  const std::string document = "{\\fonttbl{\\f1 A;}" + std::string(8'000'000, ' ') + "}";
  PlainKernelSetMemoryBudget(1000);
  RtfFonts fonts;
  EXPECT_EQ(Prepare(fonts, document), StatusOutOfMemory);
  EXPECT_EQ(fonts.table().parsed, 0u);
  PlainKernelSetMemoryBudget(UINT64_MAX);
}

TEST(PrepareRtfFontTable, WhatADocumentDoesNotSayStays) {
  RtfFonts fonts;
  fonts.setAnsiCodePage(1250);
  EXPECT_EQ(Prepare(fonts, "\\from\\deff8"), StatusOk);
  EXPECT_EQ(Prepare(fonts, "{\\rtf1{\\fonttbl{\\f1 A;}}}"), StatusOk);
  EXPECT_EQ(fonts.table().ansiCodePage, 1250u);
  EXPECT_EQ(fonts.table().defaultFont, 8u);
}

TEST(PrepareRtfFontTable, WordsAreFoundAnywhereAndTheFirstCounts) {
  RtfFonts fonts;
  EXPECT_EQ(Prepare(fonts, "\\fonttbl{\\f1 A;}}{\\deff7\\ansicpg932 \\deff8\\ansicpg949"),
            StatusOk);
  EXPECT_EQ(fonts.table().ansiCodePage, 932u);
  EXPECT_EQ(fonts.table().defaultFont, 7u);
  EXPECT_EQ(fonts.table().tableStart, 0u);
  EXPECT_EQ(fonts.table().tableEnd, 17u);
}

TEST(PrepareRtfFontTable, AWordWithoutDigitsIsZero) {
  RtfFonts fonts;
  fonts.setAnsiCodePage(1250);
  EXPECT_EQ(Prepare(fonts, "\\ansicpg\\deff-1\\fonttbl}"), StatusOk);
  EXPECT_EQ(fonts.table().ansiCodePage, 0u);
  EXPECT_EQ(fonts.table().defaultFont, 0u);
}

TEST(PrepareRtfFontTable, NumbersWrapIn32Bits) {
  RtfFonts fonts;
  EXPECT_EQ(Prepare(fonts, "\\deff4294967295\\ansicpg4294968548\\fonttbl{\\f4294967295 A}}"),
            StatusOk);
  EXPECT_EQ(fonts.table().defaultFont, 0xFFFFFFFFu);
  EXPECT_EQ(fonts.table().ansiCodePage, 1252u);
  EXPECT_EQ(fonts.table().nextNumber, 0u);
}

TEST(PrepareRtfFontTable, AnEmptyTableStartsAtZero) {
  RtfFonts fonts;
  EXPECT_EQ(Prepare(fonts, "{\\fonttbl}"), StatusOk);
  EXPECT_EQ(fonts.table().nextNumber, 0u);
  EXPECT_EQ(fonts.table().parsed, 1u);
  EXPECT_EQ(TableText(fonts), "\\fonttbl}");
}

TEST(PrepareRtfFontTable, TheLastFontGivesTheNextNumberNotTheHighest) {
  RtfFonts fonts;
  EXPECT_EQ(Prepare(fonts, "{\\fonttbl{\\f90 A}{\\f4 B}}"), StatusOk);
  EXPECT_EQ(fonts.table().nextNumber, 5u);
}

TEST(PrepareRtfFontTable, AFontWithoutANumberIsFollowedByZero) {
  RtfFonts fonts;
  EXPECT_EQ(Prepare(fonts, "{\\fonttbl{\\f90 A}{B}}"), StatusOk);
  EXPECT_EQ(fonts.table().nextNumber, 0u);
}

TEST(PrepareRtfFontTable, AnUnclosedTableReachesToTheEnd) {
  RtfFonts fonts;
  EXPECT_EQ(Prepare(fonts, "{\\fonttbl{\\f1 A;}x"), StatusOk);
  EXPECT_EQ(fonts.table().tableStart, 1u);
  EXPECT_EQ(fonts.table().tableEnd, 18u);
  EXPECT_EQ(TableText(fonts), "\\fonttbl{\\f1 A;}x");
}

TEST(PrepareRtfFontTable, WithoutATableThereIsAnInsertionPoint) {
  RtfFonts fonts;
  EXPECT_EQ(Prepare(fonts, "{\\rtf1\\ansicpg1250\\deff2\\fromtext \\fromhtml"), StatusOk);
  EXPECT_EQ(fonts.table().parsed, 0u);
  EXPECT_EQ(fonts.table().nextNumber, 0u);
  EXPECT_EQ(fonts.table().tableStart, 24u);
  EXPECT_EQ(fonts.table().tableEnd, 24u);
  EXPECT_EQ(fonts.table().ansiCodePage, 1250u);
  EXPECT_EQ(fonts.table().defaultFont, 2u);
  EXPECT_EQ(TableText(fonts), "");
}

TEST(PrepareRtfFontTable, WithoutEitherItFails) {
  RtfFonts fonts;
  EXPECT_EQ(Prepare(fonts, "{\\rtf1\\ansicpg1250 \\Fonttbl \\FROM}"), StatusNotSupported);
  EXPECT_EQ(Prepare(fonts, ""), StatusNotSupported);
  EXPECT_EQ(PrepareRtfFontTable(fonts, nullptr, 0), StatusNotSupported);
  EXPECT_EQ(fonts.table().parsed, 0u);
}

TEST(PrepareRtfFontTable, AFailingParserIsTheResult) {
  RtfFonts fonts;
  EXPECT_EQ(Prepare(fonts, "{\\fonttbl{\\f1 A;\\"), StatusNotSupported);
  EXPECT_EQ(fonts.table().parsed, 0u);
  EXPECT_EQ(TableText(fonts), "");
}

TEST(PrepareRtfFontTable, TheWholeLengthIsSearched) {
  RtfFonts fonts;
  EXPECT_EQ(Prepare(fonts, std::string_view("\\deff5\0{\\fonttbl{\\f1 A}}\0\\ansicpg949", 37)),
            StatusOk);
  EXPECT_EQ(fonts.table().ansiCodePage, 949u);
  EXPECT_EQ(fonts.table().tableStart, 8u);
}

TEST(PrepareRtfFontTable, WithoutMemoryItFails) {
  const auto round = [](test::FaultedWork& faulted) {
    RtfFonts fonts;
    const Status status = faulted([&] { return Prepare(fonts, "{\\fonttbl{\\f1 A;}}"); });
    EXPECT_EQ(status, faulted.isReached() ? StatusOutOfMemory : StatusOk);
    if (faulted.isReached()) {
      EXPECT_EQ(fonts.table().parsed, 0u);
    }
  };
  // One name, one entry, and the copy of the text.
  EXPECT_EQ(test::SweepFaults(PlainKernelFaultMemory, round, test::FaultKinds::OneAndFrom), 3u);
}

TEST(FontForCodePage, TheFirstEntryOfTheCodePage) {
  RtfFonts fonts;
  EXPECT_EQ(Prepare(fonts,
                    "\\ansicpg1252{\\fonttbl{\\f4\\fcharset204 A}{\\f5\\fcharset161 B}{\\f6"
                    "\\fcharset161 C}}"),
            StatusOk);
  EXPECT_EQ(Font(fonts, 1253), 5);
  EXPECT_EQ(Font(fonts, 1251), 4);
  EXPECT_EQ(Font(fonts, 1253), 5);
  EXPECT_EQ(fonts.table().changed, 0u);
}

TEST(FontForCodePage, AnEntryWithoutACodePageHasTheDocuments) {
  RtfFonts fonts;
  EXPECT_EQ(
      Prepare(fonts, "\\ansicpg1250{\\fonttbl{\\f4 A}{\\f5\\fcharset238 B}{\\f6\\fcharset204 C}}"),
      StatusOk);
  EXPECT_EQ(Font(fonts, 1250), 4);
  EXPECT_EQ(Font(fonts, 1251), 6);
}

TEST(FontForCodePage, TheDocumentsCodePageMayChange) {
  RtfFonts fonts;
  EXPECT_EQ(Prepare(fonts, "\\ansicpg1252{\\fonttbl{\\f1 A}{\\f2\\fcharset161 B}}"), StatusOk);
  for (int i = 0; i < 2; ++i) {
    fonts.setAnsiCodePage(1252);
    EXPECT_EQ(Font(fonts, 1253), 2);
    fonts.setAnsiCodePage(1253);
    EXPECT_EQ(Font(fonts, 1253), 1);
  }
}

TEST(FontForCodePage, ACodePageWithoutACharsetFails) {
  RtfFonts fonts;
  EXPECT_EQ(Prepare(fonts, "\\ansicpg65001{\\fonttbl}"), StatusOk);
  EXPECT_EQ(Font(fonts, 65001), StatusBadArgument);
  EXPECT_EQ(Font(fonts, 20866), StatusBadArgument);
  EXPECT_EQ(fonts.table().changed, 0u);
  EXPECT_EQ(TableText(fonts), "\\fonttbl}");
}

TEST(FontForCodePage, AForeignCodePageOfAnEntryIsFound) {
  RtfFonts fonts;
  EXPECT_EQ(Prepare(fonts, "\\ansicpg1252{\\fonttbl{\\f4\\fcpg20866 A}}"), StatusOk);
  EXPECT_EQ(Font(fonts, 20866), 4);
}

TEST(FontForCodePage, AFontIsAddedForEachCodePage) {
  struct Case {
    uint32_t codePage, charset;
    const char* font;
  };
  const Case cases[] = {
      {1252, 0, "\\swiss \\fcharset0 Arial"},        {0, 1, "\\swiss \\fcharset1 Batang"},
      {42, 2, "\\nil \\fcharset2 Symbol"},           {10000, 77, "\\swiss \\fcharset77 Batang"},
      {10001, 78, "\\swiss \\fcharset78 Batang"},    {10003, 79, "\\swiss \\fcharset79 Batang"},
      {10008, 80, "\\swiss \\fcharset80 Batang"},    {10002, 81, "\\swiss \\fcharset81 Batang"},
      {1361, 82, "\\swiss \\fcharset82 Batang"},     {10005, 83, "\\swiss \\fcharset83 Batang"},
      {10004, 84, "\\swiss \\fcharset84 Batang"},    {10006, 85, "\\swiss \\fcharset85 Batang"},
      {10081, 86, "\\swiss \\fcharset86 Batang"},    {10021, 87, "\\swiss \\fcharset87 Batang"},
      {10029, 88, "\\swiss \\fcharset88 Batang"},    {10007, 89, "\\swiss \\fcharset89 Batang"},
      {932, 128, "\\swiss \\fcharset128 MS Gothic"}, {949, 129, "\\swiss \\fcharset129 Batang"},
      {936, 134, "\\swiss \\fcharset134 Batang"},    {950, 136, "\\swiss \\fcharset136 Batang"},
      {1253, 161, "\\swiss \\fcharset161 Batang"},   {1254, 162, "\\swiss \\fcharset162 Batang"},
      {1258, 163, "\\swiss \\fcharset163 Batang"},   {1255, 177, "\\swiss \\fcharset177 Batang"},
      {1256, 178, "\\swiss \\fcharset178 Arial"},    {1257, 186, "\\swiss \\fcharset186 Batang"},
      {1251, 204, "\\swiss \\fcharset204 Arial"},    {874, 222, "\\swiss \\fcharset222 Batang"},
      {1250, 238, "\\swiss \\fcharset238 Arial"},    {437, 254, "\\swiss \\fcharset254 Batang"},
      {850, 255, "\\swiss \\fcharset255 Batang"},
  };
  for (const Case& row : cases) {
    RtfFonts fonts;
    EXPECT_EQ(Prepare(fonts, "{\\fonttbl{\\f6\\fcpg1 A;}}"), StatusOk);
    EXPECT_EQ(Font(fonts, row.codePage), 7) << row.codePage;
    EXPECT_EQ(TableText(fonts), "\\fonttbl{\\f6\\fcpg1 A;}{\\f7 " + std::string(row.font) + "}}");
    ASSERT_EQ(fonts.table().count(), 2u);
    EXPECT_EQ(fonts.table().entries[1].charset, row.charset);
    EXPECT_EQ(fonts.table().entries[1].codePage, row.codePage);
    EXPECT_EQ(Font(fonts, row.codePage), 7) << row.codePage;
    EXPECT_EQ(fonts.table().count(), 2u);
  }
}

TEST(FontForCodePage, ManyCodePagesAreAllFoundAgain) {
  RtfFonts fonts;
  std::string document = "\\ansicpg1{\\fonttbl";
  for (int i = 0; i < 100; ++i) {
    document += "{\\f" + std::to_string(i) + "\\fcpg" + std::to_string(2000 + i) + "}";
  }
  EXPECT_EQ(Prepare(fonts, document + "}"), StatusOk);
  for (int round = 0; round < 2; ++round) {
    for (uint32_t i = 0; i < 100; ++i) EXPECT_EQ(Font(fonts, 2000 + i), i);
  }
}

TEST(AddRtfFont, TheGroupGoesBeforeTheLastByte) {
  RtfFonts fonts;
  EXPECT_EQ(Prepare(fonts, kDocument), StatusOk);
  EXPECT_EQ(Add(fonts, "MS Gothic", "swiss", 932, 128), 10);
  EXPECT_EQ(Add(fonts, "Gulim", "", 0, 0), 11);
  EXPECT_EQ(TableText(fonts),
            "\\fonttbl{\\f3\\fcharset204 Arial;}{\\f9 B;}"
            "{\\f10 \\swiss \\fcharset128 MS Gothic}{\\f11 \\ \\fcharset0 Gulim}}");
  EXPECT_EQ(Show(fonts), "3:1251:0:Arial|9:0:0:B|10:932:128:MS Gothic|11:0:0:Gulim");
  EXPECT_EQ(fonts.table().nextNumber, 12u);
  EXPECT_EQ(fonts.table().changed, 1u);
}

TEST(AddRtfFont, ADocumentWithoutATableGetsOneThatBeginsWithAFormFeed) {
  RtfFonts fonts;
  EXPECT_EQ(Prepare(fonts, "{\\rtf1\\fromtext x}"), StatusOk);
  EXPECT_EQ(Add(fonts, "Arial", "swiss", 1252, 0), 0);
  EXPECT_EQ(TableText(fonts), "\x0Conttbl{\\f0 \\swiss \\fcharset0 Arial}}");
  EXPECT_EQ(Add(fonts, "Symbol", "nil", 42, 2), 1);
  EXPECT_EQ(TableText(fonts),
            "\x0Conttbl{\\f0 \\swiss \\fcharset0 Arial}{\\f1 \\nil \\fcharset2 Symbol}}");
}

TEST(AddRtfFont, TheLastByteOfAnUnclosedTableIsWhateverItIs) {
  RtfFonts fonts;
  EXPECT_EQ(Prepare(fonts, "{\\fonttbl{\\f1 A;}xy"), StatusOk);
  EXPECT_EQ(Add(fonts, "B", "nil", 42, 2), 2);
  EXPECT_EQ(TableText(fonts), "\\fonttbl{\\f1 A;}x{\\f2 \\nil \\fcharset2 B}y");
}

TEST(AddRtfFont, NumbersAreSignedInTheText) {
  RtfFonts fonts;
  EXPECT_EQ(Add(fonts, "A", "nil", 5, 0x80000000), 0xFFFFFFFF);
  EXPECT_EQ(TableText(fonts), "\x0Conttbl{\\f-1 \\nil \\fcharset-2147483648 A}}");
  EXPECT_EQ(fonts.table().nextNumber, 0u);
}

TEST(AddRtfFont, AGroupThatDoesNotFitIsCutBeforeItsBrace) {
  const std::string longest(75, 'x');  // "{\f0 \swiss \fcharset0 " is 23 bytes, the brace one
  for (const char* const more : {"", "y", "yz", "yyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyy"}) {
    RtfFonts fonts;
    EXPECT_EQ(Prepare(fonts, "{\\fonttbl}"), StatusOk);
    const std::string name = longest + more;
    EXPECT_EQ(Add(fonts, name.c_str(), "swiss", 1252, 0), 0);
    EXPECT_EQ(TableText(fonts), "\\fonttbl{\\f0 \\swiss \\fcharset0 " + longest + "}}");
    EXPECT_EQ(fonts.table().entries[0].name, name);
  }
}

TEST(AddRtfFont, TheNameIsACopy) {
  RtfFonts fonts;
  std::string name = "Arial";
  Add(fonts, name.c_str(), "swiss", 1252, 0);
  name = "other";
  EXPECT_STREQ(fonts.table().entries[0].name, "Arial");
}

TEST(AddRtfFont, WithoutMemoryTheTableIsAsItWas) {
  for (const char* const document : {"\\from", "{\\fonttbl{\\f3 A;}}"}) {
    const auto round = [document](test::FaultedWork& faulted) {
      RtfFonts fonts;
      ASSERT_EQ(Prepare(fonts, document), StatusOk);
      const std::string entries = Show(fonts);
      const std::string text = TableText(fonts);
      const uint32_t next = fonts.table().nextNumber;
      const int64_t result = faulted([&] { return Add(fonts, "Arial", "swiss", 1252, 0); });
      if (!faulted.isReached()) {
        EXPECT_EQ(result, next);
        return;
      }
      EXPECT_EQ(result, StatusOutOfMemory);
      EXPECT_EQ(Show(fonts), entries);
      EXPECT_EQ(TableText(fonts), text);
      EXPECT_EQ(fonts.table().nextNumber, next);
      EXPECT_EQ(fonts.table().changed, 0u);
      EXPECT_EQ(Add(fonts, "Arial", "swiss", 1252, 0), next);
    };
    // The name, the entries, and the text where it has no room yet.
    EXPECT_EQ(test::SweepFaults(PlainKernelFaultMemory, round, test::FaultKinds::OneAndFrom),
              document[1] == 'f' ? 3u : 2u);
  }
}

TEST(AddRtfFont, ARefusedBudgetKeepsTheText) {
  RtfFonts fonts;
  EXPECT_EQ(Prepare(fonts, "{\\fonttbl{\\f3 A;}" + std::string(8'000'100, ' ') + "}"), StatusOk);
  // Text without room for a group of 30 bytes, at the size from which the host is asked.
  const TrackedBuffer<char>& text = fonts.table().tableText;
  const uint64_t full = text.capacity();
  while (full - text.length() >= 30) ASSERT_GT(Add(fonts, "Arial", "swiss", 1252, 0), 0);
  const std::string before = TableText(fonts);
  const std::string entries = Show(fonts);
  PlainKernelSetMemoryBudget(text.meter().current + 10);
  EXPECT_EQ(Add(fonts, "Arial", "swiss", 1252, 0), StatusOutOfMemory);
  EXPECT_TRUE(TableText(fonts) == before);
  EXPECT_EQ(text.meter().current, full);
  EXPECT_EQ(Show(fonts), entries);
  PlainKernelSetMemoryBudget(UINT64_MAX);
  PlainKernelFailAt(PlainKernelFaultMemory, 2);  // the entry has its room already
  EXPECT_EQ(Add(fonts, "Arial", "swiss", 1252, 0), StatusOutOfMemory);
  EXPECT_EQ(text.meter().current, full);
  const std::string next = std::to_string(fonts.table().nextNumber);
  EXPECT_EQ(std::to_string(Add(fonts, "Arial", "swiss", 1252, 0)), next);
  EXPECT_EQ(TableText(fonts).substr(before.size() - 1),
            "{\\f" + next + " \\swiss \\fcharset0 Arial}}");
}

TEST(RtfFontsRelease, FreesNamesAndEntries) {
  RtfFonts fonts;
  EXPECT_EQ(Prepare(fonts, kDocument), StatusOk);
  PlainKernelUsageRecord before = {};
  PlainKernelUsage(&before);
  fonts.release();
  PlainKernelUsageRecord after = {};
  PlainKernelUsage(&after);
  EXPECT_EQ(before.liveBlocks - after.liveBlocks, 3u);
  EXPECT_EQ(fonts.table().entries.data(), nullptr);
  EXPECT_EQ(fonts.table().count(), 0u);
  fonts.release();
}

TEST(RtfFontsRelease, WhatWasFoundIsForgotten) {
  RtfFonts fonts;
  EXPECT_EQ(Prepare(fonts, "\\ansicpg1252{\\fonttbl{\\f4\\fcharset161 A}}"), StatusOk);
  EXPECT_EQ(Font(fonts, 1253), 4);
  fonts.release();
  EXPECT_EQ(Font(fonts, 1253), 5);
}

}  // namespace
}  // namespace tarn
