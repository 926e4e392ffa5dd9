#include "Common/RunFilter.h"

#include <gtest/gtest.h>

#include <string>

#include "KernelUse.h"
#include "support/GuardedBytes.h"

namespace tarn {
namespace {

std::string Name(int i) { return "_picture-" + std::to_string(i) + "x.png"; }

TEST(RunFilter, HoldsEveryPartOfWhatWasAdded) {
  RunFilter filter;
  for (int i = 0; i < 1000; ++i) filter.add(Name(i));
  for (int i = 0; i < 1000; ++i) {
    const std::string name = Name(i);
    for (size_t start = 0; start < name.size(); ++start) {
      EXPECT_TRUE(filter.mayHold(name.substr(start)));
      EXPECT_TRUE(filter.mayHold(name.substr(0, start)));
    }
  }
}

TEST(RunFilter, SeldomHoldsWhatWasNot) {
  RunFilter filter;
  for (int i = 0; i < 10000; ++i) filter.add(Name(i));
  int wrong = 0;
  for (int i = 10000; i < 20000; ++i) wrong += filter.mayHold(Name(i)) ? 1 : 0;
  EXPECT_LT(wrong, 100);
  EXPECT_FALSE(filter.mayHold("cid:image0001.png@01DC5B7A"));
}

TEST(RunFilter, KnowsNothingOfShortTexts) {
  RunFilter filter;
  EXPECT_TRUE(filter.mayHold("seven77"));
  EXPECT_FALSE(filter.mayHold("eight888"));
  filter.add("seven77");
  EXPECT_FALSE(filter.mayHold("eight888"));
}

TEST(RunFilter, ReadsNoByteBeforeOrAfterTheText) {
  test::GuardedBytes bytes(8);
  const std::string_view text(bytes.begin(), static_cast<size_t>(bytes.end() - bytes.begin()));
  RunFilter filter;
  filter.add(text);
  EXPECT_TRUE(filter.mayHold(text));
}

TEST(RunFilter, WithoutMemoryAnythingMayBe) {
  RunFilter filter;
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  filter.add("some name");
  EXPECT_TRUE(filter.mayHold("some name"));
  EXPECT_TRUE(filter.mayHold("another name"));
  filter.add("added with memory");
  EXPECT_TRUE(filter.mayHold("another name")) << "what came first is still unknown";
  filter.clear();
  EXPECT_FALSE(filter.mayHold("some name"));
}

}  // namespace
}  // namespace tarn
