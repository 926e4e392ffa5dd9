// RawFilesFixture.h - files of a scratch directory through the kernel's raw group.
#ifndef TARN_TESTS_KERNEL_RAWFILESFIXTURE_H
#define TARN_TESTS_KERNEL_RAWFILESFIXTURE_H

#include <string>

#include "Scratch.h"

namespace tarn::test {

class RawFiles : public Scratch {
 protected:
  static uint64_t Create(const std::u16string& path) {
    return KernelRawFileCreate(path.c_str(), 0);
  }
  static void Make(const std::u16string& path, const std::string& bytes) {
    const uint64_t handle = Create(path);
    ASSERT_NE(handle, KERNEL_BAD_HANDLE);
    EXPECT_EQ(KernelRawFileWrite(handle, bytes.data(), bytes.size(), 0), bytes.size());
    KernelRawFileClose(handle, 0);
  }
};

}  // namespace tarn::test

#endif
