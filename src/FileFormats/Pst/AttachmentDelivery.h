// AttachmentDelivery.h - what fltExtractAttachment does with the one attachment that it asks for.
#ifndef TARN_FILEFORMATS_PST_ATTACHMENTDELIVERY_H
#define TARN_FILEFORMATS_PST_ATTACHMENTDELIVERY_H

#include "Internal/AttachmentRequest.h"

namespace tarn {

// The callback of the request; `context` is the ExtractAttachmentContext.
//
//   StatusOk            the bytes are in the output file; the walk goes on to its end
//   StatusDone          there is no output path: the bytes are the host's, and the walk stops. The
//                       buffer is empty afterwards: no pointer, no length, no capacity
//   StatusNullArgument  null context
//   others              StatusCreateFailed and StatusWriteFailed as the kernel maps them
Status DeliverAttachment(void* context, TrackedBuffer<char>* data, const char16_t* name,
                         PropertyList* properties);

}  // namespace tarn

#endif
