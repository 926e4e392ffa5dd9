#include "support/GuardedBytes.h"

#include <sys/mman.h>
#include <unistd.h>

#include <stdexcept>

namespace tarn::test {

GuardedBytes::GuardedBytes(size_t size)
    : page_(static_cast<size_t>(sysconf(_SC_PAGESIZE))),
      inside_((size + page_ - 1) / page_ * page_) {
  void* const pages =
      mmap(nullptr, inside_ + 2 * page_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (pages == MAP_FAILED) throw std::runtime_error("no guarded pages");
  base_ = static_cast<char*>(pages);
  if (mprotect(begin(), inside_, PROT_READ | PROT_WRITE) != 0) {
    munmap(base_, inside_ + 2 * page_);
    throw std::runtime_error("no pages between the guards");
  }
}

GuardedBytes::~GuardedBytes() { munmap(base_, inside_ + 2 * page_); }

}  // namespace tarn::test
