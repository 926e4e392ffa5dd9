/* PlainKernel.h - the controls of the plain kernel.
 *
 * The plain kernel is an implementation of Kernel.h on the ordinary heap and ordinary files. A
 * plain host and tests set it up and look into it here; the filter never calls these. All settings
 * are process wide, and may be set from any thread.
 *
 * With TARNBASE_REPORT_LEAKS in the environment, the end of the process lists on standard error the
 * source location of every block and object that is still alive.
 */
#ifndef TARNBASE_PLAINKERNEL_H
#define TARNBASE_PLAINKERNEL_H

#include "Kernel.h"

#ifdef __cplusplus
extern "C" {
#endif

/* What the kernel holds for its callers. Sizes in bytes. */
typedef struct PlainKernelUsageRecord {
  uint64_t liveBlocks;         /* blocks allocated and not freed */
  uint64_t liveBytes;          /* their bytes */
  uint64_t peakBytes;          /* the most that liveBytes ever was */
  uint64_t liveTrackedObjects; /* tracked and not untracked; device contexts and fonts too */
  uint64_t openHandles;        /* files, raw files, and memory files until they are ended */
  uint64_t reportedBytes;      /* bytes reported and not given back */
  uint64_t temporaryFiles;     /* different files created by the raw group and by temp names and
                                  not deleted */
  uint64_t allocationCalls;    /* calls of fault group 1 so far */
} PlainKernelUsageRecord;

/* Groups of calls that fail together; see PlainKernelFailAt and PlainKernelFailFrom. */
enum PlainKernelFaultGroup {
  PlainKernelFaultMemory = 1, /* KernelAlloc, KernelAllocZero, KernelRealloc */
  PlainKernelFaultOpen = 2,   /* KernelFileOpen, KernelRawFileCreate, KernelTempFileName,
                                 KernelMemFileOpen */
  PlainKernelFaultRead = 3, /* KernelFileRead, KernelFileReadLarge: one byte less than asked for */
  PlainKernelFaultWrite =
      4, /* KernelFileWrite, KernelFileWriteLarge, KernelRawFileWrite: likewise */
  PlainKernelFaultSeek = 5,  /* KernelFileSeek: all ones, and the position stays */
  PlainKernelFaultText = 6,  /* KernelWideToUtf8, KernelUtf8ToWide */
  PlainKernelFaultBudget = 7 /* KERNEL_MEMORY_WANT */
};

/* A Windows LANGID; 0x0409 to begin with. */
TARNBASE_API void PlainKernelSetLanguage(uint32_t langId);

/* 0, to begin with, is the temp-file route; 3 keeps all in memory. The mode of every thread, those
 * to come included; one that has a scope open takes it on when it leaves its last scope. */
TARNBASE_API void PlainKernelSetIoMode(int32_t mode);

/* Where KernelTempFileName puts files that name no directory. The path is copied; null means the
 * system's temporary directory. Files below it are reached through no link, as long as it is the
 * one that is set: it is not to be changed while calls run. It is not looked at before it is used:
 * one that does not exist, or that can hold no temporary files, makes KernelTempFileName fail
 * with StatusCreateFailed. On Windows a volume by its own name ("\\?\Volume{...}\") holds none;
 * name the directory through a drive or a server. */
TARNBASE_API void PlainKernelSetTempDirectory(const char16_t* path);

/* KERNEL_MEMORY_WANT beyond it is refused with StatusOutOfMemory. All ones, to begin with: no
 * limit. */
TARNBASE_API void PlainKernelSetMemoryBudget(uint64_t bytes);

/* The ordinal-th call of the group from now on fails, counting calls that fail on their own; calls
 * after it succeed again. Ordinal 0 ends the injection. The groups count independently. */
TARNBASE_API void PlainKernelFailAt(int32_t group, uint64_t ordinal);

/* Like PlainKernelFailAt, but all calls of the group after the ordinal-th fail too, until ordinal 0
 * ends it. A group has one injection at a time: each of the two calls replaces what the other set.
 */
TARNBASE_API void PlainKernelFailFrom(int32_t group, uint64_t ordinal);

TARNBASE_API void PlainKernelUsage(PlainKernelUsageRecord* out);

#ifdef __cplusplus
}
#endif

#endif
