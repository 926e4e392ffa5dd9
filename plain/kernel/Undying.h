// Undying.h - process-wide objects that are made on first use and never destroyed: the host may
// still call the kernel while the process ends. Their memory is static, so making one cannot fail.
#ifndef TARN_KERNEL_UNDYING_H
#define TARN_KERNEL_UNDYING_H

#include <cstddef>
#include <new>

namespace tarn::kernel {

template <typename T>
T& Undying() {
  alignas(T) static std::byte storage[sizeof(T)];
  static T* const object = ::new (static_cast<void*>(storage)) T;
  return *object;
}

}  // namespace tarn::kernel

#endif
