#include <gtest/gtest.h>
#include <malloc.h>

#include <vector>

#include "Tarnbase/PlainKernel.h"

namespace tarn::test {
namespace {

constexpr const char16_t* kHere = u"FreedBlocksTest.cpp";

// The entries of 200,000 blocks take 13 MB, and the table's own array 3.
TEST(FreedBlocks, AreForgotten) {
  std::vector<void*> blocks(200'000);
  const size_t before = mallinfo2().uordblks;
  for (void*& block : blocks) block = KernelAlloc(1, 1, 1, kHere);
  for (void* const block : blocks) KernelFree(block, 2, kHere);
  EXPECT_LT(mallinfo2().uordblks, before + 6'000'000);
}

}  // namespace
}  // namespace tarn::test
