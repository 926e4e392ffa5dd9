// Output.h - where a conversion writes: into a destination or, where that is empty, nowhere, to
// count.
#ifndef TARN_PLATFORM_OUTPUT_H
#define TARN_PLATFORM_OUTPUT_H

#include <cstddef>
#include <cstdint>
#include <span>

namespace tarn::platform {

template <typename Unit>
class Output {
 public:
  explicit Output(std::span<Unit> destination) noexcept : destination_(destination) {}

  // False when the destination is full; then nothing is written.
  bool Put(Unit unit) noexcept {
    if (!destination_.empty()) {
      if (size_ == destination_.size()) return false;
      destination_[size_] = unit;
    }
    ++size_;
    return true;
  }

  // The size written or counted; 0 when it is beyond INT32_MAX.
  size_t Size() const noexcept { return size_ > INT32_MAX ? 0 : size_; }

 private:
  std::span<Unit> destination_;
  size_t size_ = 0;
};

}  // namespace tarn::platform

#endif  // TARN_PLATFORM_OUTPUT_H
