// MemoryMail.h - bytes as an open kernel handle, for readers that take one.
#ifndef TARN_TESTS_SUPPORT_MEMORYMAIL_H
#define TARN_TESTS_SUPPORT_MEMORYMAIL_H

#include <cstdint>
#include <string_view>

namespace tarn::test {

// A memory file of the kernel with a copy of the bytes, its position at the start. Closed and freed
// with the object.
class MemoryMail {
 public:
  explicit MemoryMail(std::string_view bytes);
  MemoryMail(const MemoryMail&) = delete;
  MemoryMail& operator=(const MemoryMail&) = delete;
  ~MemoryMail();

  uint64_t handle() const { return handle_; }

 private:
  uint64_t handle_ = 0;
  void* state_ = nullptr;
};

}  // namespace tarn::test

#endif
