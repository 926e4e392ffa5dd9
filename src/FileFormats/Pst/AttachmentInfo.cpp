// fltGetAttachmentInfo: the list of a message's attachments with their properties.

#include "FileFormats/Pst/AttachmentCommon.h"
#include "FileFormats/Pst/AttachmentItems.h"
#include "FileFormats/Pst/Frame.h"

namespace tarn {

Status GetAttachmentInfo(GetAttachmentInfoContext* context) {
  if (context == nullptr) return StatusNullArgument;

  ItemList items;
  const AttachmentRequest request = {kAllAttachments, true, AddAttachmentItem, &items};
  TarnFormat format = FormatNone;
  const Status walked = WalkAttachments(context->path, context->options, request, format);
  // On a failure the array goes, and what its items own stays allocated: kept as it is.
  if (!walked.ok()) return walked;

  auto block = AllocateZeroBlock<AttachmentInfoBlock>(1, TARN_HERE);
  if (!block) {
    for (AttachmentInfoItem& item : items.elements()) ReleaseItem(item);
    return StatusOutOfMemory;
  }
  for (const AttachmentInfoItem& item : items.elements()) {
    for (uint64_t i = 0; i < item.propertyCount; ++i) TrimPropertyName(item.properties[i]);
  }
  AttachmentInfoBlock& answer = block[0];
  answer.format = format;
  answer.itemSize = sizeof(AttachmentInfoItem);
  answer.itemCount = items.length();
  if (items.length() != 0) {
    items.shrinkToFit();
    answer.items = items.take().take();
  }
  context->block = block.take();
  return StatusOk;
}

}  // namespace tarn
