// Fence.h - keeps the C++ exceptions of the kernel's bookkeeping inside.
#ifndef TARN_KERNEL_FENCE_H
#define TARN_KERNEL_FENCE_H

namespace tarn::kernel {

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
