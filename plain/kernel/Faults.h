// Faults.h - failures on demand, for tests: see PlainKernelFailAt and PlainKernelFailFrom.
#ifndef TARN_KERNEL_FAULTS_H
#define TARN_KERNEL_FAULTS_H

#include "Tarnbase/PlainKernel.h"

namespace tarn::kernel {

// Counts one call of the group, and tells whether that call is to fail. Every operation of
// a group asks exactly once, before anything else can fail it.
bool FaultDue(PlainKernelFaultGroup group) noexcept;

}  // namespace tarn::kernel

#endif
