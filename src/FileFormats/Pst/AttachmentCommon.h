// AttachmentCommon.h - the common start of the two attachment calls.
#ifndef TARN_FILEFORMATS_PST_ATTACHMENTCOMMON_H
#define TARN_FILEFORMATS_PST_ATTACHMENTCOMMON_H

#include "Internal/AttachmentRequest.h"

namespace tarn {

// Opens the file, sniffs it and lets its reader walk the attachments.
//   StatusOk          with the format of the reader that ran
//   StatusOpenFailed
//   StatusReadFailed  fewer than 12 bytes
//   others            of the reader and of the callback
Status WalkAttachments(const char16_t* path, const AttachmentOptions* options,
                       const AttachmentRequest& request, TarnFormat& readerFormat);

}  // namespace tarn

#endif
