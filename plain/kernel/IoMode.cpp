// The file I/O mode: one of the process, and for each thread the scopes that it has open. What a
// scope changes is its own thread's mode alone, so that calls of several threads do not send each
// other's documents the wrong way.
//
// A scope is 120 bytes of the caller's, of any alignment:
//   0    4  the mode to exchange with the thread's
//   4    4  1 while the scope is open, else 0
//   8  112  zeros
#include <atomic>
#include <cstring>

#include "TarnPst.h"
#include "Tarnbase/PlainKernel.h"

namespace tarn::kernel {
namespace {

constinit std::atomic<int32_t> processMode{0};

struct ThreadMode {
  uint32_t openScopes;  // 0: the thread has the mode of the process
  int32_t mode;         // else this one
};

// Constant initialized, so that it needs no constructor: the host may call while the process starts
// and ends.
constinit thread_local ThreadMode threadMode{0, 0};

struct ScopeHead {
  int32_t mode;
  int32_t isOpen;
};

}  // namespace
}  // namespace tarn::kernel

using namespace tarn::kernel;

int32_t KernelIoModeGet(void) {
  return threadMode.openScopes != 0 ? threadMode.mode : processMode.load();
}

int32_t KernelIoModeFill(void* scope, int32_t size, int32_t mode, int32_t /*reserved*/) {
  if (scope == nullptr || size != KERNEL_IO_SCOPE_BYTES) return StatusBadArgument;
  std::memset(scope, 0, KERNEL_IO_SCOPE_BYTES);
  std::memcpy(scope, &mode, sizeof mode);
  return StatusOk;
}

void KernelIoModeSwap(void* scope, int32_t /*reserved0*/, int32_t /*reserved1*/) {
  if (scope == nullptr) return;
  ScopeHead head;
  std::memcpy(&head, scope, sizeof head);
  const ScopeHead swapped = {KernelIoModeGet(), head.isOpen == 0 ? 1 : 0};
  threadMode.mode = head.mode;
  if (head.isOpen == 0) {
    ++threadMode.openScopes;
  } else if (threadMode.openScopes != 0) {
    --threadMode.openScopes;
  }
  std::memcpy(scope, &swapped, sizeof swapped);
}

void PlainKernelSetIoMode(int32_t mode) { processMode.store(mode); }
