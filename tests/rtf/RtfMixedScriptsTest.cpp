// A value in many scripts: its cost is in proportion to its length, whatever fonts it takes.
#include <gtest/gtest.h>

#include <string>

#include "rtf/FontSearch.h"
#include "rtf/RtfTextWriter.h"
#include "support/PeakMemory.h"
#include "support/TestFonts.h"

namespace tarn::test {
namespace {

[[maybe_unused]] const bool kFonts = UseTestFonts(StandardTestFonts());

// Nine code pages, characters that none carries, one with marks, and what RTF escapes.
constexpr std::u16string_view kPeriod =
    u"Subject: R\u00e9union {\u0412\u0441\u0442\u0440\u0435\u0447\u0430} \u03a3\u03c5\u03bd "
    u"\u05e4\u05d2 "
    u"\u0627\u062c \u0e1b\u0e23 \u6771\u4eac\u3067 \uc11c\uc6b8 \u0531\u0532 \u10d0\u10d1 \u1400 "
    u"\U0001F600 \u0436\u0301\u0302 \\ \u0386\u0402\u0386\u0402 \u5e74end ";

struct Cost {
  std::string output;
  uint64_t allocations = 0;
  uint64_t coverageWork = 0;
  uint64_t fontSteps = 0;
  uint64_t peak = 0;
};

Cost WritePeriods(uint32_t periods) {
  std::u16string text;
  for (uint32_t i = 0; i < periods; ++i) text += kPeriod;
  RtfFonts fonts;
  EXPECT_EQ(Prepare(fonts, "\\ansicpg1252\\deff0{\\fonttbl{\\f0\\fcharset0 Courier;}}"), StatusOk);
  TrackedBuffer<char> output;
  Cost cost;
  PlainKernelUsageRecord usage = {};
  cost.peak = PeakOf([&] {
    PlainKernelUsage(&usage);
    cost.allocations = usage.allocationCalls;
    EXPECT_EQ(WriteRtfWideText(output, fonts, text.data(), text.size()), StatusOk);
    PlainKernelUsage(&usage);
    cost.allocations = usage.allocationCalls - cost.allocations;
  });
  cost.output = output.view();
  cost.coverageWork = fonts.coverageWork();
  cost.fontSteps = fonts.fontSteps();
  return cost;
}

TEST(MixedScripts, CostInProportionToTheirLength) {
  constexpr uint32_t kFirst = 100;
  const Cost one = WritePeriods(kFirst);
  const Cost two = WritePeriods(2 * kFirst);
  const Cost four = WritePeriods(4 * kFirst);
  // A period is written as the one before was.
  const size_t more = two.output.size() - one.output.size();
  EXPECT_EQ(four.output.size(), two.output.size() + 2 * more);
  EXPECT_TRUE(four.output.ends_with(std::string_view(two.output).substr(one.output.size())));
  EXPECT_LE(four.allocations - two.allocations, 2 * (two.allocations - one.allocations) + 40);
  // Characters and code pages are looked up once, however often they come.
  EXPECT_EQ(one.coverageWork, four.coverageWork);
  EXPECT_EQ(one.fontSteps, four.fontSteps);
  EXPECT_LT(four.peak, four.output.size() + four.output.size() / 8 + 20 * kPeriod.size() * kFirst);
}

}  // namespace
}  // namespace tarn::test
