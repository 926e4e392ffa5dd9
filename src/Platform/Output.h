// Output.h - where a conversion writes: into a destination of fixed capacity, or, with capacity 0,
// nowhere, to count. Does not own the destination.
#ifndef TARN_PLATFORM_OUTPUT_H
#define TARN_PLATFORM_OUTPUT_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "Platform/Utf8.h"

namespace tarn::platform {

template <typename Unit>
class Output {
 public:
  Output(Unit* destination, int32_t capacity) noexcept
      : destination_(destination), capacity_(capacity) {}

  // False when the destination has no room for it; then nothing is written.
  bool Put(Unit unit) noexcept {
    if (capacity_ != 0) {
      if (size_ == capacity_) return false;
      destination_[size_] = unit;
    }
    ++size_;
    return true;
  }
  bool PutCharacter(char32_t codePoint) noexcept {
    std::array<Unit, 4> units;
    const size_t count = WriteCharacter(codePoint, std::span<Unit>(units));
    for (size_t at = 0; at < count; ++at) {
      if (!Put(units[at])) return false;
    }
    return true;
  }

  // The size written or counted; 0 when it is no 32-bit length.
  int32_t Size() const noexcept { return size_ > INT32_MAX ? 0 : static_cast<int32_t>(size_); }

 private:
  Unit* destination_;
  int64_t capacity_;
  int64_t size_ = 0;
};

}  // namespace tarn::platform

#endif  // TARN_PLATFORM_OUTPUT_H
