// GuardedBytes.h - a block of bytes between two pages that cannot be touched: whoever reads or
// writes one byte before it or after it faults.
#ifndef TARN_TESTS_SUPPORT_GUARDEDBYTES_H
#define TARN_TESTS_SUPPORT_GUARDEDBYTES_H

#include <cstddef>

namespace tarn::test {

class GuardedBytes {
 public:
  // At least `size` bytes, all 0, filled up to whole pages. Throws std::runtime_error when the
  // system refuses.
  explicit GuardedBytes(size_t size);
  GuardedBytes(const GuardedBytes&) = delete;
  GuardedBytes& operator=(const GuardedBytes&) = delete;
  ~GuardedBytes();

  char* begin() { return base_ + page_; }
  char* end() { return begin() + inside_; }

 private:
  size_t page_;
  size_t inside_;
  char* base_ = nullptr;  // of the page in front
};

}  // namespace tarn::test

#endif
