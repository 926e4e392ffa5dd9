// Tarnclasses_.h - the two containers that hold every large text and block of the filter, and the
// small owner for all other kernel blocks.
//
//   SizedBytes        a block and its exact length; the length may count one trailing NUL.
//   TrackedBuffer<T>  a growing array that tells the host's memory budget when it gets large.
//   KernelBlock<T>    any other block of KernelAlloc, KernelAllocZero or KernelRealloc.
//
// All three own their block, free it when they die, move but never copy. Statuses are those of
// TarnPst.h: 1 success, else a failure code. Nothing here throws.
#ifndef TARN_INTERNAL_TARNCLASSES_H
#define TARN_INTERNAL_TARNCLASSES_H

#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>
#include <utility>

#include "TarnPst.h"
#include "Tarnbase/Kernel.h"

// The source location that every allocation carries: two arguments, line and wide file name.
#define TARN_HERE __LINE__, (u"" __FILE__)

namespace tarn {

// "Measure up to the NUL", for lengths of source texts.
inline constexpr uint64_t kNulTerminated = UINT64_MAX;

// The text less one trailing NUL, if it has one.
constexpr std::string_view WithoutTrailingNul(std::string_view text) {
  if (!text.empty() && text.back() == '\0') text.remove_suffix(1);
  return text;
}

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

struct SizedBytes {
  char* data = nullptr;
  uint64_t length = 0;

  SizedBytes() = default;
  SizedBytes(SizedBytes&& other) noexcept { swap(other); }
  SizedBytes& operator=(SizedBytes&& other) noexcept {
    if (this != &other) {
      release();
      swap(other);
    }
    return *this;
  }
  ~SizedBytes() { release(); }

  void swap(SizedBytes& other) noexcept {
    std::swap(data, other.data);
    std::swap(length, other.length);
  }

  // All bytes that the length counts.
  std::string_view bytes() const {
    return data == nullptr ? std::string_view() : std::string_view(data, length);
  }
  // The text: the bytes less one trailing NUL.
  std::string_view text() const { return WithoutTrailingNul(bytes()); }

  // Absent, of length 0, or nothing but one terminating NUL.
  bool isEmptyText() const { return text().empty(); }

  void release();
};

// Appends `length` bytes of `source` (kNulTerminated: up to its NUL) behind the target's text, and
// sees that the result ends with a NUL that the length counts; only one is ever added, so a source
// that ends with a NUL gets no second. A null source is an empty one. 1, or -1 without memory, and
// then nothing has changed.
int32_t AppendTerminated(SizedBytes& target, const char* source, uint64_t length = kNulTerminated);

// The accounting part of a TrackedBuffer: the host hears of a buffer once it passes the threshold.
struct MemoryMeter {
  uint64_t current = 0;  // bytes held now
  uint64_t threshold = 8000000;
  uint32_t reported = 0;  // 1 once the host knows about this buffer

  // Tells the host as needed that the buffer now holds `bytes`. 1, or the host's refusal; then
  // nothing has changed.
  int32_t set(uint64_t bytes);
};

// A growing array of trivially copyable elements. `length` is its users' affair: they set it after
// writing into what reserve() gave.
template <typename T>
struct TrackedBuffer {
  static_assert(std::is_trivially_copyable_v<T>);

  T* data = nullptr;
  uint64_t length = 0;    // elements in use
  uint64_t capacity = 0;  // elements allocated
  uint64_t increment;     // spare elements added on each growth
  uint32_t zeroFill;      // 1: new elements are cleared
  int32_t lastError = StatusOutOfMemory;
  MemoryMeter meter;
  uint64_t firstIncrement;
  uint32_t growthCount = 0;  // growths since `increment` last doubled

  explicit TrackedBuffer(uint64_t initialCount = 0, uint64_t increment_ = 1024,
                         uint32_t zeroFill_ = 0)
      : increment(increment_), zeroFill(zeroFill_), firstIncrement(increment_) {
    if (initialCount != 0) reserve(initialCount);
  }
  TrackedBuffer(const TrackedBuffer&) = delete;
  TrackedBuffer& operator=(const TrackedBuffer&) = delete;
  ~TrackedBuffer() { release(); }

  // Room for `count` elements in all. Returns the block, or null with `lastError` set: without
  // memory the contents stay; a refusal by the host's budget frees the block, and the next call
  // starts again from nothing (`length` is left to the users even then). Never shrinks. The request
  // is not rounded and the old capacity plays no part in the new one.
  T* reserve(uint64_t count);

  // Frees the block; also done by the destructor.
  void release();

  // Gives the block away; the buffer is empty afterwards and the host no longer counts it.
  T* take() {
    meter.set(0);
    length = 0;
    capacity = 0;
    return std::exchange(data, nullptr);
  }

  // Behind the elements in use, writes `count` more and counts them. 1; -814 for a null source
  // with a count; else `lastError`. Without a block no element is in use.
  int32_t append(const T* source, uint64_t count) {
    if (count == 0) return StatusOk;
    if (source == nullptr) return StatusNullArgument;
    if (data == nullptr) length = 0;
    if (count > UINT64_MAX - length) return lastError = StatusOutOfMemory;
    if (reserve(length + count) == nullptr) {
      if (data == nullptr) length = 0;
      return lastError;
    }
    std::memcpy(data + length, source, count * sizeof(T));
    length += count;
    return StatusOk;
  }
};

template <typename T>
T* TrackedBuffer<T>::reserve(uint64_t count) {
  if (data != nullptr && capacity >= count) return data;

  const uint64_t newCapacity = increment + count;
  const bool fits = newCapacity >= count && newCapacity <= UINT64_MAX / sizeof(T);
  const uint64_t bytes = fits ? newCapacity * sizeof(T) : UINT64_MAX;
  T* const block = fits ? static_cast<T*>(KernelRealloc(data, bytes, TARN_HERE)) : nullptr;
  if (block == nullptr) {
    const int32_t code = KernelMemoryReport(KERNEL_MEMORY_FAILED, bytes, 0);
    lastError = code == StatusOk ? StatusOutOfMemory : code;
    return nullptr;
  }
  data = block;
  const int32_t granted = meter.set(bytes);
  if (granted != StatusOk) {
    lastError = granted;
    KernelFree(data, TARN_HERE);
    data = nullptr;
    capacity = 0;
    return nullptr;
  }
  if (zeroFill != 0) std::memset(data + capacity, 0, (newCapacity - capacity) * sizeof(T));
  capacity = newCapacity;
  if (++growthCount > 20) {
    increment *= 2;
    growthCount = 0;
  }
  return data;
}

template <typename T>
void TrackedBuffer<T>::release() {
  meter.set(0);
  if (data != nullptr) KernelFree(data, TARN_HERE);
  data = nullptr;
  length = 0;
  capacity = 0;
  if (meter.reported != 0 && meter.current != 0) {
    KernelMemoryReport(KERNEL_MEMORY_RETURN, meter.current, 0);
  }
}

// Prints behind the text in `buffer`, with a NUL that its length does not count. `flag` is the
// success of all calls so far: once 0, every call does nothing and gives 0. A null format gives 0
// and leaves the flag. 1 or 0.
[[gnu::format(printf, 3, 4)]] int32_t AppendFormat(TrackedBuffer<char>& buffer, int32_t& flag,
                                                   const char* format, ...);

}  // namespace tarn

#endif
