// fltExtractAttachment: the bytes of one attachment, to a file or to memory.

#include "FileFormats/Pst/AttachmentCommon.h"
#include "FileFormats/Pst/AttachmentDelivery.h"
#include "FileFormats/Pst/Frame.h"

namespace tarn {

Status ExtractAttachment(ExtractAttachmentContext* context) {
  if (context == nullptr) return StatusNullArgument;
  if (context->attachmentNumber < 1) return StatusBadArgument;

  const AttachmentRequest request = {static_cast<uint32_t>(context->attachmentNumber), false,
                                     DeliverAttachment, context};
  TarnFormat format = FormatNone;
  const Status walked = WalkAttachments(context->path, context->options, request, format);
  return walked == StatusDone ? Status(StatusOk) : walked;
}

}  // namespace tarn
