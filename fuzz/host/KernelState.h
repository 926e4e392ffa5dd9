// KernelState.h - what the plain kernel holds for its callers, compared.
#ifndef TARN_FUZZ_HOST_KERNELSTATE_H
#define TARN_FUZZ_HOST_KERNELSTATE_H

#include "Tarnbase/PlainKernel.h"
#include "host/Expect.h"

namespace tarn::fuzz {

class KernelState {
 public:
  KernelState() { PlainKernelUsage(&usage_); }

  // Ends the process when the kernel holds more or less than at construction.
  void expectSame(const char* otherwise) const {
    expectSameButBlocks(otherwise);
    Expect(KernelState().usage_.liveBlocks == usage_.liveBlocks, otherwise);
  }
  void expectSameButBlocks(const char* otherwise) const {
    expectSameHandles(otherwise);
    const KernelState now;
    Expect(now.usage_.liveTrackedObjects == usage_.liveTrackedObjects &&
               now.usage_.reportedBytes == usage_.reportedBytes &&
               now.usage_.temporaryFiles == usage_.temporaryFiles,
           otherwise);
  }
  void expectSameHandles(const char* otherwise) const {
    Expect(KernelState().usage_.openHandles == usage_.openHandles, otherwise);
  }

 private:
  PlainKernelUsageRecord usage_ = {};
};

}  // namespace tarn::fuzz

#endif
