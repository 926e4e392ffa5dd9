#include "Common/TextRewriter.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "KernelUse.h"
#include "support/PeakMemory.h"

namespace tarn {
namespace {

using test::Bytes;

struct Stretch {
  uint64_t start;
  uint64_t end;
  std::string replacement;
};

std::string Rewrite(std::string_view old, const std::vector<Stretch>& stretches) {
  SizedBytes text = Bytes(old);
  TextGrowth growth;
  for (const Stretch& s : stretches) growth.add(s.end - s.start, s.replacement.size());
  TextRewriter rewriter;
  EXPECT_TRUE(rewriter.open(text, growth));
  EXPECT_EQ(rewriter.old(), old);
  for (const Stretch& s : stretches) rewriter.replace(s.start, s.end, s.replacement);
  rewriter.close();
  return std::string(text.view());
}

TEST(TextRewriter, ReplacesStretches) {
  EXPECT_EQ(Rewrite("abcdef", {}), "abcdef");
  EXPECT_EQ(Rewrite("abcdef", {{0, 1, "longer"}, {3, 3, "+"}, {4, 6, ""}}), "longerbc+d");
  EXPECT_EQ(Rewrite("abcdef", {{0, 6, ""}}), "");
  EXPECT_EQ(Rewrite("", {{0, 0, "new"}}), "new");
}

// The old text ends up ahead of the new one, and after it again.
TEST(TextRewriter, MayGrowAndShrinkByTurns) {
  std::mt19937 random(20261122);
  for (int round = 0; round < 5000; ++round) {
    std::string old(random() % 60, '\0');
    for (char& byte : old) byte = static_cast<char>('a' + random() % 26);
    std::vector<Stretch> stretches;
    std::string expected;
    uint64_t at = 0;
    while (random() % 6 != 0 && at <= old.size()) {
      const uint64_t start = at + random() % (old.size() - at + 1);
      const uint64_t end = start + random() % (old.size() - start + 1);
      stretches.push_back({start, end, std::string(random() % 12, 'X')});
      expected += old.substr(at, start - at) + stretches.back().replacement;
      at = end;
    }
    expected += old.substr(at);
    ASSERT_EQ(Rewrite(old, stretches), expected);
  }
}

TEST(TextRewriter, TakesTheLongerTextsMemory) {
  SizedBytes text = Bytes(std::string(100000, 'x'));
  const std::string replacement(300000, 'y');
  const uint64_t peak = test::PeakOf([&] {
    TextGrowth growth;
    growth.add(0, replacement.size());
    growth.add(50000, 0);
    TextRewriter rewriter;
    ASSERT_TRUE(rewriter.open(text, growth));
    rewriter.replace(10, 10, replacement);
    rewriter.replace(40000, 90000, "");
    rewriter.close();
  });
  EXPECT_EQ(peak, 300000u);
  EXPECT_EQ(text.length(), 350000u);
}

TEST(TextRewriter, WithoutMemoryTheTextIsAsItWas) {
  SizedBytes text = Bytes("text");
  TextGrowth growth;
  growth.add(0, 10);
  TextRewriter rewriter;
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_FALSE(rewriter.open(text, growth));
  EXPECT_EQ(text.view(), "text");
}

}  // namespace
}  // namespace tarn
