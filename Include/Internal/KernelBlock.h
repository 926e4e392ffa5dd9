// KernelBlock.h - the owner of one block of KernelAlloc, KernelAllocZero or KernelRealloc, and the
// source location that every allocation carries.
#ifndef TARN_INTERNAL_KERNELBLOCK_H
#define TARN_INTERNAL_KERNELBLOCK_H

#include <cstdint>
#include <utility>

#include "Tarnbase/Kernel.h"

// Two arguments: line and wide file name.
#define TARN_HERE __LINE__, (u"" __FILE__)

namespace tarn {

// Owner of one plain kernel block.
template <typename T>
class KernelBlock {
 public:
  KernelBlock() = default;
  explicit KernelBlock(T* block) : block_(block) {}
  KernelBlock(KernelBlock&& other) noexcept : block_(other.take()) {}
  KernelBlock& operator=(KernelBlock&& other) noexcept {
    if (this != &other) reset(other.take());
    return *this;
  }
  ~KernelBlock() { reset(); }

  T* get() const { return block_; }
  T& operator[](uint64_t index) const { return block_[index]; }
  explicit operator bool() const { return block_ != nullptr; }

  // Gives the block away.
  T* take() { return std::exchange(block_, nullptr); }

  void reset(T* block = nullptr) {
    if (block_ != nullptr) KernelFree(block_, TARN_HERE);
    block_ = block;
  }

 private:
  T* block_ = nullptr;
};

// `count` elements, contents undefined, or an empty owner when memory is out.
template <typename T>
KernelBlock<T> AllocateBlock(uint64_t count, int32_t line, const char16_t* file) {
  return KernelBlock<T>(static_cast<T*>(KernelAlloc(count, sizeof(T), line, file)));
}

// The same, zero filled.
template <typename T>
KernelBlock<T> AllocateZeroBlock(uint64_t count, int32_t line, const char16_t* file) {
  return KernelBlock<T>(static_cast<T*>(KernelAllocZero(count, sizeof(T), line, file)));
}

}  // namespace tarn

#endif
