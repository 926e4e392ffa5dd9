// The current file I/O mode, and the scopes that change it for a while.
//
// A scope is 120 bytes of the caller's, of any alignment:
//   0    4  the mode to exchange with the current one
//   4  116  zeros
#include <cstring>
#include <mutex>

#include "Lock.h"
#include "Status.h"
#include "Tarnbase/PlainKernel.h"

namespace tarn::kernel {
namespace {

constinit Lock modeMutex;
int32_t currentMode = 0;

}  // namespace
}  // namespace tarn::kernel

using namespace tarn::kernel;

int32_t KernelIoModeGet(void) {
  const std::lock_guard lock(modeMutex);
  return currentMode;
}

int32_t KernelIoModeFill(void* scope, int32_t size, int32_t mode, int32_t /*reserved*/) {
  if (scope == nullptr || size != KERNEL_IO_SCOPE_BYTES) return KernelBadArgument;
  std::memset(scope, 0, KERNEL_IO_SCOPE_BYTES);
  std::memcpy(scope, &mode, sizeof mode);
  return KernelSuccess;
}

void KernelIoModeSwap(void* scope, int32_t /*reserved0*/, int32_t /*reserved1*/) {
  if (scope == nullptr) return;
  const std::lock_guard lock(modeMutex);
  const int32_t left = currentMode;
  std::memcpy(&currentMode, scope, sizeof currentMode);
  std::memcpy(scope, &left, sizeof left);
}

void PlainKernelSetIoMode(int32_t mode) {
  const std::lock_guard lock(modeMutex);
  currentMode = mode;
}
