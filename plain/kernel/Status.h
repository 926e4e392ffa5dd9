// Status.h - the status codes that the plain kernel itself answers with, and the fence that keeps
// C++ exceptions of its bookkeeping inside.
#ifndef TARN_KERNEL_STATUS_H
#define TARN_KERNEL_STATUS_H

#include <cstdint>

namespace tarn::kernel {

enum KernelStatus : int32_t {
  KernelSuccess = 1,
  KernelOutOfMemory = -1,     // also the refusal of a budget
  KernelBadArgument = -13,    // a call that makes no sense as it stands
  KernelCannotCreate = -1490  // no temp file name, no memory file
};

// The result of `operation`, or `failure` when its bookkeeping runs out of memory: nothing is
// thrown through the C boundary.
template <typename Result, typename Operation>
Result Fenced(Result failure, Operation operation) noexcept {
  try {
    return operation();
  } catch (...) {
    return failure;
  }
}

}  // namespace tarn::kernel

#endif
