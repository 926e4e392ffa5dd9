#include "rtf/RtfScanOutput.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

#include "Tarnbase/PlainKernel.h"

namespace tarn {
namespace {

// An output of so many plain bytes.
struct Output : RtfScanOutput {
  explicit Output(uint64_t plain = 0) {
    EXPECT_TRUE(start());
    copy(plain);
  }

  void copy(uint64_t count) { EXPECT_TRUE(copyInSteps(std::string(count, '.'))); }

  std::string referenceOf(int32_t value) {
    const uint64_t offset = length();
    writeReference(value);
    return std::string(from(offset));
  }
};

// A block whose run of `bytes` units ends with the capacity.
struct FullOutput : Output {
  explicit FullOutput(uint64_t units) {
    for (uint64_t i = 0; i < units; ++i) EXPECT_TRUE(putRaw('.'));
    EXPECT_TRUE(makeRoomForUnits(0, units, units));
    rewind(0);
    for (uint64_t i = 0; i < units; ++i) write("&#xFFFF;");
  }
};

TEST(RtfScanOutput, BeginsWith2048Bytes) {
  const Output output;
  EXPECT_EQ(output.length(), 0U);
  EXPECT_EQ(output.capacity(), 2048U);
  EXPECT_EQ(output.limit(), 1024U);
}

TEST(RtfScanOutput, AStepGrowsIt128BytesBeforeTheLimit) {
  Output below(895);
  EXPECT_TRUE(below.makeRoom());
  EXPECT_EQ(below.capacity(), 2048U);
  Output at(896);
  EXPECT_TRUE(at.makeRoom());
  EXPECT_EQ(at.capacity(), 3072U);
}

TEST(RtfScanOutput, PlainBytesAreSteps) {
  EXPECT_EQ(Output(896).capacity(), 2048U);
  EXPECT_EQ(Output(897).capacity(), 3072U);
  EXPECT_EQ(Output(1920).capacity(), 3072U);
  EXPECT_EQ(Output(1921).capacity(), 4096U);
  EXPECT_EQ(Output(2944).capacity(), 4096U);
  EXPECT_EQ(Output(2945).capacity(), 5120U);
  EXPECT_EQ(Output(102400 + 896).capacity(), 104448U);
  EXPECT_EQ(Output(102400 + 897).capacity(), 105472U);
}

// Beyond the limit each of the first steps grows the block, then none does for a while.
TEST(RtfScanOutput, StepsAfterALongRunCatchUp) {
  FullOutput output(256);
  EXPECT_EQ(output.length(), 2048U);
  EXPECT_EQ(output.capacity(), 2048U);
  output.copy(1);
  EXPECT_EQ(output.capacity(), 3072U);
  output.copy(1);
  EXPECT_EQ(output.capacity(), 4096U);
  output.copy(894);  // up to 2944, 128 before the limit
  EXPECT_EQ(output.capacity(), 4096U);
  output.copy(1);
  EXPECT_EQ(output.capacity(), 5120U);
}

// However plain bytes are divided, they come to the same as one by one.
TEST(RtfScanOutput, AnyDivisionOfPlainBytesIsTheSame) {
  std::mt19937 random(3);
  for (int i = 0; i < 500; ++i) {
    const uint64_t units = random() % 300;
    FullOutput single(units);
    FullOutput divided(units);
    for (int piece = 0; piece < 4; ++piece) {
      const uint64_t count = random() % 2 == 0 ? random() % 3000 : random() % 4;
      divided.copy(count);
      for (uint64_t step = 0; step < count; ++step) single.copy(1);
      ASSERT_EQ(divided.length(), single.length());
      ASSERT_EQ(divided.capacity(), single.capacity()) << units << " " << count;
    }
  }
}

TEST(RtfScanOutput, AReferenceIsCutAtTheLimit) {
  EXPECT_EQ(Output(0).referenceOf(65), "&#65;");
  EXPECT_EQ(Output(0).referenceOf(-1), "&#-1;");
  EXPECT_EQ(Output(0).referenceOf(INT32_MIN), "&#-2147483648;");
  FullOutput output(256);  // 1024 after the limit
  EXPECT_EQ(output.referenceOf(65), "");
  EXPECT_TRUE(output.makeRoom());  // at the limit
  EXPECT_EQ(output.referenceOf(65), "");
  FullOutput shorter(255);
  EXPECT_TRUE(shorter.makeRoom());  // 8 before it
  EXPECT_EQ(shorter.referenceOf(1234567), "&#123456");
  EXPECT_EQ(shorter.referenceOf(65), "");
}

TEST(RtfScanOutput, AConversionWithMoreUnitsThanBytesHasRoom) {
  Output output;
  EXPECT_TRUE(output.putRaw('.'));
  EXPECT_TRUE(output.makeRoomForUnits(0, 1, 1000));
  output.rewind(0);
  for (int i = 0; i < 1000; ++i) output.write("&#xFFFF;");
  EXPECT_EQ(output.capacity(), 2048U);
  output.copy(10);
  EXPECT_EQ(output.length(), 8010U);
  SizedBytes text;
  EXPECT_TRUE(output.finish(text));
  EXPECT_EQ(text.length(), 8011U);
}

// The text may then be longer than the capacity, and a step has its room all the same.
TEST(RtfScanOutput, AStepAfterAConversionWithMoreUnitsThanBytesHasRoom) {
  PlainKernelUsageRecord before;
  PlainKernelUsage(&before);
  Output output;
  EXPECT_TRUE(output.putRaw('.'));
  EXPECT_TRUE(output.makeRoomForUnits(0, 1, 1000));
  output.rewind(0);
  for (int i = 0; i < 1000; ++i) output.write("&#xFFFF;");
  EXPECT_TRUE(output.makeRoom());
  EXPECT_EQ(output.capacity(), 3072U);
  PlainKernelUsageRecord after;
  PlainKernelUsage(&after);
  EXPECT_GE(after.liveBytes - before.liveBytes, 8000U + RtfScanOutput::kMargin);
  output.write("01234567890123456789");
  EXPECT_EQ(output.from(7992), "&#xFFFF;01234567890123456789");
}

TEST(RtfScanOutput, ATextGetsOneNul) {
  SizedBytes text;
  EXPECT_TRUE(Output(3).finish(text));
  EXPECT_EQ(text.view(), std::string_view("...\0", 4));
  EXPECT_TRUE(Output().finish(text));
  EXPECT_EQ(text.view(), std::string_view("\0", 1));
  Output terminated(3);
  terminated.put('\0');
  EXPECT_TRUE(terminated.finish(text));
  EXPECT_EQ(text.view(), std::string_view("...\0", 4));
}

TEST(RtfScanOutput, TheSlackIsGivenBack) {
  PlainKernelUsageRecord before;
  PlainKernelUsage(&before);
  SizedBytes text;
  EXPECT_TRUE(Output(10000).finish(text));
  PlainKernelUsageRecord after;
  PlainKernelUsage(&after);
  EXPECT_EQ(after.liveBytes - before.liveBytes, 10001U);
}

TEST(RtfScanOutput, WithoutMemoryNothingGrows) {
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  RtfScanOutput none;
  EXPECT_FALSE(none.start());
  Output output(896);
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_FALSE(output.makeRoom());
  Output copied;
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_FALSE(copied.copyInSteps(std::string(5000, '.')));
  Output converted;
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_FALSE(converted.makeRoomForUnits(0, 300, 300));
  PlainKernelFailAt(PlainKernelFaultMemory, 0);
}

}  // namespace
}  // namespace tarn
