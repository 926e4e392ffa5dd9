#include "support/LeakCheck.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include "Scratch.h"
#include "TarnPst.h"

namespace tarn::test {
namespace {

const ::testing::TestInfo& ThisTest() {
  return *::testing::UnitTest::GetInstance()->current_test_info();
}

TEST(LeakCheck, SaysNothingWhenNothingIsLeft) {
  LeakCheck check;
  check.OnTestStart(ThisTest());
  KernelFree(KernelAlloc(1, 1, 1, nullptr), 1, nullptr);
  check.OnTestEnd(ThisTest());
}

TEST(LeakCheck, TellsBlocks) {
  static LeakCheck check;
  check.OnTestStart(ThisTest());
  void* const block = KernelAlloc(1, 1, 1, nullptr);
  EXPECT_NONFATAL_FAILURE(check.OnTestEnd(ThisTest()), "left behind in the kernel: 1 blocks");
  KernelFree(block, 1, nullptr);
}

TEST(LeakCheck, TellsBlocksOfOthersThatWereFreed) {
  static LeakCheck check;
  void* const block = KernelAlloc(1, 1, 1, nullptr);
  check.OnTestStart(ThisTest());
  KernelFree(block, 1, nullptr);
  EXPECT_NONFATAL_FAILURE(check.OnTestEnd(ThisTest()), "taken from the kernel: 1 blocks");
}

TEST(LeakCheck, TellsObjectsAndReportedBytes) {
  static LeakCheck check;
  static const int object = 0;
  check.OnTestStart(ThisTest());
  KernelTrackObject(KERNEL_TRACK_OBJECT, &object, 1, nullptr);
  EXPECT_NONFATAL_FAILURE(check.OnTestEnd(ThisTest()), "1 tracked objects");
  KernelUntrackObject(KERNEL_TRACK_OBJECT, &object, 1, nullptr);
  KernelMemoryReport(KERNEL_MEMORY_WANT, 99, 0);
  EXPECT_NONFATAL_FAILURE(check.OnTestEnd(ThisTest()), "99 reported bytes");
  KernelMemoryReport(KERNEL_MEMORY_RETURN, 99, 0);
}

TEST(LeakCheck, TellsHandlesAndTemporaryFiles) {
  static LeakCheck check;
  check.OnTestStart(ThisTest());
  char16_t name[264];
  ASSERT_EQ(KernelTempFileName(nullptr, name, 264, 1, u"pst", nullptr), StatusOk);
  EXPECT_NONFATAL_FAILURE(check.OnTestEnd(ThisTest()), "1 temporary files");
  const uint64_t handle = KernelFileOpen(name, KERNEL_OPEN_READ, KERNEL_OPEN_MODE);
  KernelDeleteFile(name);
  EXPECT_NONFATAL_FAILURE(check.OnTestEnd(ThisTest()), "1 open handles");
  KernelFileClose(handle);
}

TEST(LeakCheck, ResetsEveryControl) {
  PlainKernelFailAt(PlainKernelFaultText, 1);
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  PlainKernelSetLanguage(1);
  PlainKernelSetIoMode(3);
  PlainKernelSetTempDirectory(u"/no/such/directory");
  PlainKernelSetMemoryBudget(0);
  ResetPlainKernel();
  char text[4];
  EXPECT_EQ(KernelWideToUtf8(u"a", 1, text, 4), 1);
  KernelFree(KernelAlloc(1, 1, 1, nullptr), 1, nullptr);
  EXPECT_EQ(KernelGetLanguage(), 0x0409U);
  EXPECT_EQ(KernelIoModeGet(), 0);
  EXPECT_EQ(KernelMemoryReport(KERNEL_MEMORY_WANT, 1, 0), StatusOk);
  KernelMemoryReport(KERNEL_MEMORY_RETURN, 1, 0);
  char16_t name[264];
  EXPECT_EQ(KernelTempFileName(nullptr, name, 264, 1, u"pst", nullptr), StatusOk);
  KernelDeleteFile(name);
}

}  // namespace
}  // namespace tarn::test
