// KernelArray.h - a growing array in one block of the kernel. Nothing throws: what needs memory
// tells whether it had it, and without memory the array is as it was.
//
// Elements are trivially copyable and move with the block. Pointers to them are valid until the
// array grows.
#ifndef TARN_COMMON_KERNELARRAY_H
#define TARN_COMMON_KERNELARRAY_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <type_traits>
#include <utility>

#include "Internal/KernelBlock.h"

namespace tarn {

template <typename T>
class KernelArray {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  KernelArray() = default;
  KernelArray(KernelArray&& other) noexcept
      : block_(std::move(other.block_)),
        size_(std::exchange(other.size_, 0)),
        capacity_(std::exchange(other.capacity_, 0)) {}
  KernelArray& operator=(KernelArray&& other) noexcept {
    KernelArray moved(std::move(other));
    std::swap(block_, moved.block_);
    std::swap(size_, moved.size_);
    std::swap(capacity_, moved.capacity_);
    return *this;
  }

  size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  size_t capacity() const { return capacity_; }

  T* data() { return block_.get(); }
  const T* data() const { return block_.get(); }
  T* begin() { return data(); }
  const T* begin() const { return data(); }
  T* end() { return data() + size_; }
  const T* end() const { return data() + size_; }
  T& operator[](size_t index) { return data()[index]; }
  const T& operator[](size_t index) const { return data()[index]; }
  T& back() { return data()[size_ - 1]; }
  const T& back() const { return data()[size_ - 1]; }

  // Room for `count` elements in all; where the array has to grow, for exactly as many.
  [[nodiscard]] bool reserve(size_t count) { return count <= capacity_ || setCapacity(count); }

  // Puts the element after the last; it may be one of the array's own. The room grows by half.
  [[nodiscard]] bool append(const T& element) {
    const T kept = element;
    if (size_ == capacity_ && !setCapacity(std::max(kFirstCapacity, capacity_ + capacity_ / 2))) {
      return false;
    }
    data()[size_++] = kept;
    return true;
  }

  // The same within the room there is.
  void put(const T& element) { data()[size_++] = element; }
  void put(std::span<const T> elements) {
    if (elements.empty()) return;
    std::memcpy(end(), elements.data(), elements.size_bytes());
    size_ += elements.size();
  }

  // Drops the elements from `size` on. The room stays.
  void truncate(size_t size) { size_ = size; }

  // Drops all elements and their room.
  void clear() { *this = KernelArray(); }

  // Gives back the room that no element needs, if the kernel takes it.
  void shrink() {
    if (size_ < capacity_) setCapacity(size_);
  }

  // Gives the block away. The array is empty afterwards.
  KernelBlock<T> take() {
    size_ = capacity_ = 0;
    return std::move(block_);
  }

 private:
  static constexpr size_t kFirstCapacity = 64;

  bool setCapacity(size_t capacity) {
    if (capacity > SIZE_MAX / sizeof(T)) return false;
    auto* const block =
        static_cast<T*>(KernelRealloc(block_.get(), capacity * sizeof(T), TARN_HERE));
    if (block == nullptr) return false;
    block_.take();
    block_.reset(block);
    capacity_ = capacity;
    return true;
  }

  KernelBlock<T> block_;
  size_t size_ = 0;
  size_t capacity_ = 0;
};

}  // namespace tarn

#endif
