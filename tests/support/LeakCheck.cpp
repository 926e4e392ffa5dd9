#include "support/LeakCheck.h"

namespace tarn::test {
namespace {

uint64_t allowedBlocks = 0;

void Compare(const char* what, uint64_t before, uint64_t after) {
  if (after > before)
    ADD_FAILURE() << "left behind in the kernel: " << after - before << " " << what;
  if (after < before) ADD_FAILURE() << "taken from the kernel: " << before - after << " " << what;
}

}  // namespace

void ResetPlainKernel() {
  for (int32_t group = PlainKernelFaultMemory; group <= PlainKernelFaultBudget; ++group) {
    PlainKernelFailAt(group, 0);
  }
  PlainKernelSetLanguage(0x0409);
  PlainKernelSetIoMode(0);
  PlainKernelSetTempDirectory(nullptr);
  PlainKernelSetMemoryBudget(UINT64_MAX);
}

void AllowBlocksLeft(uint64_t count) { allowedBlocks += count; }

void LeakCheck::OnTestStart(const ::testing::TestInfo&) {
  allowedBlocks = 0;
  ResetPlainKernel();
  PlainKernelUsage(&before_);
}

void LeakCheck::OnTestEnd(const ::testing::TestInfo&) {
  PlainKernelUsageRecord after = {};
  PlainKernelUsage(&after);
  Compare("blocks", before_.liveBlocks + allowedBlocks, after.liveBlocks);
  Compare("tracked objects", before_.liveTrackedObjects, after.liveTrackedObjects);
  Compare("open handles", before_.openHandles, after.openHandles);
  Compare("reported bytes", before_.reportedBytes, after.reportedBytes);
  Compare("temporary files", before_.temporaryFiles, after.temporaryFiles);
}

}  // namespace tarn::test
