#include "rtf/RtfCoverageMemo.h"

#include <gtest/gtest.h>

#include <string>

#include "Tarnbase/PlainKernel.h"

namespace tarn {
namespace {

// "-", or what is known of a text: the font's number, or the entries that were asked in brackets.
std::string Known(const RtfCoverageMemo& memo, std::u16string_view text) {
  const RtfCoverageAnswer* const answer = memo.find(text);
  if (answer == nullptr) return "-";
  return answer->covered ? std::to_string(answer->fontNumber)
                         : "(" + std::to_string(answer->asked) + ")";
}

void Keep(RtfCoverageMemo& memo, std::u16string_view text, uint32_t fontNumber) {
  memo.keep(text, {true, fontNumber, 0});
}

TEST(RtfCoverageMemo, KnowsWhatItWasTold) {
  RtfCoverageMemo memo;
  EXPECT_EQ(Known(memo, u"a"), "-");
  Keep(memo, u"a", 7);
  Keep(memo, u"b", 8);
  memo.keep(u"c", {false, 0, 9});
  EXPECT_EQ(Known(memo, u"a"), "7");
  EXPECT_EQ(Known(memo, u"b"), "8");
  EXPECT_EQ(Known(memo, u"c"), "(9)");
  EXPECT_EQ(Known(memo, u"d"), "-");
}

TEST(RtfCoverageMemo, ALaterAnswerReplacesTheFirst) {
  RtfCoverageMemo memo;
  memo.keep(u"a", {false, 0, 2});
  Keep(memo, u"b", 1);
  Keep(memo, u"a", 5);
  EXPECT_EQ(Known(memo, u"a"), "5");
  EXPECT_EQ(Known(memo, u"b"), "1");
}

TEST(RtfCoverageMemo, EveryUnitCounts) {
  RtfCoverageMemo memo;
  const std::u16string_view texts[] = {u"a",   u"b",   u"aa",   u"ab",   u"ba",   u"aaa",
                                       u"baa", u"aba", u"aaaa", u"baaa", u"abaa", u"aaab"};
  uint32_t number = 0;
  for (const std::u16string_view text : texts) {
    EXPECT_EQ(Known(memo, text), "-");
    Keep(memo, text, number++);
  }
  number = 0;
  for (const std::u16string_view text : texts)
    EXPECT_EQ(Known(memo, text), std::to_string(number++));
}

TEST(RtfCoverageMemo, TextsOfOtherLengthsAreNotKept) {
  RtfCoverageMemo memo;
  Keep(memo, u"aaaa", 1);
  for (const std::u16string_view text :
       {std::u16string_view(), std::u16string_view(u"aaaaa"), std::u16string_view(u"baaaa"),
        std::u16string_view(u"\0", 1), std::u16string_view(u"\0a", 2)}) {
    Keep(memo, text, 2);
    EXPECT_EQ(Known(memo, text), "-");
  }
  EXPECT_EQ(Known(memo, u"aaaa"), "1");
  EXPECT_EQ(Known(memo, u"a"), "-");
  Keep(memo, std::u16string_view(u"a\0", 2), 3);
  EXPECT_EQ(Known(memo, std::u16string_view(u"a\0", 2)), "3");
  EXPECT_EQ(Known(memo, u"a"), "-");
}

TEST(RtfCoverageMemo, ClearedItKnowsNothing) {
  RtfCoverageMemo memo;
  Keep(memo, u"a", 1);
  memo.clear();
  EXPECT_EQ(Known(memo, u"a"), "-");
  Keep(memo, u"b", 2);
  EXPECT_EQ(Known(memo, u"a"), "-");
  EXPECT_EQ(Known(memo, u"b"), "2");
}

TEST(RtfCoverageMemo, TakesNoBlockBeforeTheFirstAnswer) {
  PlainKernelUsageRecord before = {};
  PlainKernelUsage(&before);
  RtfCoverageMemo memo;
  EXPECT_EQ(Known(memo, u"a"), "-");
  Keep(memo, u"aaaaa", 1);
  PlainKernelUsageRecord after = {};
  PlainKernelUsage(&after);
  EXPECT_EQ(after.allocationCalls, before.allocationCalls);
  Keep(memo, u"a", 1);
  Keep(memo, u"b", 1);
  PlainKernelUsage(&after);
  EXPECT_EQ(after.allocationCalls, before.allocationCalls + 1);
  EXPECT_EQ(after.liveBlocks, before.liveBlocks + 1);
}

TEST(RtfCoverageMemo, WithoutMemoryTheOthersStay) {
  RtfCoverageMemo memo;
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  Keep(memo, u"a", 1);
  EXPECT_EQ(Known(memo, u"a"), "-");
  for (char16_t unit = 1; unit <= 64; ++unit) Keep(memo, {&unit, 1}, unit);
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  Keep(memo, u"\u1400", 65);
  EXPECT_EQ(Known(memo, u"\u1400"), "-");
  Keep(memo, u"\u1400", 65);
  EXPECT_EQ(Known(memo, u"\u1400"), "65");
  for (char16_t unit = 1; unit <= 64; ++unit) {
    EXPECT_EQ(Known(memo, {&unit, 1}), std::to_string(unit));
  }
}

TEST(RtfCoverageMemo, KeepsTheFirstOfTooMany) {
  RtfCoverageMemo memo;
  for (char16_t unit = 1; unit <= 4098; ++unit) Keep(memo, {&unit, 1}, unit);
  for (char16_t unit = 1; unit <= 4098; ++unit) {
    EXPECT_EQ(Known(memo, {&unit, 1}), unit <= 4096 ? std::to_string(unit) : "-");
  }
  Keep(memo, u"\u0001", 77);
  EXPECT_EQ(Known(memo, u"\u0001"), "77");
}

}  // namespace
}  // namespace tarn
