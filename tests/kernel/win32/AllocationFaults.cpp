#include "AllocationFaults.h"

#include <cstdlib>

#include "KernelImports.h"

namespace {

thread_local int allocationsToGo = 0;
thread_local bool failed = false;

void* Allocate(size_t size) {
  if (allocationsToGo > 0 && --allocationsToGo == 0) {
    failed = true;
    return nullptr;
  }
  return std::malloc(size);
}

}  // namespace

namespace tarn::test {

// The runtime is the kernel's own, and gets its memory by one function.
void FailAllocation(int ordinal) {
  static const ImportStandIn standIn("malloc", &Allocate);
  failed = false;
  allocationsToGo = ordinal;
}

bool AllocationHasFailed() { return failed; }

}  // namespace tarn::test
