#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "Tarnbase/PlainKernel.h"

extern "C" int64_t CallKernelFromC(void);

namespace tarn::test {
namespace {

TEST(Controls, TheLanguageIsEnglishUntilSet) {
  EXPECT_EQ(KernelGetLanguage(), 0x0409U);
  PlainKernelSetLanguage(0x0407);
  EXPECT_EQ(KernelGetLanguage(), 0x0407U);
  PlainKernelSetLanguage(0xFFFFFFFF);
  EXPECT_EQ(KernelGetLanguage(), 0xFFFFFFFFU);
}

TEST(Controls, LastErrorsAreTheFallback) {
  EXPECT_EQ(KernelMapLastError(-5), -5);
  EXPECT_EQ(KernelMapLastError(-1490), -1490);
  EXPECT_EQ(KernelMapLastError(1), 1);
}

TEST(Controls, TheLoaderEntryAnswersOne) {
  EXPECT_EQ(KernelLoaderEntry(nullptr, 1, 2, 3), 1);
  EXPECT_EQ(KernelLoaderEntry(reinterpret_cast<void*>(&CallKernelFromC), UINT64_MAX, 0, 0), 1);
}

TEST(Controls, UsageFillsTheWholeRecordAndNoMore) {
  struct {
    PlainKernelUsageRecord usage;
    uint64_t after;
  } memory;
  std::memset(&memory, 0xAB, sizeof memory);
  PlainKernelUsage(&memory.usage);
  EXPECT_EQ(memory.usage.liveBlocks, 0U);
  EXPECT_EQ(memory.usage.liveBytes, 0U);
  EXPECT_NE(memory.usage.peakBytes, 0xABABABABABABABABU);
  EXPECT_EQ(memory.usage.liveTrackedObjects, 0U);
  EXPECT_EQ(memory.usage.openHandles, 0U);
  EXPECT_EQ(memory.usage.reportedBytes, 0U);
  EXPECT_EQ(memory.usage.temporaryFiles, 0U);
  EXPECT_NE(memory.usage.allocationCalls, 0xABABABABABABABABU);
  EXPECT_EQ(memory.after, 0xABABABABABABABABU);
  PlainKernelUsage(nullptr);
}

TEST(Controls, ServeAProgramInC) { EXPECT_EQ(CallKernelFromC(), 0x0409); }

}  // namespace
}  // namespace tarn::test
