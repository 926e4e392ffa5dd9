#include "rtf/RtfCodePageStack.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "Tarnbase/PlainKernel.h"

namespace tarn {
namespace {

uint32_t Pop(RtfCodePageStack& stack, uint32_t otherwise = 9) {
  stack.pop(otherwise);
  return otherwise;
}

TEST(RtfCodePageStack, TheLastInIsTheFirstOut) {
  RtfCodePageStack stack;
  for (const uint32_t codePage : {932U, 1252U, 1252U, 0U, UINT32_MAX}) stack.push(codePage);
  EXPECT_EQ(Pop(stack), UINT32_MAX);
  EXPECT_EQ(Pop(stack), 0U);
  EXPECT_EQ(Pop(stack), 1252U);
  EXPECT_EQ(Pop(stack), 1252U);
  EXPECT_EQ(Pop(stack), 932U);
}

TEST(RtfCodePageStack, AnEmptyOneLeavesTheCodePage) {
  RtfCodePageStack stack;
  EXPECT_EQ(Pop(stack, 1252), 1252U);
  stack.push(932);
  EXPECT_EQ(Pop(stack, 1252), 932U);
  EXPECT_EQ(Pop(stack, 1252), 1252U);
}

TEST(RtfCodePageStack, IsLikeAnyStack) {
  std::mt19937 random(1);
  RtfCodePageStack stack;
  std::vector<uint32_t> values;
  for (int i = 0; i < 100000; ++i) {
    if (random() % 5 < 3) {
      values.push_back(static_cast<uint32_t>(random() % 3));
      ASSERT_TRUE(stack.push(values.back()));
    } else if (!values.empty()) {
      ASSERT_EQ(Pop(stack), values.back());
      values.pop_back();
    }
  }
  for (; !values.empty(); values.pop_back()) ASSERT_EQ(Pop(stack), values.back());
  EXPECT_EQ(Pop(stack), 9U);
}

TEST(RtfCodePageStack, WithoutMemoryItStaysAsItWas) {
  RtfCodePageStack stack;
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_FALSE(stack.push(1));
  for (uint32_t i = 0; i < 64; ++i) ASSERT_TRUE(stack.push(i));
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_TRUE(stack.push(63));
  EXPECT_FALSE(stack.push(64));
  EXPECT_EQ(Pop(stack), 63U);
  for (uint32_t i = 64; i-- > 0;) ASSERT_EQ(Pop(stack), i);
}

}  // namespace
}  // namespace tarn
