// KernelFile.h - a file that is open for reading in the kernel, and its bytes.
#ifndef TARN_TARNMAIL_KERNELFILE_H
#define TARN_TARNMAIL_KERNELFILE_H

#include <cstdint>
#include <string>

#include "Tarnbase/Kernel.h"

namespace tarn::host {

// A file that is open, or is not.
class KernelFile {
 public:
  explicit KernelFile(const char16_t* path)
      : handle_(KernelFileOpen(path, KERNEL_OPEN_READ, KERNEL_OPEN_MODE)) {}
  KernelFile(const KernelFile&) = delete;
  KernelFile& operator=(const KernelFile&) = delete;
  ~KernelFile() {
    if (isOpen()) KernelFileClose(handle_);
  }

  bool isOpen() const { return handle_ != KERNEL_BAD_HANDLE; }
  uint64_t handle() const { return handle_; }

 private:
  uint64_t handle_;
};

// The whole file in `bytes`. May throw std::bad_alloc.
//   StatusOk            it was read;
//   StatusOpenFailed    it cannot be opened;
//   StatusSeekFailed    it cannot be measured;
//   StatusReadFailed    it gives less than its size.
int32_t ReadWholeFile(const char16_t* path, std::string& bytes);

// The first bytes of the file, `most` of them or all that there are; none when it cannot be opened.
std::string ReadFront(const char16_t* path, uint32_t most);

}  // namespace tarn::host

#endif
