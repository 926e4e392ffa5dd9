// fltExtractAttachment: the bytes of one attachment, to a file or to memory.

#include "FileFormats/Pst/AttachmentCommon.h"
#include "FileFormats/Pst/AttachmentDelivery.h"
#include "FileFormats/Pst/Frame.h"

namespace tarn {

int32_t ExtractAttachment(ExtractAttachmentContext* context) {
  if (context == nullptr) return StatusNullArgument;
  if (context->attachmentNumber < 1) return StatusBadArgument;

  const AttachmentRequest request = {static_cast<uint32_t>(context->attachmentNumber), 0,
                                     DeliverAttachment, context};
  int32_t format = FormatNone;
  const int32_t result = WalkAttachments(context->path, context->options, request, format);
  return result == StatusDone ? static_cast<int32_t>(StatusOk) : result;
}

}  // namespace tarn
