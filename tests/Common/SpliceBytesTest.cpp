#include <gtest/gtest.h>

#include "Common/InlineImages.h"
#include "KernelUse.h"

namespace tarn {
namespace {

using test::Bytes;

Status Splice(SizedBytes& text, uint64_t offset, uint64_t removed, std::string_view bytes) {
  return SpliceBytes(text, offset, removed, bytes.data(), bytes.size());
}

TEST(SpliceBytes, GrowingMovesTheTailBack) {
  SizedBytes text = Bytes("one two three");
  EXPECT_EQ(Splice(text, 4, 3, "hundred"), StatusOk);
  EXPECT_EQ(text.view(), "one hundred three");
}

TEST(SpliceBytes, ShrinkingMovesTheTailForwardAndKeepsTheBlock) {
  SizedBytes text = Bytes("one hundred three");
  const char* const block = text.data();
  const PlainKernelUsageRecord before = test::Usage();
  EXPECT_EQ(Splice(text, 4, 7, "2"), StatusOk);
  EXPECT_EQ(text.view(), "one 2 three");
  EXPECT_EQ(text.data(), block);
  const PlainKernelUsageRecord after = test::Usage();
  EXPECT_EQ(after.allocationCalls, before.allocationCalls);
  EXPECT_EQ(after.liveBytes, before.liveBytes);
}

TEST(SpliceBytes, EqualLengthsWriteInPlace) {
  SizedBytes text = Bytes("abcdef");
  const char* const block = text.data();
  EXPECT_EQ(Splice(text, 2, 2, "XY"), StatusOk);
  EXPECT_EQ(text.view(), "abXYef");
  EXPECT_EQ(text.data(), block);
}

TEST(SpliceBytes, AtTheStartAtTheEndAndOverAll) {
  SizedBytes text = Bytes("abc");
  EXPECT_EQ(Splice(text, 0, 0, "<"), StatusOk);
  EXPECT_EQ(Splice(text, 4, 0, ">"), StatusOk);
  EXPECT_EQ(text.view(), "<abc>");
  EXPECT_EQ(Splice(text, 0, 5, "z"), StatusOk);
  EXPECT_EQ(text.view(), "z");
  EXPECT_EQ(SpliceBytes(text, 0, 1, nullptr, 0), StatusOk);
  EXPECT_EQ(text.length(), 0u);
  EXPECT_NE(text.data(), nullptr);
}

TEST(SpliceBytes, AMissingBlockIsMade) {
  SizedBytes text;
  EXPECT_EQ(SpliceBytes(text, 0, 0, nullptr, 0), StatusOk);
  EXPECT_EQ(text.data(), nullptr);
  EXPECT_EQ(Splice(text, 0, 0, test::Raw("a\0b")), StatusOk);
  EXPECT_EQ(text.view(), test::Raw("a\0b"));
}

TEST(SpliceBytes, ATextThatGrowsAgainIsResizedToItsNewLength) {
  SizedBytes text = Bytes("0123456789");
  ASSERT_EQ(Splice(text, 2, 8, ""), StatusOk);
  ASSERT_EQ(Splice(text, 2, 0, "abc"), StatusOk);
  EXPECT_EQ(text.view(), "01abc");
}

TEST(SpliceBytes, RangesOutsideTheTextChangeNothing) {
  SizedBytes text = Bytes("abc");
  EXPECT_EQ(Splice(text, 4, 0, "x"), StatusFailed);
  EXPECT_EQ(Splice(text, 2, 2, "x"), StatusFailed);
  EXPECT_EQ(Splice(text, 1, UINT64_MAX, "x"), StatusFailed);
  EXPECT_EQ(SpliceBytes(text, 0, 0, "x", UINT64_MAX), StatusFailed);
  EXPECT_EQ(text.view(), "abc");
}

TEST(SpliceBytes, WithoutMemoryNothingChanges) {
  SizedBytes text = Bytes("abc");
  const char* const block = text.data();
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_EQ(Splice(text, 1, 1, "xyz"), StatusFailed);
  EXPECT_EQ(text.view(), "abc");
  EXPECT_EQ(text.data(), block);

  SizedBytes missing;
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_EQ(Splice(missing, 0, 0, "x"), StatusFailed);
  EXPECT_EQ(missing.data(), nullptr);
  EXPECT_EQ(missing.length(), 0u);
}

}  // namespace
}  // namespace tarn
