#include "AllocationFaults.h"

#include <cstdlib>
#include <new>

namespace {

thread_local int allocationsToGo = 0;
thread_local bool failed = false;

}  // namespace

// Take the place of the runtime's, for the kernel too.
void* operator new(std::size_t size) {
  if (allocationsToGo > 0 && --allocationsToGo == 0) {
    failed = true;
    throw std::bad_alloc();
  }
  void* const block = std::malloc(size != 0 ? size : 1);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }

namespace tarn::test {

void FailAllocation(int ordinal) {
  failed = false;
  allocationsToGo = ordinal;
}

bool AllocationHasFailed() { return failed; }

}  // namespace tarn::test
