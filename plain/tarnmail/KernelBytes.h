// KernelBytes.h - owners for what the filter hands to a host.
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

}  // namespace tarn::host

#endif
