#include "support/MemoryMail.h"

#include <gtest/gtest.h>

#include <cstring>

#include "Tarnbase/Kernel.h"

namespace tarn::test {

MemoryMail::MemoryMail(std::string_view bytes) {
  void* const block = KernelAlloc(bytes.size(), 1, __LINE__, u"MemoryMail.cpp");
  if (!bytes.empty()) std::memcpy(block, bytes.data(), bytes.size());
  const int32_t mode = bytes.empty() ? KERNEL_MEMFILE_EMPTY : KERNEL_MEMFILE_FILLED;
  const int32_t opened =
      KernelMemFileOpen(&handle_, &state_, mode, block, bytes.size(), bytes.size());
  EXPECT_EQ(opened, 1);
}

MemoryMail::~MemoryMail() {
  KernelFileClose(handle_);
  void* block = nullptr;
  uint64_t length = 0;
  uint64_t capacity = 0;
  EXPECT_EQ(KernelMemFileClose(state_, &block, &length, &capacity), 1);
  if (block != nullptr) KernelFree(block, __LINE__, u"MemoryMail.cpp");
}

}  // namespace tarn::test
