/* The public headers compile as C11, and a C program gets the types it expects. */
#include <stddef.h>

#include "Tarnbase/Kernel.h"
#include "Tarnbase/PlainKernel.h"

_Static_assert(sizeof(PlainKernelUsageRecord) == 64, "eight 64-bit fields");
_Static_assert(offsetof(PlainKernelUsageRecord, liveBlocks) == 0, "");
_Static_assert(offsetof(PlainKernelUsageRecord, liveBytes) == 8, "");
_Static_assert(offsetof(PlainKernelUsageRecord, peakBytes) == 16, "");
_Static_assert(offsetof(PlainKernelUsageRecord, liveTrackedObjects) == 24, "");
_Static_assert(offsetof(PlainKernelUsageRecord, openHandles) == 32, "");
_Static_assert(offsetof(PlainKernelUsageRecord, reportedBytes) == 40, "");
_Static_assert(offsetof(PlainKernelUsageRecord, temporaryFiles) == 48, "");
_Static_assert(offsetof(PlainKernelUsageRecord, allocationCalls) == 56, "");

int64_t CallKernelFromC(void);

/* 0x409 in a fresh process, when blocks can be had. */
int64_t CallKernelFromC(void) {
  void* const block = KernelAllocZero(4, 2, __LINE__, u"HeaderInC.c");
  if (block == NULL) return -1;
  KernelFree(block, __LINE__, u"HeaderInC.c");
  return KernelGetLanguage();
}
