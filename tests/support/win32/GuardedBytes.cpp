#include "support/GuardedBytes.h"

#include <windows.h>

#include <stdexcept>

namespace tarn::test {
namespace {

size_t PageSize() {
  SYSTEM_INFO system = {};
  GetSystemInfo(&system);
  return system.dwPageSize;
}

}  // namespace

// What is only reserved cannot be touched.
GuardedBytes::GuardedBytes(size_t size)
    : page_(PageSize()), inside_((size + page_ - 1) / page_ * page_) {
  base_ =
      static_cast<char*>(VirtualAlloc(nullptr, inside_ + 2 * page_, MEM_RESERVE, PAGE_NOACCESS));
  if (base_ == nullptr) throw std::runtime_error("no guarded pages");
  if (VirtualAlloc(begin(), inside_, MEM_COMMIT, PAGE_READWRITE) == nullptr) {
    VirtualFree(base_, 0, MEM_RELEASE);
    throw std::runtime_error("no pages between the guards");
  }
}

GuardedBytes::~GuardedBytes() { VirtualFree(base_, 0, MEM_RELEASE); }

}  // namespace tarn::test
