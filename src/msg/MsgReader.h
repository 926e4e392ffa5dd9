// MsgReader.h - an MSG file becomes a MailMessage, or its attachments go to a callback.
#ifndef TARN_MSG_MSGREADER_H
#define TARN_MSG_MSGREADER_H

#include "Internal/AttachmentRequest.h"
#include "Internal/MailMessage.h"
#include "Internal/PstFilterData.h"
#include "compound/CompoundFile.h"

namespace tarn {

// Fills the message from the file, and puts inline images into its body; what fails there goes to
// message.inlineStatus only. 8-bit texts stay as they are. With a request no message is read: the
// result is then that of EnumerateMsgAttachments, which passes on what the callback answers
// below 1.
//
// 1, also for a file that is no sound compound file: then the message stays empty. -14 for a file
// that does not open. -9 for damaged compressed RTF, and when the Unicode stream of the text is
// there without a byte while no body has a block; a message without any of these streams is an
// empty text. -1 without memory, and for streams larger than their file or too much of it; failures
// of FormatFileTime. What was read before a failure stays in the message.
int32_t ReadMsgFile(MailMessage& message, PstFilterData& data, const char16_t* path,
                    const AttachmentRequest* request);

// Reads the compressed RTF body: RTF or, when it wraps HTML, that. 1; 2 when there is none; -9 for
// damaged data; -1. Data of another magic stays packed in message.compressedRtf, and the body keeps
// its length and no block.
int32_t ReadMsgCompressedBody(MailMessage& message, const CompoundStorage& storage);

}  // namespace tarn

#endif
