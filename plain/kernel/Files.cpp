// The files of the host's I/O: the operations on handles of host files and memory files.
#include "Faults.h"
#include "Fence.h"
#include "Handles.h"
#include "Paths.h"
#include "SystemFiles.h"
#include "Tarnbase/Kernel.h"

namespace tarn::kernel {
namespace {

std::shared_ptr<OpenFile> OpenByFlags(const std::string& path, int32_t flags) {
  if (path.empty()) return nullptr;
  if (flags == KERNEL_OPEN_READ) return OpenForReading(path);
  if (flags == KERNEL_OPEN_CREATE) return OpenForWriting(path);
  return nullptr;
}

// An injected fault moves one byte less than asked for.
uint64_t CountAfterFault(PlainKernelFaultGroup group, uint64_t count) {
  return FaultDue(group) && count != 0 ? count - 1 : count;
}

uint64_t ReadHandle(uint64_t handle, void* buffer, uint64_t count) {
  count = CountAfterFault(PlainKernelFaultRead, count);
  const std::shared_ptr<OpenFile> file = FileOfHandle(HandleGroup::Host, handle);
  if (file == nullptr || buffer == nullptr) return 0;
  return file->Read({static_cast<char*>(buffer), count});
}

uint64_t WriteHandle(HandleGroup group, uint64_t handle, const void* buffer, uint64_t count) {
  count = CountAfterFault(PlainKernelFaultWrite, count);
  const std::shared_ptr<OpenFile> file = FileOfHandle(group, handle);
  if (file == nullptr || buffer == nullptr) return 0;
  return file->Write({static_cast<const char*>(buffer), count});
}

}  // namespace
}  // namespace tarn::kernel

using namespace tarn::kernel;

uint64_t KernelFileOpen(const char16_t* path, int32_t flags, int32_t /*mode*/) {
  if (FaultDue(PlainKernelFaultOpen)) return KERNEL_BAD_HANDLE;
  return Fenced<uint64_t>(KERNEL_BAD_HANDLE, [&] {
    return GiveHandle(HandleGroup::Host, OpenByFlags(PathFromWide(path), flags));
  });
}

void KernelFileClose(uint64_t handle) { DropHandle(HandleGroup::Host, handle); }

uint32_t KernelFileRead(uint64_t handle, void* buffer, uint32_t count) {
  return static_cast<uint32_t>(ReadHandle(handle, buffer, count));
}

uint64_t KernelFileReadLarge(uint64_t handle, void* buffer, uint64_t count) {
  return ReadHandle(handle, buffer, count);
}

uint32_t KernelFileWrite(uint64_t handle, const void* buffer, uint32_t count) {
  return static_cast<uint32_t>(WriteHandle(HandleGroup::Host, handle, buffer, count));
}

uint64_t KernelFileWriteLarge(uint64_t handle, const void* buffer, uint64_t count) {
  return WriteHandle(HandleGroup::Host, handle, buffer, count);
}

uint64_t KernelFileSeek(uint64_t handle, int64_t offset, int32_t origin) {
  if (FaultDue(PlainKernelFaultSeek)) return UINT64_MAX;
  const std::shared_ptr<OpenFile> file = FileOfHandle(HandleGroup::Host, handle);
  return file == nullptr ? UINT64_MAX : file->Seek(offset, origin);
}

uint64_t KernelRawFileWrite(uint64_t handle, const void* buffer, uint64_t count,
                            int32_t /*reserved*/) {
  return WriteHandle(HandleGroup::Raw, handle, buffer, count);
}

void KernelRawFileClose(uint64_t handle, int32_t /*reserved*/) {
  DropHandle(HandleGroup::Raw, handle);
}

int32_t KernelMapLastError(int32_t fallback) { return fallback; }
