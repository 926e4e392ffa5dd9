#include "support/FaultSweep.h"

namespace tarn::test {

void Fault::set() const {
  andAllAfter ? PlainKernelFailFrom(group, ordinal) : PlainKernelFailAt(group, ordinal);
}

void Fault::end() const { PlainKernelFailAt(group, 0); }

std::string Describe(const Fault& fault) {
  static constexpr const char* kNames[] = {"none",  "memory", "open", "read",
                                           "write", "seek",   "text", "budget"};
  return kNames[fault.group] + std::string(" call ") + std::to_string(fault.ordinal) +
         (fault.andAllAfter ? " and all after it" : "");
}

std::string HeldByKernel() {
  PlainKernelUsageRecord usage = {};
  PlainKernelUsage(&usage);
  std::string text;
  const auto add = [&text](const char* what, uint64_t count) {
    text += what + std::string(" ") + std::to_string(count) + " ";
  };
  add("blocks", usage.liveBlocks);
  add("bytes", usage.liveBytes);
  add("objects", usage.liveTrackedObjects);
  add("handles", usage.openHandles);
  add("reported", usage.reportedBytes);
  add("temporary", usage.temporaryFiles);
  return text;
}

FaultProbe::FaultProbe() {
  EXPECT_EQ(KernelMemFileOpen(&handle_, &state_, KERNEL_MEMFILE_EMPTY, nullptr, 0, 0), 1);
  // One byte to read and to write again, so that the file needs no memory later.
  EXPECT_EQ(KernelFileWrite(handle_, "x", 1), 1u);
}

FaultProbe::~FaultProbe() {
  void* block = nullptr;
  uint64_t length = 0;
  KernelFileClose(handle_);
  KernelMemFileClose(state_, &block, &length, nullptr);
  if (block != nullptr) KernelFree(block, 1, u"probe");
}

bool FaultProbe::isAhead(int32_t group) {
  for (int call = 0; call < kFarthest; ++call) {
    if (fails(group)) return true;
  }
  return false;
}

bool FaultProbe::fails(int32_t group) {
  char byte = 'x';
  char16_t unit = u'x';
  switch (group) {
    case PlainKernelFaultMemory: {
      void* const block = KernelAlloc(1, 1, 1, u"probe");
      if (block != nullptr) KernelFree(block, 1, u"probe");
      return block == nullptr;
    }
    case PlainKernelFaultOpen: {
      uint64_t handle = 0;
      void* state = nullptr;
      if (KernelMemFileOpen(&handle, &state, KERNEL_MEMFILE_EMPTY, nullptr, 0, 0) != 1) return true;
      KernelFileClose(handle);
      KernelMemFileClose(state, nullptr, nullptr, nullptr);
      return false;
    }
    case PlainKernelFaultRead:
      KernelFileSeek(handle_, 0, KERNEL_SEEK_START);
      return KernelFileRead(handle_, &byte, 1) != 1;
    case PlainKernelFaultWrite:
      KernelFileSeek(handle_, 0, KERNEL_SEEK_START);
      return KernelFileWrite(handle_, &byte, 1) != 1;
    case PlainKernelFaultSeek:
      return KernelFileSeek(handle_, 0, KERNEL_SEEK_START) != 0;
    case PlainKernelFaultText:
      return KernelUtf8ToWide(&byte, 1, &unit, 1) != 1;
    default:
      if (KernelMemoryReport(KERNEL_MEMORY_WANT, 1, 0) != 1) return true;
      KernelMemoryReport(KERNEL_MEMORY_RETURN, 1, 0);
      return false;
  }
}

}  // namespace tarn::test
