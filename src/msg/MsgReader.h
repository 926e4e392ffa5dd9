// MsgReader.h - an MSG file becomes a MailMessage, or its attachments go to a callback.
#ifndef TARN_MSG_MSGREADER_H
#define TARN_MSG_MSGREADER_H

#include "Internal/AttachmentRequest.h"
#include "Internal/MailMessage.h"
#include "Internal/PstFilterData.h"
#include "compound/CompoundFile.h"

namespace tarn {

// Fills the message from the file, and puts inline images into its body; what fails there goes to
// message.inlineStatus only. 8-bit texts stay as they are. With a request no message is read.
//
// 1, also for a file that is no sound compound file: then the message stays empty. -14 for a file
// that does not open; -9 for damaged compressed RTF, and when there is no body at all; -1 without
// memory; failures of FormatFileTime and of the request's callback.
int32_t ReadMsgFile(MailMessage& message, PstFilterData& data, const char16_t* path,
                    const AttachmentRequest* request);

// Reads the compressed RTF body: RTF or, when it wraps HTML, that. 1; 2 when there is none; -9 for
// damaged data; -1. Data of another magic stays packed in message.compressedRtf, and the body keeps
// its length and no block.
int32_t ReadMsgCompressedBody(MailMessage& message, const CompoundStorage& storage);

}  // namespace tarn

#endif
