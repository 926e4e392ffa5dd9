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
// attachments go to its callback. What was read before a failure stays in the message.
//   StatusOk             also for a file that is no sound compound file: then the message stays
//                        empty
//   StatusMsgOpenFailed  the file does not open
//   StatusReadFailed     a seek failed
//   StatusNotSupported   damaged compressed RTF; or the Unicode stream of the text is there without
//                        a byte while no body has a block. A message without any of these streams
//                        is an empty text
//   StatusOutOfMemory    also for streams larger than their file or too much of it
//   others               of FormatFileTime and of EnumerateMsgAttachments
Status ReadMsgFile(MailMessage& message, PstFilterData& data, const char16_t* path,
                   const AttachmentRequest* request);

// Reads the compressed RTF body: RTF or, when it wraps HTML, that. Data of another magic stays
// packed in message.compressedRtf, and there is no body.
//   StatusOk            also for data that stays packed
//   kNoStream           (StatusDone) there is no such stream
//   StatusNotSupported  damaged data
//   StatusOutOfMemory
//   StatusReadFailed    a seek failed
Status ReadMsgCompressedBody(MailMessage& message, const CompoundStorage& storage);

}  // namespace tarn

#endif
