// AttachmentCommon.h - the common start of the two attachment calls.
#ifndef TARN_FILEFORMATS_PST_ATTACHMENTCOMMON_H
#define TARN_FILEFORMATS_PST_ATTACHMENTCOMMON_H

#include "Internal/AttachmentRequest.h"

namespace tarn {

// Opens the file, sniffs it and lets its reader walk the attachments. 1 with the TarnFormat of the
// reader that ran; -10, -7, or what the reader and the callback gave.
int32_t WalkAttachments(const char16_t* path, const AttachmentOptions* options,
                        const AttachmentRequest& request, int32_t& readerFormat);

}  // namespace tarn

#endif
