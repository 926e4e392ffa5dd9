// ApiUtils.h - text conversions and guards around kernel handles.
//
// A conversion owns the text it made, in a kernel block, until it dies; texts end at their first
// NUL, and a null text counts as the empty one. A guard closes what it holds when it dies,
// whichever way its scope is left.
#ifndef TARN_COMMON_APIUTILS_H
#define TARN_COMMON_APIUTILS_H

#include <span>
#include <string_view>

#include "Internal/Tarnclasses_.h"

namespace tarn {

// The number of units before the NUL.
uint64_t WideLength(const char16_t* text);

// All of a UTF-8 text as UTF-16, in room for more units than the text has bytes. Zeros follow it,
// so that it ends where the conversion does: not every kernel tells how many units it wrote. False
// when the text is no UTF-8; then the room has anything.
bool ConvertToWide(std::string_view utf8, std::span<char16_t> room);

// All of a UTF-16 text as UTF-8, and the number of bytes; 0 when the kernel converts none.
uint64_t ConvertToUtf8(std::u16string_view wide, std::span<char> room);

// The wide form of a UTF-8 text. The empty text converts to the empty text without an allocation.
class WideText {
 public:
  explicit WideText(const char* utf8);
  // Null unless the status is StatusOk.
  const char16_t* get() const { return text_; }
  //   StatusOk
  //   StatusOutOfMemory
  //   StatusPathFromUtf8Failed  the text is no UTF-8
  Status status() const { return status_; }

 private:
  KernelBlock<char16_t> block_;
  const char16_t* text_ = nullptr;
  Status status_;
};

// The UTF-8 form of a wide text, likewise.
class Utf8Text {
 public:
  explicit Utf8Text(const char16_t* wide);
  const char* get() const { return text_; }
  //   StatusOk
  //   StatusOutOfMemory
  //   StatusPathToUtf8Failed
  Status status() const { return status_; }

 private:
  KernelBlock<char> block_;
  const char* text_ = nullptr;
  Status status_;
};

// Closes a file on every way out.
class FileGuard {
 public:
  enum Mode : int32_t { Read = 0, Write = 1, ReadWrite = 2, Raw = 3 };

  explicit FileGuard(Mode mode, uint64_t handle = KERNEL_BAD_HANDLE)
      : mode_(mode), handle_(handle) {}
  FileGuard(const FileGuard&) = delete;
  FileGuard& operator=(const FileGuard&) = delete;
  ~FileGuard() { close(); }

  uint64_t handle() const { return handle_; }
  bool isOpen() const { return handle_ != KERNEL_BAD_HANDLE; }
  void close();
  // Leaves the file open.
  void abandon() { handle_ = KERNEL_BAD_HANDLE; }

 private:
  Mode mode_;
  uint64_t handle_;
};

// Ends a memory file on every way out, its handle having been closed before. `block` is the
// address of the caller's pointer to the block: when the pointer still holds what it held at the
// opening, it takes the block as the memory file leaves it; when not, the state alone is discarded.
class MemoryFileGuard {
 public:
  MemoryFileGuard() = default;
  MemoryFileGuard(const MemoryFileGuard&) = delete;
  MemoryFileGuard& operator=(const MemoryFileGuard&) = delete;
  ~MemoryFileGuard() { end(); }

  // Takes over a state of KernelMemFileOpen.
  void open(void* state, void** block);
  void end();
  // Of the block, once ended.
  uint64_t length() const { return length_; }
  uint64_t capacity() const { return capacity_; }

 private:
  void* state_ = nullptr;
  bool open_ = false;
  void** block_ = nullptr;
  void* opened_ = nullptr;
  uint64_t length_ = 0;
  uint64_t capacity_ = 0;
};

}  // namespace tarn

#endif
