#include "support/road/AttachmentBlock.h"

#include "Internal/Tarnclasses_.h"

namespace tarn::test {
namespace {

void Free(void* block) {
  if (block != nullptr) KernelFree(block, TARN_HERE);
}

}  // namespace

void FreeAttachmentBlock(AttachmentInfoBlock* block) {
  if (block == nullptr) return;
  for (uint64_t i = 0; i < block->itemCount; ++i) {
    const AttachmentInfoItem& item = block->items[i];
    Free(item.name);
    Free(item.reserved0);
    Free(item.description);
    Free(item.properties);
  }
  Free(block->items);
  Free(block);
}

}  // namespace tarn::test
