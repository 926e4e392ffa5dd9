// AttachmentCommon.h - the common start of the two attachment calls.
#ifndef TARN_FILEFORMATS_PST_ATTACHMENTCOMMON_H
#define TARN_FILEFORMATS_PST_ATTACHMENTCOMMON_H

#include "Internal/AttachmentRequest.h"

namespace tarn {

// Opens the file, sniffs it and lets its reader walk the attachments of a message, with null
// options of the first.
//   StatusOk          `readerFormat` is that of the reader that ran
//   StatusOpenFailed  also for a null path; `readerFormat` is as it was
//   StatusReadFailed  fewer than 12 bytes, and `readerFormat` is as it was; or a failed read of the
//                     reader
//   StatusDone        of mails only: the callback ended the walk, or a multipart ended without a
//                     closing delimiter after an image that has no place in the body
//   others            of ReadMessageDocument, and of the callback
// Where the reader ran and it is not StatusOk, `readerFormat` is FormatNone. What the store throws
// leaves this function.
Status WalkAttachments(const char16_t* path, const AttachmentOptions* options,
                       const AttachmentRequest& request, TarnFormat& readerFormat);

}  // namespace tarn

#endif
