#include <gtest/gtest.h>

#include <string>

#include "Tarnbase/PlainKernel.h"
#include "rtf/FontTables.h"
#include "support/FaultSweep.h"
#include "support/Texts.h"

namespace tarn {
namespace {

using test::Parsed;
using test::Repeat;
using test::Show;

// The entries of a table that holds these groups.
std::string Fonts(std::string_view groups) {
  const Parsed parsed("\\fonttbl" + std::string(groups) + "}");
  EXPECT_EQ(parsed.status, StatusOk);
  EXPECT_EQ(parsed.taken, static_cast<int64_t>(groups.size()) + 9);
  return Show(parsed.table);
}

// The entries that a scan which runs to the end of the data finds.
std::string Unclosed(std::string_view text) {
  const Parsed parsed(text);
  EXPECT_EQ(parsed.status, StatusOk);
  EXPECT_EQ(parsed.taken, static_cast<int64_t>(text.size()));
  return Show(parsed.table);
}

TEST(RtfFontTableParser, AnUsualTable) {
  const Parsed parsed(
      "\\fonttbl{\\f0\\fswiss\\fcharset0 Arial;}{\\f37\\froman\\fcharset204\\fprq2 Times New "
      "Roman;}}\\pard");
  EXPECT_EQ(parsed.status, StatusOk);
  EXPECT_EQ(parsed.taken, 86);
  EXPECT_EQ(Show(parsed.table), "0:1252:0:Arial|37:1251:0:Times New Roman");
}

TEST(RtfFontTableParser, TheTextMayBeginAfterTheWord) {
  const Parsed parsed("{\\f1 A;}}x");
  EXPECT_EQ(parsed.status, StatusOk);
  EXPECT_EQ(parsed.taken, 9);
  EXPECT_EQ(Show(parsed.table), "1:0:0:A");
}

TEST(RtfFontTableParser, AnEmptyTableEndsAtItsBrace) {
  EXPECT_EQ(Fonts(""), "");
  const Parsed parsed("}{\\f1 A;}");
  EXPECT_EQ(parsed.taken, 1);
  EXPECT_EQ(parsed.table.count(), 0u);
}

TEST(RtfFontTableParser, AGroupWithNothingInItIsAFont) {
  EXPECT_EQ(Fonts("{}"), "-1:0:0:-");
  EXPECT_EQ(Fonts("{\\f3}{}"), "3:0:0:-|-1:0:0:-");
}

TEST(RtfFontTableParser, EachGroupStartsWithoutANumber) {
  EXPECT_EQ(Fonts("{\\f5 A;}{ B;}"), "5:0:0:A|-1:0:0:B");
  EXPECT_EQ(Fonts("\\f7{A;}"), "-1:0:0:A");
}

TEST(RtfFontTableParser, ACodePageBeforeAGroupIsTheGroups) {
  EXPECT_EQ(Fonts("\\fcharset128{\\f1 A;}{\\f2 B;}"), "1:932:0:A|2:0:0:B");
  EXPECT_EQ(Fonts("\\fcpg1250{\\f1 A;}{\\f2 B;}"), "1:1250:0:A|2:0:0:B");
}

TEST(RtfFontTableParser, TheCodePageOfAGroupEndsWithIt) {
  EXPECT_EQ(Fonts("{\\f1\\fcharset128 A;}{\\f2 B;}"), "1:932:0:A|2:0:0:B");
}

TEST(RtfFontTableParser, NumbersEatOneSpace) {
  EXPECT_EQ(Fonts("{\\f12 A}"), "12:0:0:A");
  EXPECT_EQ(Fonts("{\\f12A}"), "12:0:0:A");
  EXPECT_EQ(Fonts("{\\f12\tA}"), "12:0:0:\tA");
  EXPECT_EQ(Fonts("{\\f1\\fcharset161  A}"), "1:1253:0:A");
}

TEST(RtfFontTableParser, NumbersWrapIn32Bits) {
  EXPECT_EQ(Fonts("{\\f4294967298 A}"), "2:0:0:A");
  EXPECT_EQ(Fonts("{\\f4294967295 A}"), "-1:0:0:A");
  EXPECT_EQ(Fonts("{\\f1\\fcharset4294967424 A}"), "1:932:0:A");
}

TEST(RtfFontTableParser, ALaterNumberOfAGroupReplacesTheEarlierOne) {
  EXPECT_EQ(Fonts("{\\f1\\f2 A}"), "2:0:0:A");
  EXPECT_EQ(Fonts("{\\f1{\\f3}A}"), "3:0:0:A");
}

TEST(RtfFontTableParser, ACharsetGivesItsCodePage) {
  EXPECT_EQ(Fonts("{\\f1\\fcharset0 A}"), "1:1252:0:A");
  EXPECT_EQ(Fonts("{\\f1\\fcharset2 A}"), "1:42:0:A");
  EXPECT_EQ(Fonts("{\\f1\\fcharset77 A}"), "1:10000:0:A");
  EXPECT_EQ(Fonts("{\\f1\\fcharset136 A}"), "1:950:0:A");
  EXPECT_EQ(Fonts("{\\f1\\fcharset255 A}"), "1:850:0:A");
}

TEST(RtfFontTableParser, TheDefaultCharsetHasNoCodePage) {
  EXPECT_EQ(Fonts("{\\f1\\fcharset1 A}"), "1:0:0:A");
  EXPECT_EQ(Fonts("{\\f1\\fcharset128\\fcharset1 A}"), "1:0:0:A");
}

TEST(RtfFontTableParser, ACharsetThatIsNotListedChangesNothing) {
  EXPECT_EQ(Fonts("{\\f1\\fcharset3 A}"), "1:0:0:A");
  EXPECT_EQ(Fonts("{\\f1\\fcharset256 A}"), "1:0:0:A");
  EXPECT_EQ(Fonts("{\\f1\\fcharset128\\fcharset3 A}"), "1:932:0:A");
}

TEST(RtfFontTableParser, ACharsetWithoutDigitsIsZero) {
  EXPECT_EQ(Fonts("{\\f1\\fcharset A}"), "1:1252:0:A");
}

TEST(RtfFontTableParser, OnlyTheCodePageWordThatBeginsWithAnFCounts) {
  EXPECT_EQ(Fonts("{\\f1\\fcpg1251 A}"), "1:1251:0:A");
  EXPECT_EQ(Fonts("{\\f1\\cpg1251 A}"), "1:0:0:A");
  EXPECT_EQ(Fonts("{\\f1\\charset128 A}"), "1:0:0:A");
  EXPECT_EQ(Fonts("{\\f1\\fcpg A}"), "1:0:0:A");
}

TEST(RtfFontTableParser, TheLastWordDecidesOnTheCodePage) {
  EXPECT_EQ(Fonts("{\\f1\\fcharset128\\fcpg1251 A}"), "1:1251:0:A");
  EXPECT_EQ(Fonts("{\\f1\\fcpg1251\\fcharset128 A}"), "1:932:0:A");
}

TEST(RtfFontTableParser, WordsAreComparedWithCase) {
  EXPECT_EQ(Fonts("{\\F1\\fCharset128 A}"), "-1:0:0:A");
}

TEST(RtfFontTableParser, OtherWordsAreSkippedToTheNextDelimiter) {
  EXPECT_EQ(Fonts("{\\f1\\fswiss;x\"y A}"), "1:0:0:A");
  EXPECT_EQ(Fonts("{\\f1\\fnil{\\*\\panose 020b}A}"), "1:0:0:A");
  EXPECT_EQ(Fonts("{\\f1\\fnil\nA B}"), "1:0:0:B");
  EXPECT_EQ(Fonts("{\\f1\\fnil}"), "1:0:0:-");
}

TEST(RtfFontTableParser, TheFirstByteOfAWordIsPartOfItWhateverItIs) {
  EXPECT_EQ(Fonts("{\\f1\\{ A}"), "1:0:0:A");
  EXPECT_EQ(Fonts("{\\f1\\} A}"), "1:0:0:A");
  EXPECT_EQ(Fonts("{\\f1\\\\ A}"), "1:0:0:A");
  EXPECT_EQ(Fonts("{\\f1\\ x A}"), "1:0:0:A");
  EXPECT_EQ(Fonts("{\\f1\\'e9t A}"), "1:0:0:A");
}

TEST(RtfFontTableParser, ANameWithoutQuotesEndsAtASemicolon) {
  EXPECT_EQ(Fonts("{\\f1 MS Gothic;}"), "1:0:0:MS Gothic");
  EXPECT_EQ(Fonts("{\\f1 A}"), "1:0:0:A");
  EXPECT_EQ(Fonts("{\\f1 A B \\b}"), "1:0:0:A B ");
  EXPECT_EQ(Fonts("{\\f1 A{x}}"), "1:0:0:A");
}

TEST(RtfFontTableParser, AnyByteMayBeginAName) {
  EXPECT_EQ(Fonts("{\\f1 \xE9;}"), "1:0:0:\xE9");
  EXPECT_EQ(Fonts("{\\f1 \x01;}"), "1:0:0:\x01");
  EXPECT_EQ(Fonts("{\\f1 7;}"), "1:0:0:7");
}

TEST(RtfFontTableParser, WhatIsBetweenNamesBeginsNone) {
  EXPECT_EQ(Fonts("{\\f1 \r\n ;; A;}"), "1:0:0:A");
  EXPECT_EQ(Fonts("{\\f1 A;\r\n; }"), "1:0:0:A");
}

TEST(RtfFontTableParser, LineEndsInsideANameStay) {
  EXPECT_EQ(Fonts("{\\f1 A\r\nB;}"), "1:0:0:A\r\nB");
}

TEST(RtfFontTableParser, ANameInQuotesEndsAtTheQuote) {
  EXPECT_EQ(Fonts("{\\f1 \"A;B\";}"), "1:0:0:A;B");
  EXPECT_EQ(Fonts("{\\f1 \" A \"}"), "1:0:0: A ");
  EXPECT_EQ(Fonts("{\\f1 \"\"}"), "1:0:0:");
}

TEST(RtfFontTableParser, ANameInQuotesEndsAtABackslashOrABraceToo) {
  EXPECT_EQ(Fonts("{\\f1 \"A}{\\f2 B;}"), "1:0:0:A|2:0:0:B");
  EXPECT_EQ(Fonts("{\\f1 \"A\\f3 }"), "3:0:0:A");
  EXPECT_EQ(Fonts("{\\f1 \"A{x}}"), "1:0:0:A");
}

TEST(RtfFontTableParser, AQuoteEndsANameWithoutQuotes) {
  EXPECT_EQ(Fonts("{\\f1 A\"}"), "1:0:0:A");
  EXPECT_EQ(Fonts("{\\f1 A\"B;}"), "1:0:0:B");
}

TEST(RtfFontTableParser, ALaterNameReplacesTheEarlierOne) {
  EXPECT_EQ(Fonts("{\\f1 A;B;}"), "1:0:0:B");
  EXPECT_EQ(Fonts("{\\f1 Long name;\"C\";}"), "1:0:0:C");
  EXPECT_EQ(Fonts("{\\f1 A{\\*\\falt B;}C;}"), "1:0:0:C");
}

TEST(RtfFontTableParser, ANameEndsAtItsFirstNul) {
  EXPECT_EQ(Fonts(std::string_view("{\\f1 A\0B;}", 10)), "1:0:0:A");
}

TEST(RtfFontTableParser, TextOutsideOfAFontsGroupIsNoName) {
  EXPECT_EQ(Fonts("A;\"B\"{\\f1}"), "1:0:0:-");
  EXPECT_EQ(Fonts("{\\f1{A;}}"), "1:0:0:-");
}

TEST(RtfFontTableParser, WordsInInnerGroupsCount) {
  EXPECT_EQ(Fonts("{{\\f4\\fcharset2 x}A;}"), "4:42:0:A");
}

TEST(RtfFontTableParser, FontsOfOneNumberAreSideBySide) {
  EXPECT_EQ(Fonts("{\\f1 A;}{\\f1 B;}"), "1:0:0:A|1:0:0:B");
}

TEST(RtfFontTableParser, TheEntriesComeAfterWhatTheTableHolds) {
  RtfFontTable table;
  for (std::string_view text : {"{\\f1 A;}}", "{\\f2 B;}}"}) {
    EXPECT_EQ(ParseRtfFontTable(table, text), StatusOk);
  }
  EXPECT_EQ(Show(table), "1:0:0:A|2:0:0:B");
}

TEST(RtfFontTableParser, AtTheEndOfTheDataAnUnclosedEntryIsDropped) {
  EXPECT_EQ(Unclosed(""), "");
  EXPECT_EQ(Unclosed("\\fonttbl"), "");
  EXPECT_EQ(Unclosed("\\fonttbl{\\f1 A;}{\\f2 B;"), "1:0:0:A");
  EXPECT_EQ(Unclosed("{\\f1 A;}"), "1:0:0:A");
  EXPECT_EQ(Unclosed("{\\f1 A"), "");
  EXPECT_EQ(Unclosed("{\\f1 \"A"), "");
  EXPECT_EQ(Unclosed("{\\f1 \""), "");
  EXPECT_EQ(Unclosed("{\\f12"), "");
  EXPECT_EQ(Unclosed("{\\fcharset"), "");
  EXPECT_EQ(Unclosed("{\\fcpg"), "");
}

TEST(RtfFontTableParser, AWordThatRunsToTheEndOfTheDataEndsTheTable) {
  EXPECT_EQ(Unclosed("{\\f1 A;}{\\fswiss"), "1:0:0:A");
  EXPECT_EQ(Unclosed("{\\f1 A;}\\ab"), "1:0:0:A");
}

TEST(RtfFontTableParser, ABackslashThatFewerThanTwoBytesFollowFails) {
  for (const char* const text : {"\\", "\\}", "\\x", "{\\f1 A;}\\}", "{\\f1 A;}\\x",
                                 "{\\f1 A;}{\\f2 B;\\", "{\\f1 A;}{\\f2 B;\\f"}) {
    const Parsed parsed(text);
    EXPECT_EQ(parsed.status, StatusNotSupported) << text;
    EXPECT_EQ(parsed.taken, 0) << text;
  }
  EXPECT_EQ(Show(Parsed("{\\f1 A;}{\\f2 B;\\").table), "1:0:0:A");
}

TEST(RtfFontTableParser, TwoBytesAfterTheLastBackslashAreEnough) {
  EXPECT_EQ(Unclosed("\\ab"), "");
  EXPECT_EQ(Unclosed("\\f1"), "");
}

TEST(RtfFontTableParser, EveryCutOfATableIsHandled) {
  const std::string table =
      "\\fonttbl{\\f0\\fswiss\\fcharset0\\fcpg1252 Arial;}{\\f1\\*\\'e9 \"MS Gothic\";}}";
  for (size_t length = 0; length < table.size(); ++length) {
    const Parsed parsed(std::string_view(table).substr(0, length));
    const bool cut =
        length > 0 && (table[length - 1] == '\\' || (length > 1 && table[length - 2] == '\\'));
    EXPECT_EQ(parsed.status, cut ? StatusNotSupported : StatusOk) << length;
    EXPECT_EQ(parsed.taken, cut ? 0 : static_cast<int64_t>(length)) << length;
  }
}

TEST(RtfFontTableParser, WithoutMemoryItFailsAndLeavesTheText) {
  const auto round = [](test::FaultedWork& faulted) {
    const Parsed parsed = faulted([] { return Parsed("{\\f1 A;B;}{}}"); });
    if (!faulted.isReached()) {
      EXPECT_EQ(Show(parsed.table), "1:0:0:B|-1:0:0:-");
      return;
    }
    EXPECT_EQ(parsed.status, StatusOutOfMemory);
    EXPECT_EQ(parsed.taken, 0);
    EXPECT_EQ(Show(parsed.table), faulted.ordinal() == 4 ? "1:0:0:B" : "");
  };
  // Two names, of which the second replaces the first, and two entries.
  EXPECT_EQ(test::SweepFaults(PlainKernelFaultMemory, round, test::FaultKinds::OneAndFrom), 4u);
}

TEST(RtfFontTableParser, TheEntriesGrowByOne) {
  PlainKernelUsageRecord before = {};
  PlainKernelUsage(&before);
  const Parsed parsed("{}{}{}}");
  PlainKernelUsageRecord after = {};
  PlainKernelUsage(&after);
  EXPECT_EQ(after.allocationCalls - before.allocationCalls, 3u);
  EXPECT_EQ(after.liveBlocks - before.liveBlocks, 1u);
  EXPECT_EQ(after.liveBytes - before.liveBytes, 3 * sizeof(RtfFontEntry));
}

TEST(RtfFontTableParser, MoreFontsThanNumbersAreRefused) {
  RtfFontTable table;
  table.entries = test::ZeroEntries(32767);
  std::string_view last = "{}";
  EXPECT_EQ(ParseRtfFontTable(table, last), StatusOk);
  EXPECT_EQ(table.count(), 32768u);
  EXPECT_EQ(last, "");
  std::string_view more = "{}}";
  EXPECT_EQ(ParseRtfFontTable(table, more), StatusOutOfMemory);
  EXPECT_EQ(table.count(), 32768u);
  EXPECT_EQ(more, "{}}");
}

// Whatever is repeated over a megabyte, the scan passes it once: no name is copied twice, and what
// is dropped is gone.
TEST(RtfFontTableParser, HostileTablesTakeOneNameEach) {
  for (const char* const text :
       {"{", "\\f", "\\a", "\\f1", "\\fcharset9", "\"", "\"a", "a;", "a", "{\"", "{a", "{\\"}) {
    const std::string unit = text;
    const size_t count = (1 << 20) / unit.size();
    const std::string table = "{" + Repeat(unit, count) + "   ";
    PlainKernelUsageRecord before = {};
    PlainKernelUsage(&before);
    const Parsed parsed(table);
    PlainKernelUsageRecord after = {};
    PlainKernelUsage(&after);
    EXPECT_EQ(parsed.status, StatusOk) << text;
    EXPECT_EQ(parsed.taken, static_cast<int64_t>(table.size())) << text;
    EXPECT_LE(after.allocationCalls - before.allocationCalls, count) << text;
    EXPECT_EQ(after.liveBlocks, before.liveBlocks) << text;
  }
}

}  // namespace
}  // namespace tarn
