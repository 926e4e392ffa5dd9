// AttachmentCommon.h - the common start of the two attachment calls.
#ifndef TARN_FILEFORMATS_PST_ATTACHMENTCOMMON_H
#define TARN_FILEFORMATS_PST_ATTACHMENTCOMMON_H

#include "Internal/AttachmentRequest.h"

namespace tarn {

// Opens the file, sniffs it and lets its reader walk the attachments.
//   StatusOk          `readerFormat` is that of the reader that ran
//   StatusOpenFailed
//   StatusReadFailed  fewer than 12 bytes, or a failed read of the reader
//   StatusDone        the callback ended the walk of a mail, or the mail's last image had no place
//   others            of the reader and of the callback
// What the store throws leaves this function.
Status WalkAttachments(const char16_t* path, const AttachmentOptions* options,
                       const AttachmentRequest& request, TarnFormat& readerFormat);

}  // namespace tarn

#endif
