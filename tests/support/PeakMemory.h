// PeakMemory.h - how much kernel memory a call takes.
#ifndef TARN_TESTS_SUPPORT_PEAKMEMORY_H
#define TARN_TESTS_SUPPORT_PEAKMEMORY_H

#include <gtest/gtest.h>

#include "Internal/Tarnclasses_.h"
#include "Tarnbase/PlainKernel.h"

namespace tarn::test {

// The most bytes that the call needs beside those that are there before. A block as large as all
// that was ever held lifts what is held now to the peak, so that the peak of the call shows.
template <typename Call>
uint64_t PeakOf(const Call& call) {
  PlainKernelUsageRecord usage = {};
  PlainKernelUsage(&usage);
  const auto ballast = AllocateBlock<char>(usage.peakBytes, TARN_HERE);
  PlainKernelUsage(&usage);
  EXPECT_NE(ballast.get(), nullptr);
  const uint64_t before = usage.liveBytes;
  call();
  PlainKernelUsage(&usage);
  EXPECT_GE(usage.peakBytes, before);
  return usage.peakBytes - before;
}

}  // namespace tarn::test

#endif
