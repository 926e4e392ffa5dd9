// FilesFixture.h - files of a scratch directory through the kernel's host I/O.
#ifndef TARN_TESTS_KERNEL_FILESFIXTURE_H
#define TARN_TESTS_KERNEL_FILESFIXTURE_H

#include <string>

#include "Scratch.h"

namespace tarn::test {

class Files : public Scratch {
 protected:
  uint64_t Open(const std::string& name) { return OpenPath(WidePathOf(name)); }
  uint64_t Create(const std::string& name) { return CreatePath(WidePathOf(name)); }
  static uint64_t OpenPath(const std::u16string& path) {
    return KernelFileOpen(path.c_str(), KERNEL_OPEN_READ, KERNEL_OPEN_MODE);
  }
  static uint64_t CreatePath(const std::u16string& path) {
    return KernelFileOpen(path.c_str(), KERNEL_OPEN_CREATE, KERNEL_OPEN_MODE);
  }
  // What the file of this path holds, read through the kernel.
  static std::string ReadAll(uint64_t handle) {
    char bytes[256];
    const uint32_t count = KernelFileRead(handle, bytes, sizeof bytes);
    KernelFileClose(handle);
    return std::string(bytes, count);
  }
};

}  // namespace tarn::test

#endif
