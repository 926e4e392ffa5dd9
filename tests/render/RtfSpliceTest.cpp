#include "render/RtfSplice.h"

#include <gtest/gtest.h>

#include "RenderSupport.h"
#include "support/HeaderRows.h"

namespace tarn {
namespace {

using test::Bytes;
using test::Set;
using test::SetTerminated;
using test::Terminated;

const std::string kSeparator = test::kRtfEmptyParagraph;

// A table that has grown, with its place in the document.
struct GrownTable : RtfFontTable {
  GrownTable(uint64_t start, uint64_t end, std::string_view text) {
    changed = 1;
    tableStart = start;
    tableEnd = end;
    EXPECT_EQ(tableText.append(text.data(), text.size()), StatusOk);
  }
};

std::string Splice(std::string_view body, const RtfFontTable& fonts = RtfFontTable()) {
  SizedBytes text;
  Set(text, body);
  EXPECT_EQ(SpliceRtfBlock(text, fonts, "ROWS"), StatusOk);
  return Bytes(text);
}

TEST(RtfSplice, TheSeparatorByteForByte) {
  EXPECT_EQ(Splice("\\pard"),
            Terminated("ROWS\\pard \\ltrpar\\ql \\li0\\ri0\\widctlpar\\wrapdefault\\aspalpha"
                       "\\aspnum\\faauto\\adjustright\\rin0\\lin0\\itap0 {\\rtlch\\fcs1 \\af1 "
                       "\\ltrch\\fcs0 \\insrsid5716485 \\par }\\pard"));
}

TEST(RtfSplice, InFrontOfTheFirstParagraph) {
  EXPECT_EQ(Splice(R"({\rtf1\pard a\par\pard b})"),
            Terminated(R"({\rtf1ROWS)" + kSeparator + R"(\pard a\par\pard b})"));
}

TEST(RtfSplice, CaseCounts) {
  EXPECT_EQ(Splice(R"({\rtf1\PARD\Pard\pard})"),
            Terminated(R"({\rtf1\PARD\PardROWS)" + kSeparator + R"(\pard})"));
}

TEST(RtfSplice, ANulEndsNoSearch) {
  EXPECT_EQ(Splice(std::string_view("{\0\\pard}\0x", 10)),
            Terminated(std::string("{\0ROWS", 6) + kSeparator + std::string("\\pard}\0x", 8)));
}

TEST(RtfSplice, ATerminatorIsAddedOnlyWhenThereIsNone) {
  EXPECT_EQ(Splice(std::string_view("{\\pard}\0", 8)),
            Terminated("{ROWS" + kSeparator + "\\pard}"));
  EXPECT_EQ(Splice(std::string_view("{\\pard}\0\0", 9)),
            Terminated(Terminated("{ROWS" + kSeparator + "\\pard}")));
}

TEST(RtfSplice, WithoutAParagraphTheBodyStays) {
  for (const std::string_view body :
       {std::string_view("{\\rtf1 text}"), std::string_view("\\par"), std::string_view("\0", 1)}) {
    SizedBytes text;
    Set(text, body);
    const char* const block = text.data();
    EXPECT_EQ(SpliceRtfBlock(text, GrownTable(1, 2, "TABLE"), "ROWS"), StatusOk);
    EXPECT_EQ(text.data(), block);
    EXPECT_EQ(Bytes(text), body);
  }
}

// The table that grew -----------------------------------------------------------------------------

TEST(RtfSpliceTable, ANewTableReplacesTheOldOne) {
  EXPECT_EQ(Splice("ab<old>cd\\pard", GrownTable(2, 7, "[new]")),
            Terminated("ab[new]cdROWS" + kSeparator + "\\pard"));
}

TEST(RtfSpliceTable, AParagraphMayFollowTheTableDirectly) {
  EXPECT_EQ(Splice("ab<old>\\pard", GrownTable(2, 7, "[new]")),
            Terminated("ab[new]ROWS" + kSeparator + "\\pard"));
}

TEST(RtfSpliceTable, ATableIsPutInWhereThereWasNone) {
  EXPECT_EQ(Splice("ab\\from\\pard", GrownTable(2, 2, "[new]")),
            Terminated("ab[new]\\fromROWS" + kSeparator + "\\pard"));
}

TEST(RtfSpliceTable, ATableThatDidNotGrowStays) {
  GrownTable table(2, 7, "[new]");
  table.changed = 0;
  EXPECT_EQ(Splice("ab<old>cd\\pard", table), Terminated("ab<old>cdROWS" + kSeparator + "\\pard"));
  EXPECT_EQ(Splice("ab\\pard<old>", table), Terminated("abROWS" + kSeparator + "\\pard<old>"));
}

// The rest of the old table comes after the block.
TEST(RtfSpliceTable, AParagraphInsideTheTable) {
  EXPECT_EQ(Splice("ab<o\\pard ld>cd", GrownTable(2, 13, "[new]")),
            Terminated("ab[new]ROWS" + kSeparator + "\\pard ld>cd"));
}

// All before the paragraph is lost, and so is the new table.
TEST(RtfSpliceTable, AParagraphInFrontOfTheTable) {
  EXPECT_EQ(Splice("ab\\pard<old>cd", GrownTable(7, 12, "[new]")),
            Terminated("ROWS" + kSeparator + "\\pard<old>cd"));
  EXPECT_EQ(Splice("ab\\pard<old>cd", GrownTable(2, 12, "[new]")),
            Terminated("ROWS" + kSeparator + "\\pard<old>cd"));
}

// Failures ----------------------------------------------------------------------------------------

TEST(RtfSpliceFailure, ABodyOfNoBytes) {
  SizedBytes absent;
  EXPECT_EQ(SpliceRtfBlock(absent, RtfFontTable(), "ROWS"), StatusTimeFailed);
  SizedBytes empty;
  Set(empty, "");
  EXPECT_EQ(SpliceRtfBlock(empty, RtfFontTable(), "ROWS"), StatusTimeFailed);
  EXPECT_EQ(empty.length(), 0u);
}

TEST(RtfSpliceFailure, WithoutMemoryTheBodyStays) {
  SizedBytes body;
  Set(body, "a\\pard");
  const char* const block = body.data();
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_EQ(SpliceRtfBlock(body, RtfFontTable(), "ROWS"), StatusOutOfMemory);
  PlainKernelFailAt(PlainKernelFaultMemory, 0);
  EXPECT_EQ(body.data(), block);
  EXPECT_EQ(Bytes(body), "a\\pard");
}

TEST(RtfSpliceFailure, BeyondTheBudgetTheBodyStays) {
  const std::string document = "a\\pard" + std::string(8000000, 'x');
  SizedBytes body;
  Set(body, document);
  PlainKernelSetMemoryBudget(8000000);
  EXPECT_EQ(SpliceRtfBlock(body, RtfFontTable(), "ROWS"), StatusOutOfMemory);
  EXPECT_EQ(Bytes(body), document);
}

TEST(RtfSplice, TheNewTextIsBudgetedWithAStepOf1024Bytes) {
  constexpr uint64_t kSeparatorSize = 151;
  const std::string document = "a\\pard" + std::string(8000000, 'x');
  const uint64_t budget = document.size() + 4 + kSeparatorSize + 1024;
  SizedBytes body;
  Set(body, document);
  PlainKernelSetMemoryBudget(budget - 1);
  EXPECT_EQ(SpliceRtfBlock(body, RtfFontTable(), "ROWS"), StatusOutOfMemory);
  PlainKernelSetMemoryBudget(budget);
  EXPECT_EQ(SpliceRtfBlock(body, RtfFontTable(), "ROWS"), StatusOk);
}

TEST(RtfSplice, TheNewTextIsOneBlock) {
  SizedBytes body;
  Set(body, "a\\pard" + std::string(100000, 'x'));
  const uint64_t calls = test::AllocationCalls();
  ASSERT_EQ(SpliceRtfBlock(body, RtfFontTable(), "ROWS"), StatusOk);
  EXPECT_EQ(test::AllocationCalls(), calls + 1);
}

// The block of a mail file ------------------------------------------------------------------------

TEST(EmlRtfSplice, TheSeparatorComesAfterTheBlock) {
  SizedBytes body;
  Set(body, "a\\pard b");
  SizedBytes block;
  SetTerminated(block, "BLOCK");
  ASSERT_EQ(SpliceEmlRtf(body, std::move(block)), StatusOk);
  EXPECT_EQ(Bytes(body), Terminated("aBLOCK" + kSeparator + "\\pard b"));
}

TEST(EmlRtfSplice, FailuresTakeTheBlockToo) {
  SizedBytes body;
  SizedBytes block;
  Set(block, "BLOCK");
  EXPECT_EQ(SpliceEmlRtf(body, std::move(block)), StatusTimeFailed);
  Set(body, "a");
  SizedBytes another;
  Set(another, "BLOCK");
  EXPECT_EQ(SpliceEmlRtf(body, std::move(another)), StatusOk);
  EXPECT_EQ(Bytes(body), "a");
}

}  // namespace
}  // namespace tarn
