// KernelAllocator.h - standard containers in the kernel's memory. They throw std::bad_alloc when
// the kernel has none; layers that answer with statuses catch it where they are entered.
#ifndef TARN_COMMON_KERNELALLOCATOR_H
#define TARN_COMMON_KERNELALLOCATOR_H

#include <cstddef>
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "Internal/Tarnclasses_.h"

namespace tarn {

template <typename T>
class KernelAllocator {
 public:
  using value_type = T;

  KernelAllocator() noexcept = default;
  template <typename U>
  KernelAllocator(const KernelAllocator<U>&) noexcept {}

  T* allocate(size_t count) {
    // NOLINTNEXTLINE(bugprone-sizeof-expression): elements may be pointers
    void* const block = KernelAlloc(count, sizeof(T), TARN_HERE);
    if (block == nullptr) throw std::bad_alloc();
    return static_cast<T*>(block);
  }
  void deallocate(T* block, size_t) noexcept { KernelFree(block, TARN_HERE); }

  friend bool operator==(const KernelAllocator&, const KernelAllocator&) { return true; }
};

template <typename T>
using KernelVector = std::vector<T, KernelAllocator<T>>;
using KernelString = std::basic_string<char, std::char_traits<char>, KernelAllocator<char>>;

}  // namespace tarn

#endif
