// AllocationFaults.h - the memory that the kernel's bookkeeping asks the C++ runtime for, failing
// as a test wants it. Blocks of KernelAlloc are something else: see PlainKernelFailAt.
#ifndef TARN_TESTS_KERNEL_ALLOCATIONFAULTS_H
#define TARN_TESTS_KERNEL_ALLOCATIONFAULTS_H

namespace tarn::test {

// The ordinal-th allocation of this thread from now on fails, and those after it succeed again.
// Where the runtime is one for all, those of the test itself count too. Ordinal 0 ends it.
void FailAllocation(int ordinal);

// Whether it has come to that since FailAllocation.
bool AllocationHasFailed();

}  // namespace tarn::test

#endif
