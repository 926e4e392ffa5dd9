// Tarnclasses_.h - the two containers that hold every large text and block of the filter.
//
//   SizedBytes        a text in a block of its own.
//   TrackedBuffer<T>  a growing array that tells the host's memory budget when it gets large.
//
// Both own their block and free it when they die; a text moves, neither copies. Nothing here
// throws.
#ifndef TARN_INTERNAL_TARNCLASSES_H
#define TARN_INTERNAL_TARNCLASSES_H

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>
#include <type_traits>
#include <utility>

#include "Internal/KernelBlock.h"
#include "Internal/Status.h"

namespace tarn {

// "Measure up to the NUL", for lengths of source texts.
inline constexpr uint64_t kNulTerminated = UINT64_MAX;

// The text less one trailing NUL, if it has one.
constexpr std::string_view WithoutTrailingNul(std::string_view text) {
  if (!text.empty() && text.back() == '\0') text.remove_suffix(1);
  return text;
}

// A text, UTF-8 unless its owner says otherwise, in one kernel block. Its length may count one
// trailing NUL: text() is what a reader wants, view() and length() are for those who hand the bytes
// on as they are. A text without a block is absent, which is not the same as one of length 0.
class SizedBytes {
 public:
  SizedBytes() = default;
  // Takes a block whose first `length` bytes are the text.
  SizedBytes(KernelBlock<char> block, uint64_t length)
      : block_(std::move(block)), length_(block_ ? length : 0) {}
  SizedBytes(SizedBytes&& other) noexcept
      : block_(std::move(other.block_)), length_(std::exchange(other.length_, 0)) {}
  SizedBytes& operator=(SizedBytes&& other) noexcept {
    block_ = std::move(other.block_);
    length_ = std::exchange(other.length_, 0);
    return *this;
  }

  // All bytes that the length counts.
  std::string_view view() const { return {block_.get(), length_}; }
  // The text: the bytes less one trailing NUL.
  std::string_view text() const { return WithoutTrailingNul(view()); }
  uint64_t length() const { return length_; }
  bool hasBlock() const { return static_cast<bool>(block_); }
  // Absent, of length 0, or nothing but one NUL.
  bool isEmptyText() const { return text().empty(); }

  // The block; null when the text is absent. Nothing need follow its `length()` bytes.
  char* data() { return block_.get(); }
  const char* data() const { return block_.get(); }

  // Adds to the text, less one trailing NUL, and sees that the result ends with a NUL that the
  // length counts; only one is ever added, so a source that ends with a NUL gets no second. The
  // source must not lie in the text's own block.
  //   StatusOk
  //   StatusOutOfMemory  the text is as it was
  Status append(std::string_view source);

  // Replaces `count` bytes at `position`. The new ones must not lie in the text's own block. A text
  // that grows gets a block of its new length; one that shrinks keeps its block.
  //   StatusOk
  //   StatusFailed  without memory, or for a range that is not wholly inside the text, which is
  //                 then as it was
  Status splice(uint64_t position, uint64_t count, std::string_view replacement);

  // Gives the text a block of `room` bytes, and has `write(char* block)` put what it likes into it
  // and say how many of them are the text's from then on. False without memory, and then nothing
  // has changed.
  template <typename Write>
  bool overwrite(uint64_t room, Write write) {
    return resizeBlock(room) && fill(room, write);
  }

  // The same in the block that the text has, if it is as long already; all its bytes are the
  // writer's then.
  template <typename Write>
  bool refill(uint64_t room, Write write) {
    if (block_ && room <= length_) return fill(length_, write);
    return overwrite(room, write);
  }

  // Resizes the block to the text and `spare` bytes after it. False without memory, and then it is
  // as it was.
  bool fitBlock(uint64_t spare = 0) {
    return spare <= UINT64_MAX - length_ && resizeBlock(length_ + spare);
  }

  // Takes a block in the place of the one it has.
  void adopt(KernelBlock<char> block, uint64_t length) {
    *this = SizedBytes(std::move(block), length);
  }

  // Cuts the text to `length` bytes, no more than it has. The block stays.
  void truncate(uint64_t length) {
    assert(length <= length_);
    length_ = length;
  }
  void clear() { length_ = 0; }

  // Gives the block away; the text is absent afterwards.
  KernelBlock<char> take() {
    length_ = 0;
    return std::move(block_);
  }
  // Frees the block.
  void release() { take(); }

 private:
  // A block that does not hold the text cuts it off. False without memory, and then all is as it
  // was.
  bool resizeBlock(uint64_t room) {
    void* const block = KernelRealloc(block_.get(), room, TARN_HERE);
    if (block == nullptr) return false;
    block_.take();
    block_.reset(static_cast<char*>(block));
    length_ = std::min(length_, room);
    return true;
  }

  template <typename Write>
  bool fill(uint64_t room, Write write) {
    const uint64_t length = write(block_.get());
    assert(length <= room);
    length_ = std::min(length, room);
    return true;
  }

  KernelBlock<char> block_;
  uint64_t length_ = 0;
};

// SizedBytes::append of `length` bytes of `source` (kNulTerminated: up to its NUL). A null source
// is an empty one.
Status AppendTerminated(SizedBytes& target, const char* source, uint64_t length = kNulTerminated);

// Replaces `removed` bytes at `offset` by `count` new ones: SizedBytes::splice.
Status SpliceBytes(SizedBytes& text, uint64_t offset, uint64_t removed, const char* bytes,
                   uint64_t count);

// The accounting part of a TrackedBuffer: the host hears of a buffer once it passes the threshold.
struct MemoryMeter {
  uint64_t current = 0;  // bytes held now
  uint64_t threshold = 8000000;
  uint32_t reported = 0;  // 1 once the host knows about this buffer

  // Tells the host as needed that the buffer now holds `bytes`. StatusOk, or the host's refusal;
  // then nothing has changed.
  Status set(uint64_t bytes);
};

// A growing array of trivially copyable elements. Without a block its length is 0.
template <typename T>
class TrackedBuffer {
  static_assert(std::is_trivially_copyable_v<T>);

 public:
  // Room for `initialCount` elements at once, as reserve() makes it. `increment`: the spare
  // elements of each growth. `zeroFill`: 1 clears new elements.
  explicit TrackedBuffer(uint64_t initialCount = 0, uint64_t increment = 1024,
                         uint32_t zeroFill = 0)
      : increment_(increment), firstIncrement_(increment), zeroFill_(zeroFill) {
    if (initialCount != 0) reserve(initialCount);
  }
  TrackedBuffer(const TrackedBuffer&) = delete;
  TrackedBuffer& operator=(const TrackedBuffer&) = delete;
  ~TrackedBuffer() { release(); }

  T* data() { return block_.get(); }
  const T* data() const { return block_.get(); }
  uint64_t length() const { return length_; }
  uint64_t capacity() const { return capacity_; }
  bool hasBlock() const { return static_cast<bool>(block_); }
  T& operator[](uint64_t index) const { return block_[index]; }
  std::span<T> elements() { return {block_.get(), length_}; }
  std::span<const T> elements() const { return {block_.get(), length_}; }
  // The elements of a buffer of characters.
  std::basic_string_view<T> view() const { return {block_.get(), length_}; }

  uint64_t increment() const { return increment_; }
  // What increment() was at first, for tests.
  uint64_t firstIncrement() const { return firstIncrement_; }
  uint32_t zeroFill() const { return zeroFill_; }
  uint32_t growthCount() const { return growthCount_; }  // growths since `increment` last doubled
  const MemoryMeter& meter() const { return meter_; }
  // Of the last failure; before the first one, StatusOutOfMemory.
  Status lastError() const { return lastError_; }
  // For tests that tell a failure from the one before.
  void setLastError(Status status) { lastError_ = status; }
  // From how many bytes on the host is told.
  void setThreshold(uint64_t bytes) { meter_.threshold = bytes; }

  // Room for `count` elements in all. Returns the block, or null with lastError() set: without
  // memory the contents stay; a refusal by the host's budget frees the block, and the next call
  // starts again from nothing. Never shrinks. The request is not rounded and the old capacity plays
  // no part in the new one.
  T* reserve(uint64_t count);

  // Adds elements at the end. StatusOk; StatusNullArgument for a null source with a count; else
  // lastError().
  Status append(const T* source, uint64_t count) {
    if (count == 0) return StatusOk;
    if (source == nullptr) return StatusNullArgument;
    if (count > UINT64_MAX - length_) return lastError_ = StatusOutOfMemory;
    if (reserve(length_ + count) == nullptr) return lastError_;
    std::memcpy(block_.get() + length_, source, count * sizeof(T));
    length_ += count;
    return StatusOk;
  }
  Status append(std::span<const T> source) { return append(source.data(), source.size()); }

  // How many of the elements that there is room for are in use.
  void setLength(uint64_t length) {
    assert(length <= capacity_);
    length_ = length;
  }
  void clear() { length_ = 0; }

  // Takes a block with room for `capacity` elements, of which `length` are in use, in the place of
  // its own. The host does not hear of it until the buffer grows.
  void adopt(KernelBlock<T> block, uint64_t length, uint64_t capacity) {
    release();
    replaceBlock(std::move(block), length, capacity);
  }

  // The same, and the host goes on to count what it counted.
  void replaceBlock(KernelBlock<T> block, uint64_t length, uint64_t capacity) {
    block_ = std::move(block);
    length_ = block_ ? length : 0;
    capacity_ = block_ ? capacity : 0;
  }

  // Gives back what the block holds beyond the elements in use when that is more than 32 bytes. The
  // block stays as it is when it cannot be resized, and the host is not told.
  void shrinkToFit() {
    if ((capacity_ - length_) * sizeof(T) <= 32) return;
    void* const smaller = KernelRealloc(block_.get(), length_ * sizeof(T), TARN_HERE);
    if (smaller == nullptr) return;
    block_.take();
    block_.reset(static_cast<T*>(smaller));
    capacity_ = length_;
  }

  // Has the host count `bytes` for the block, whatever it holds. StatusOk, or the host's refusal;
  // then nothing has changed.
  Status count(uint64_t bytes) { return meter_.set(bytes); }

  // Gives the block away; the buffer is empty afterwards and the host no longer counts it.
  KernelBlock<T> take() {
    meter_.set(0).ignore();
    length_ = 0;
    capacity_ = 0;
    return std::move(block_);
  }

  // Lets go of a block that is somebody else's by now: take(), and nothing is freed.
  void abandon() { take().take(); }

  // Frees the block; also done by the destructor.
  void release() { take(); }

 private:
  KernelBlock<T> block_;
  uint64_t length_ = 0;      // elements in use
  uint64_t capacity_ = 0;    // elements allocated
  uint64_t increment_;       // spare elements of a growth
  uint64_t firstIncrement_;  // what that was at first
  uint32_t zeroFill_;
  Status lastError_ = StatusOutOfMemory;
  MemoryMeter meter_;
  uint32_t growthCount_ = 0;
};

template <typename T>
T* TrackedBuffer<T>::reserve(uint64_t count) {
  if (block_ && capacity_ >= count) return block_.get();

  const uint64_t newCapacity = increment_ + count;
  const bool fits = newCapacity >= count && newCapacity <= UINT64_MAX / sizeof(T);
  const uint64_t bytes = fits ? newCapacity * sizeof(T) : UINT64_MAX;
  void* const block = fits ? KernelRealloc(block_.get(), bytes, TARN_HERE) : nullptr;
  if (block == nullptr) {
    lastError_ = Status::FromCode(KernelMemoryReport(KERNEL_MEMORY_FAILED, bytes, 0));
    if (lastError_.ok()) lastError_ = StatusOutOfMemory;
    return nullptr;
  }
  block_.take();
  block_.reset(static_cast<T*>(block));
  if (const Status granted = meter_.set(bytes); !granted.ok()) {
    lastError_ = granted;
    block_.reset();
    length_ = 0;
    capacity_ = 0;
    return nullptr;
  }
  if (zeroFill_ != 0) {
    std::memset(block_.get() + capacity_, 0, (newCapacity - capacity_) * sizeof(T));
  }
  capacity_ = newCapacity;
  if (++growthCount_ > 20) {
    increment_ *= 2;
    growthCount_ = 0;
  }
  return block_.get();
}

// Prints after the text in `buffer`, with a NUL that its length does not count. `flag` is the
// success of all calls so far: once 0, every call does nothing and gives 0. A null format gives 0
// and leaves the flag. 1 or 0.
[[gnu::format(printf, 3, 4)]] int32_t AppendFormat(TrackedBuffer<char>& buffer, int32_t& flag,
                                                   const char* format, ...);

}  // namespace tarn

#endif
