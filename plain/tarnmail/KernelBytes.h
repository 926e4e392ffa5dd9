// KernelBytes.h - owners for what the kernel and the filter hand to a host.
#ifndef TARN_TARNMAIL_KERNELBYTES_H
#define TARN_TARNMAIL_KERNELBYTES_H

#include <cstdint>
#include <string_view>
#include <utility>

#include "Tarnbase/Kernel.h"

namespace tarn::host {

// Frees a kernel block; null is fine.
inline void ReleaseBlock(void* block) {
  if (block != nullptr) KernelFree(block, __LINE__, u"KernelBytes.h");
}

// Bytes in a kernel block, which the filter gave away.
class KernelBytes {
 public:
  KernelBytes() = default;
  KernelBytes(void* block, uint64_t size) : block_(block), size_(size) {}
  KernelBytes(KernelBytes&& other) noexcept
      : block_(std::exchange(other.block_, nullptr)), size_(std::exchange(other.size_, 0)) {}
  KernelBytes& operator=(KernelBytes&&) = delete;
  ~KernelBytes() { ReleaseBlock(block_); }

  bool hasBlock() const { return block_ != nullptr; }
  std::string_view view() const {
    return block_ == nullptr ? std::string_view()
                             : std::string_view(static_cast<const char*>(block_), size_);
  }

 private:
  void* block_ = nullptr;
  uint64_t size_ = 0;
};

// A file that is open for reading in the kernel, or is not.
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

}  // namespace tarn::host

#endif
