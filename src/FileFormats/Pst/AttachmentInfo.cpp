// fltGetAttachmentInfo: the list of a message's attachments with their properties.

#include "FileFormats/Pst/AttachmentCommon.h"
#include "FileFormats/Pst/AttachmentItems.h"
#include "FileFormats/Pst/Frame.h"

namespace tarn {

int32_t GetAttachmentInfo(GetAttachmentInfoContext* context) {
  if (context == nullptr) return StatusNullArgument;

  ItemList items;
  const AttachmentRequest request = {kAllAttachments, 1, AddAttachmentItem, &items};
  int32_t format = FormatNone;
  const int32_t walked = WalkAttachments(context->path, context->options, request, format);
  // On a failure the array goes, and what its items own stays allocated: kept as it is.
  if (walked != StatusOk) return walked;

  auto block = AllocateZeroBlock<AttachmentInfoBlock>(1, TARN_HERE);
  if (!block) {
    for (uint64_t i = 0; i < items.length(); ++i) ReleaseItem(items.data()[i]);
    return StatusOutOfMemory;
  }
  block.get()->format = format;
  block.get()->itemSize = sizeof(AttachmentInfoItem);
  block.get()->itemCount = items.length();
  if (items.length() != 0) {
    items.shrinkToFit();
    block.get()->items = items.take().take();
  }
  for (uint64_t i = 0; i < block.get()->itemCount; ++i) {
    AttachmentInfoItem& item = block.get()->items[i];
    for (uint64_t k = 0; k < item.propertyCount; ++k) TrimPropertyName(item.properties[k]);
  }
  context->block = block.take();
  return StatusOk;
}

}  // namespace tarn
