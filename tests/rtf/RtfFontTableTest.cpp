#include "rtf/RtfFontTable.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "Tarnbase/PlainKernel.h"
#include "rtf/RtfFonts.h"
#include "support/FaultSweep.h"

namespace tarn {
namespace {

using test::Prepare;
using test::Show;
using test::TableText;

constexpr std::string_view kDocument =
    "{\\rtf1\\ansi\\ansicpg1251\\deff3{\\fonttbl{\\f3\\fcharset204 Arial;}{\\f9 "
    "B;}}\\pard x\\par}";

// The result of FontForCodePage, or the number of the font.
int64_t Font(RtfFontTable& table, uint32_t codePage) {
  uint32_t number = 77777;
  const int32_t status = FontForCodePage(table, codePage, number);
  return status == 1 ? int64_t{number} : int64_t{status};
}

int64_t Add(RtfFontTable& table, const char* face, const char* family, uint32_t codePage,
            uint32_t charset) {
  uint32_t number = 77777;
  const int32_t status = AddRtfFont(table, face, family, codePage, charset, number);
  return status == 1 ? int64_t{number} : int64_t{status};
}

TEST(PrepareRtfFontTable, ReadsADocument) {
  RtfFontTable table;
  EXPECT_EQ(Prepare(table, kDocument), 1);
  EXPECT_EQ(table.ansiCodePage, 1251u);
  EXPECT_EQ(table.defaultFont, 3u);
  EXPECT_EQ(table.parsed, 1u);
  EXPECT_EQ(table.changed, 0u);
  EXPECT_EQ(table.nextNumber, 10u);
  EXPECT_EQ(table.tableStart, 30u);
  EXPECT_EQ(table.tableEnd, 71u);
  EXPECT_EQ(TableText(table), "\\fonttbl{\\f3\\fcharset204 Arial;}{\\f9 B;}}");
  EXPECT_EQ(Show(table), "3:1251:0:Arial|9:0:0:B");
}

TEST(PrepareRtfFontTable, AFreshTable) {
  const RtfFontTable table;
  EXPECT_EQ(table.entries, nullptr);
  EXPECT_EQ(table.count, 0);
  EXPECT_EQ(table.parsed, 0u);
  EXPECT_EQ(table.defaultFont, 0u);
  EXPECT_EQ(table.changed, 0u);
  EXPECT_EQ(table.nextNumber, 0xFFFFFFFFu);
}

TEST(PrepareRtfFontTable, ReadsOnlyOnce) {
  RtfFontTable table;
  EXPECT_EQ(Prepare(table, kDocument), 1);
  EXPECT_EQ(Prepare(table, "no RTF at all"), 1);
  EXPECT_EQ(Prepare(table, kDocument), 1);
  EXPECT_EQ(Show(table), "3:1251:0:Arial|9:0:0:B");
}

// A table that was added to a document without one does not stand in for that of the next.
TEST(PrepareRtfFontTable, ASecondDocumentBringsItsOwnText) {
  RtfFontTable table;
  EXPECT_EQ(Prepare(table, "{\\rtf1\\fromtext x}"), 1);
  EXPECT_EQ(Add(table, "Symbol", "nil", 42, 2), 0);
  EXPECT_EQ(TableText(table), "\x0Conttbl{\\f0 \\nil \\fcharset2 Symbol}}");
  EXPECT_EQ(Prepare(table, kDocument), 1);
  EXPECT_EQ(TableText(table), "\\fonttbl{\\f3\\fcharset204 Arial;}{\\f9 B;}}");
  EXPECT_EQ(Show(table), "0:42:2:Symbol|3:1251:0:Arial|9:0:0:B");
  EXPECT_EQ(table.nextNumber, 10u);
}

// From 8,000,000 bytes on the host is asked.
TEST(PrepareRtfFontTable, ARefusedBudgetIsTheResult) {
  const std::string document = "{\\fonttbl{\\f1 A;}" + std::string(8'000'000, ' ') + "}";
  PlainKernelSetMemoryBudget(1000);
  RtfFontTable table;
  EXPECT_EQ(Prepare(table, document), -1);
  EXPECT_EQ(table.parsed, 0u);
  PlainKernelSetMemoryBudget(UINT64_MAX);
}

TEST(PrepareRtfFontTable, WhatADocumentDoesNotSayStays) {
  RtfFontTable table;
  table.ansiCodePage = 1250;
  table.defaultFont = 8;
  EXPECT_EQ(Prepare(table, "{\\rtf1{\\fonttbl{\\f1 A;}}}"), 1);
  EXPECT_EQ(table.ansiCodePage, 1250u);
  EXPECT_EQ(table.defaultFont, 8u);
}

TEST(PrepareRtfFontTable, WordsAreFoundAnywhereAndTheFirstCounts) {
  RtfFontTable table;
  EXPECT_EQ(Prepare(table, "\\fonttbl{\\f1 A;}}{\\deff7\\ansicpg932 \\deff8\\ansicpg949"), 1);
  EXPECT_EQ(table.ansiCodePage, 932u);
  EXPECT_EQ(table.defaultFont, 7u);
  EXPECT_EQ(table.tableStart, 0u);
  EXPECT_EQ(table.tableEnd, 17u);
}

TEST(PrepareRtfFontTable, AWordWithoutDigitsIsZero) {
  RtfFontTable table;
  table.ansiCodePage = 1250;
  EXPECT_EQ(Prepare(table, "\\ansicpg\\deff-1\\fonttbl}"), 1);
  EXPECT_EQ(table.ansiCodePage, 0u);
  EXPECT_EQ(table.defaultFont, 0u);
}

TEST(PrepareRtfFontTable, NumbersWrapIn32Bits) {
  RtfFontTable table;
  EXPECT_EQ(Prepare(table, "\\deff4294967295\\ansicpg4294968548\\fonttbl{\\f4294967295 A}}"), 1);
  EXPECT_EQ(table.defaultFont, 0xFFFFFFFFu);
  EXPECT_EQ(table.ansiCodePage, 1252u);
  EXPECT_EQ(table.nextNumber, 0u);
}

TEST(PrepareRtfFontTable, AnEmptyTableStartsAtZero) {
  RtfFontTable table;
  EXPECT_EQ(Prepare(table, "{\\fonttbl}"), 1);
  EXPECT_EQ(table.nextNumber, 0u);
  EXPECT_EQ(table.parsed, 1u);
  EXPECT_EQ(TableText(table), "\\fonttbl}");
}

TEST(PrepareRtfFontTable, TheLastFontGivesTheNextNumberNotTheHighest) {
  RtfFontTable table;
  EXPECT_EQ(Prepare(table, "{\\fonttbl{\\f90 A}{\\f4 B}}"), 1);
  EXPECT_EQ(table.nextNumber, 5u);
}

TEST(PrepareRtfFontTable, AFontWithoutANumberIsFollowedByZero) {
  RtfFontTable table;
  EXPECT_EQ(Prepare(table, "{\\fonttbl{\\f90 A}{B}}"), 1);
  EXPECT_EQ(table.nextNumber, 0u);
}

TEST(PrepareRtfFontTable, AnUnclosedTableReachesToTheEnd) {
  RtfFontTable table;
  EXPECT_EQ(Prepare(table, "{\\fonttbl{\\f1 A;}x"), 1);
  EXPECT_EQ(table.tableStart, 1u);
  EXPECT_EQ(table.tableEnd, 18u);
  EXPECT_EQ(TableText(table), "\\fonttbl{\\f1 A;}x");
}

TEST(PrepareRtfFontTable, WithoutATableThereIsAnInsertionPoint) {
  RtfFontTable table;
  EXPECT_EQ(Prepare(table, "{\\rtf1\\ansicpg1250\\deff2\\fromtext \\fromhtml"), 1);
  EXPECT_EQ(table.parsed, 0u);
  EXPECT_EQ(table.nextNumber, 0u);
  EXPECT_EQ(table.tableStart, 24u);
  EXPECT_EQ(table.tableEnd, 24u);
  EXPECT_EQ(table.ansiCodePage, 1250u);
  EXPECT_EQ(table.defaultFont, 2u);
  EXPECT_EQ(TableText(table), "");
}

TEST(PrepareRtfFontTable, WithoutEitherItFails) {
  RtfFontTable table;
  EXPECT_EQ(Prepare(table, "{\\rtf1\\ansicpg1250 \\Fonttbl \\FROM}"), -9);
  EXPECT_EQ(Prepare(table, ""), -9);
  EXPECT_EQ(PrepareRtfFontTable(table, nullptr, 0), -9);
  EXPECT_EQ(table.parsed, 0u);
}

TEST(PrepareRtfFontTable, AFailingParserIsTheResult) {
  RtfFontTable table;
  EXPECT_EQ(Prepare(table, "{\\fonttbl{\\f1 A;\\"), -9);
  EXPECT_EQ(table.parsed, 0u);
  EXPECT_EQ(TableText(table), "");
}

TEST(PrepareRtfFontTable, TheWholeLengthIsSearched) {
  RtfFontTable table;
  EXPECT_EQ(Prepare(table, std::string_view("\\deff5\0{\\fonttbl{\\f1 A}}\0\\ansicpg949", 37)), 1);
  EXPECT_EQ(table.ansiCodePage, 949u);
  EXPECT_EQ(table.tableStart, 8u);
}

TEST(PrepareRtfFontTable, WithoutMemoryItFails) {
  const auto round = [](test::FaultedWork& faulted) {
    RtfFontTable table;
    const int32_t status = faulted([&] { return Prepare(table, "{\\fonttbl{\\f1 A;}}"); });
    EXPECT_EQ(status, faulted.isReached() ? -1 : 1);
    if (faulted.isReached()) {
      EXPECT_EQ(table.parsed, 0u);
    }
  };
  // One name, one entry, and the copy of the text.
  EXPECT_EQ(test::SweepFaults(PlainKernelFaultMemory, round, test::FaultKinds::OneAndFrom), 3u);
}

TEST(FontForCodePage, TheFirstEntryOfTheCodePage) {
  RtfFontTable table;
  Prepare(table,
          "\\ansicpg1252{\\fonttbl{\\f4\\fcharset204 A}{\\f5\\fcharset161 B}{\\f6"
          "\\fcharset161 C}}");
  EXPECT_EQ(Font(table, 1253), 5);
  EXPECT_EQ(Font(table, 1251), 4);
  EXPECT_EQ(Font(table, 1253), 5);
  EXPECT_EQ(table.changed, 0u);
}

TEST(FontForCodePage, AnEntryWithoutACodePageHasTheDocuments) {
  RtfFontTable table;
  Prepare(table, "\\ansicpg1250{\\fonttbl{\\f4 A}{\\f5\\fcharset238 B}{\\f6\\fcharset204 C}}");
  EXPECT_EQ(Font(table, 1250), 4);
  EXPECT_EQ(Font(table, 1251), 6);
}

TEST(FontForCodePage, TheDocumentsCodePageMayChange) {
  RtfFontTable table;
  Prepare(table, "\\ansicpg1252{\\fonttbl{\\f1 A}{\\f2\\fcharset161 B}}");
  for (int i = 0; i < 2; ++i) {
    table.ansiCodePage = 1252;
    EXPECT_EQ(Font(table, 1253), 2);
    table.ansiCodePage = 1253;
    EXPECT_EQ(Font(table, 1253), 1);
  }
}

TEST(FontForCodePage, ACodePageWithoutACharsetFails) {
  RtfFontTable table;
  Prepare(table, "\\ansicpg65001{\\fonttbl}");
  EXPECT_EQ(Font(table, 65001), -13);
  EXPECT_EQ(Font(table, 20866), -13);
  EXPECT_EQ(table.changed, 0u);
  EXPECT_EQ(TableText(table), "\\fonttbl}");
}

TEST(FontForCodePage, AForeignCodePageOfAnEntryIsFound) {
  RtfFontTable table;
  Prepare(table, "\\ansicpg1252{\\fonttbl{\\f4\\fcpg20866 A}}");
  EXPECT_EQ(Font(table, 20866), 4);
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
    RtfFontTable table;
    Prepare(table, "{\\fonttbl{\\f6\\fcpg1 A;}}");
    EXPECT_EQ(Font(table, row.codePage), 7) << row.codePage;
    EXPECT_EQ(TableText(table), "\\fonttbl{\\f6\\fcpg1 A;}{\\f7 " + std::string(row.font) + "}}");
    ASSERT_EQ(table.count, 2);
    EXPECT_EQ(table.entries[1].charset, row.charset);
    EXPECT_EQ(table.entries[1].codePage, row.codePage);
    EXPECT_EQ(Font(table, row.codePage), 7) << row.codePage;
    EXPECT_EQ(table.count, 2);
  }
}

TEST(FontForCodePage, ManyCodePagesAreAllFoundAgain) {
  RtfFontTable table;
  std::string document = "\\ansicpg1{\\fonttbl";
  for (int i = 0; i < 100; ++i) {
    document += "{\\f" + std::to_string(i) + "\\fcpg" + std::to_string(2000 + i) + "}";
  }
  Prepare(table, document + "}");
  for (int round = 0; round < 2; ++round) {
    for (uint32_t i = 0; i < 100; ++i) EXPECT_EQ(Font(table, 2000 + i), i);
  }
}

TEST(AddRtfFont, TheGroupGoesInFrontOfTheLastByte) {
  RtfFontTable table;
  Prepare(table, kDocument);
  EXPECT_EQ(Add(table, "MS Gothic", "swiss", 932, 128), 10);
  EXPECT_EQ(Add(table, "Gulim", "", 0, 0), 11);
  EXPECT_EQ(TableText(table),
            "\\fonttbl{\\f3\\fcharset204 Arial;}{\\f9 B;}"
            "{\\f10 \\swiss \\fcharset128 MS Gothic}{\\f11 \\ \\fcharset0 Gulim}}");
  EXPECT_EQ(Show(table), "3:1251:0:Arial|9:0:0:B|10:932:128:MS Gothic|11:0:0:Gulim");
  EXPECT_EQ(table.nextNumber, 12u);
  EXPECT_EQ(table.changed, 1u);
}

TEST(AddRtfFont, ADocumentWithoutATableGetsOneThatBeginsWithAFormFeed) {
  RtfFontTable table;
  Prepare(table, "{\\rtf1\\fromtext x}");
  EXPECT_EQ(Add(table, "Arial", "swiss", 1252, 0), 0);
  EXPECT_EQ(TableText(table), "\x0Conttbl{\\f0 \\swiss \\fcharset0 Arial}}");
  EXPECT_EQ(Add(table, "Symbol", "nil", 42, 2), 1);
  EXPECT_EQ(TableText(table),
            "\x0Conttbl{\\f0 \\swiss \\fcharset0 Arial}{\\f1 \\nil \\fcharset2 Symbol}}");
}

TEST(AddRtfFont, TheLastByteOfAnUnclosedTableIsWhateverItIs) {
  RtfFontTable table;
  Prepare(table, "{\\fonttbl{\\f1 A;}xy");
  EXPECT_EQ(Add(table, "B", "nil", 42, 2), 2);
  EXPECT_EQ(TableText(table), "\\fonttbl{\\f1 A;}x{\\f2 \\nil \\fcharset2 B}y");
}

TEST(AddRtfFont, NumbersAreSignedInTheText) {
  RtfFontTable table;
  EXPECT_EQ(Add(table, "A", "nil", 5, 0x80000000), 0xFFFFFFFF);
  EXPECT_EQ(TableText(table), "\x0Conttbl{\\f-1 \\nil \\fcharset-2147483648 A}}");
  EXPECT_EQ(table.nextNumber, 0u);
}

TEST(AddRtfFont, AGroupThatDoesNotFitIsCutInFrontOfItsBrace) {
  const std::string longest(75, 'x');  // "{\f0 \swiss \fcharset0 " is 23 bytes, the brace one
  for (const char* const more : {"", "y", "yz", "yyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyyy"}) {
    RtfFontTable table;
    Prepare(table, "{\\fonttbl}");
    const std::string name = longest + more;
    EXPECT_EQ(Add(table, name.c_str(), "swiss", 1252, 0), 0);
    EXPECT_EQ(TableText(table), "\\fonttbl{\\f0 \\swiss \\fcharset0 " + longest + "}}");
    EXPECT_EQ(table.entries[0].name, name);
  }
}

TEST(AddRtfFont, TheNameIsACopy) {
  RtfFontTable table;
  std::string name = "Arial";
  Add(table, name.c_str(), "swiss", 1252, 0);
  name = "other";
  EXPECT_STREQ(table.entries[0].name, "Arial");
}

TEST(AddRtfFont, WithoutMemoryTheTableIsAsItWas) {
  for (const char* const document : {"\\from", "{\\fonttbl{\\f3 A;}}"}) {
    const auto round = [document](test::FaultedWork& faulted) {
      RtfFontTable table;
      ASSERT_EQ(Prepare(table, document), 1);
      const std::string entries = Show(table);
      const std::string text = TableText(table);
      const uint32_t next = table.nextNumber;
      const int64_t result = faulted([&] { return Add(table, "Arial", "swiss", 1252, 0); });
      if (!faulted.isReached()) {
        EXPECT_EQ(result, next);
        return;
      }
      EXPECT_EQ(result, -1);
      EXPECT_EQ(Show(table), entries);
      EXPECT_EQ(TableText(table), text);
      EXPECT_EQ(table.nextNumber, next);
      EXPECT_EQ(table.changed, 0u);
      EXPECT_EQ(Add(table, "Arial", "swiss", 1252, 0), next);
    };
    // The name, the entries, and the text where it has no room yet.
    EXPECT_EQ(test::SweepFaults(PlainKernelFaultMemory, round, test::FaultKinds::OneAndFrom),
              document[1] == 'f' ? 3u : 2u);
  }
}

TEST(AddRtfFont, ARefusedBudgetKeepsTheText) {
  RtfFontTable table;
  Prepare(table, "{\\fonttbl{\\f3 A;}}");
  // Text without room for more, at the size from which the host is asked.
  const std::string filler(8'000'100, ' ');
  ASSERT_EQ(table.tableText.append(filler.data(), filler.size()), 1);
  const uint64_t full = table.tableText.capacity();
  ASSERT_NE(table.tableText.reserve(full), nullptr);
  table.tableText.setLength(full);
  table.tableText.data()[full - 1] = '}';
  PlainKernelSetMemoryBudget(table.tableText.meter().current + 10);
  EXPECT_EQ(Add(table, "Arial", "swiss", 1252, 0), -1);
  ASSERT_NE(table.tableText.data(), nullptr);
  EXPECT_EQ(table.tableText.length(), full);
  EXPECT_EQ(TableText(table).substr(0, 20), "\\fonttbl{\\f3 A;}}   ");
  EXPECT_EQ(table.tableText.meter().current, full);
  EXPECT_EQ(Show(table), "3:0:0:A");
  PlainKernelSetMemoryBudget(UINT64_MAX);
  PlainKernelFailAt(PlainKernelFaultMemory, 3);
  EXPECT_EQ(Add(table, "Arial", "swiss", 1252, 0), -1);
  EXPECT_EQ(table.tableText.meter().current, full);
  EXPECT_EQ(Add(table, "Arial", "swiss", 1252, 0), 4);
  EXPECT_EQ(table.tableText.length(), full + 29);
  EXPECT_EQ(TableText(table).substr(full - 1), "{\\f4 \\swiss \\fcharset0 Arial}}");
}

TEST(ReleaseRtfFontTable, FreesNamesAndEntries) {
  RtfFontTable table;
  Prepare(table, kDocument);
  PlainKernelUsageRecord before = {};
  PlainKernelUsage(&before);
  ReleaseRtfFontTable(table);
  PlainKernelUsageRecord after = {};
  PlainKernelUsage(&after);
  EXPECT_EQ(before.liveBlocks - after.liveBlocks, 3u);
  EXPECT_EQ(table.entries, nullptr);
  EXPECT_EQ(table.count, 0);
  ReleaseRtfFontTable(table);
}

TEST(ReleaseRtfFontTable, WhatWasFoundIsForgotten) {
  RtfFontTable table;
  Prepare(table, "\\ansicpg1252{\\fonttbl{\\f4\\fcharset161 A}}");
  EXPECT_EQ(Font(table, 1253), 4);
  ReleaseRtfFontTable(table);
  EXPECT_EQ(Font(table, 1253), 5);
}

}  // namespace
}  // namespace tarn
