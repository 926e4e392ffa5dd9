// EmlReader.h - reads an internet mail file (RFC 822 with MIME) through an open kernel handle.
//
// The file is read once, whole, into one block, and all else searches that block: every header that
// is wanted is looked up by name when it is wanted. Reading is also the test of the format.
#ifndef TARN_EML_EMLREADER_H
#define TARN_EML_EMLREADER_H

#include "Internal/AttachmentRequest.h"
#include "Internal/EmlMessage.h"
#include "Internal/PstFilterData.h"

namespace tarn {

// Fills the message, which is new: header fields, and the body that the part walker chooses. With a
// request (or null), the attachments are reported on the way, and the body is only looked at for
// failures: its images stay out of it. The handle stays open and is at the end of the file.
//   StatusOk             the body may still be absent
//   StatusNotSupported   a file without the fields of a mail (From, Date, and one of To, Cc, Bcc;
//                        empty ones will do), or one without a boundary whose Content-Type is
//                        neither text/plain nor text/html
//   StatusReadFailed     an empty file, or a short read
//   StatusSeekFailed     the file cannot be measured
//   StatusOutOfMemory
//   StatusDone           the last image had no place in the body, and no closing delimiter came
//   other                the failure of a part, or what the request's callback gave
Status ReadEmlMessage(EmlMessage& message, uint64_t handle, PstFilterData& filterData,
                      const AttachmentRequest* request);

}  // namespace tarn

#endif
