// AttachmentDelivery.h - what fltExtractAttachment does with the one attachment that it asks for.
#ifndef TARN_FILEFORMATS_PST_ATTACHMENTDELIVERY_H
#define TARN_FILEFORMATS_PST_ATTACHMENTDELIVERY_H

#include "Internal/AttachmentRequest.h"

namespace tarn {

// The callback of the request; `context` is the ExtractAttachmentContext.
//
//   1      the bytes are in the output file; the walk goes on to its end
//   2      there is no output path: the bytes are the host's, and the walk stops. The buffer is
//          empty afterwards: no pointer, no length, no capacity
//   -814   null context
//   other  -1490 and -5 as the kernel maps them, for a file that could not be made or written
int32_t DeliverAttachment(void* context, TrackedBuffer<char>* data, const char16_t* name,
                          PropertyList* properties);

}  // namespace tarn

#endif
