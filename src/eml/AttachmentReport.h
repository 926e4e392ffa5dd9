// AttachmentReport.h - reports a part with a Content-Disposition header (RFC 2183) as an
// attachment.
//
// Inline parts and attachments share one series of numbers, which starts at 1; a part without that
// header, or with a disposition of another kind, has no number and is never reported.
#ifndef TARN_EML_ATTACHMENTREPORT_H
#define TARN_EML_ATTACHMENTREPORT_H

#include "Internal/AttachmentRequest.h"
#include "Internal/EmlMessage.h"

namespace tarn {

// Adds the parameter `key` (a literal, with its punctuation) of the text under the name `key`
// itself, its encoded words decoded.
//   StatusOk            also when the text has no such parameter
//   StatusFailed        the value is no UTF-8
//   StatusOutOfMemory
//   a code of the host  the list cannot grow; a refused budget empties it
Status AddHeaderParameterProperty(PropertyList& list, std::string_view text, std::string_view key);

// Counts the part by its disposition in `message` and, where the request (or null) wants it, calls
// back with its bytes, name and properties. `headers` are the part's and `disposition` is the value
// of one of them. The callback always gets the bytes, and the properties only for mere information.
// It may keep both.
//   StatusOk
//   StatusFailed         the file name or a looked-up property is no UTF-8
//   StatusNullArgument   the part has no bytes, raw or decoded
//   StatusOutOfMemory
//   other                the result of the callback, or of a buffer that the host refused
Status ReportEmlAttachment(const AttachmentRequest* request, EmlPart& part, EmlMessage& message,
                           std::string_view headers, std::string_view disposition);

}  // namespace tarn

#endif
