#include "support/road/WholeFile.h"

#include "Tarnbase/Kernel.h"

namespace tarn::test {

std::optional<std::string> WholeFile(const char16_t* path) {
  const uint64_t handle = KernelFileOpen(path, KERNEL_OPEN_READ, KERNEL_OPEN_MODE);
  if (handle == KERNEL_BAD_HANDLE) return std::nullopt;
  std::optional<std::string> bytes;
  const uint64_t size = KernelFileSeek(handle, 0, KERNEL_SEEK_END);
  if (size != UINT64_MAX && KernelFileSeek(handle, 0, KERNEL_SEEK_START) == 0) {
    bytes.emplace(static_cast<size_t>(size), '\0');
    if (KernelFileReadLarge(handle, bytes->data(), size) != size) bytes.reset();
  }
  KernelFileClose(handle);
  return bytes;
}

}  // namespace tarn::test
