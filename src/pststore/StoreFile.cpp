#include "pststore/StoreFile.h"

#include <algorithm>
#include <stdexcept>

#include "pststore/Errors.h"

namespace pststore {

namespace {

constexpr ulonglong seek_failed = std::numeric_limits<ulonglong>::max();

// What all reads together may take, beside a part in proportion to the file.
constexpr ulonglong free_bytes = ulonglong{1} << 30;
constexpr ulonglong bytes_per_file_byte = 64;

// What a read counts at least: reading little takes time, too.
constexpr ulonglong least_bytes = 2048;

}  // namespace

store_file::store_file(const char16_t* path)
    : path_(path), handle_(KernelFileOpen(path_.c_str(), KERNEL_OPEN_READ, KERNEL_OPEN_MODE)) {
  if (handle_ == KERNEL_BAD_HANDLE) throw std::runtime_error("fopen failed");
}

store_file::~store_file() { KernelFileClose(handle_); }

void store_file::expect_budget(size_t bytes) {
  const ulonglong taken = taken_ + bytes;
  if (taken <= free_bytes) return;
  if ((taken - free_bytes) / bytes_per_file_byte > get_size()) {
    throw database_corrupt("the same data is read too often");
  }
}

void store_file::count(size_t bytes) {
  expect_budget(bytes);
  taken_ += bytes;
}

void store_file::read(std::span<unsigned char> buffer, ulonglong address) {
  expect_budget(buffer.size());
  // An address of all ones, which only a damaged file has, looks like the answer of a failed seek.
  const ulonglong position =
      KernelFileSeek(handle_, static_cast<int64_t>(address), KERNEL_SEEK_START);
  if (position != address || position == seek_failed) throw std::out_of_range("fseek failed");
  const ulonglong done = KernelFileReadLarge(handle_, buffer.data(), buffer.size());
  if (done != 0) taken_ += std::max(std::min<ulonglong>(done, buffer.size()), least_bytes);
  if (done != buffer.size()) throw std::out_of_range("fread failed");
}

ulonglong store_file::get_size() {
  if (size_ == 0) {
    const ulonglong end = KernelFileSeek(handle_, 0, KERNEL_SEEK_END);
    if (end == seek_failed) throw std::out_of_range("fseek failed");
    size_ = end;
  }
  return size_;
}

}  // namespace pststore
