// KernelUsage.h - what the plain kernel holds, and what a piece of work has left in it.
#ifndef TARN_TESTS_SUPPORT_KERNELUSAGE_H
#define TARN_TESTS_SUPPORT_KERNELUSAGE_H

#include <cstdint>
#include <string>

#include "Tarnbase/PlainKernel.h"

namespace tarn::test {

inline PlainKernelUsageRecord Usage() {
  PlainKernelUsageRecord usage = {};
  PlainKernelUsage(&usage);
  return usage;
}

// The blocks that were asked for so far.
inline uint64_t AllocationCalls() { return Usage().allocationCalls; }

// "blocks 2 handles 1 ": what the kernel holds that it did not hold before; empty for nothing.
inline std::string LeftBetween(const PlainKernelUsageRecord& before,
                               const PlainKernelUsageRecord& after) {
  std::string left;
  const auto note = [&left](const char* what, uint64_t was, uint64_t is) {
    if (was != is) left += what + std::string(" ") + std::to_string(is - was) + " ";
  };
  note("blocks", before.liveBlocks, after.liveBlocks);
  note("objects", before.liveTrackedObjects, after.liveTrackedObjects);
  note("handles", before.openHandles, after.openHandles);
  note("reported", before.reportedBytes, after.reportedBytes);
  note("temporary", before.temporaryFiles, after.temporaryFiles);
  return left;
}

}  // namespace tarn::test

#endif
