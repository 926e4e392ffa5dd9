// AttachmentReport.h - reports a part with a Content-Disposition header (RFC 2183) as an
// attachment.
//
// Inline parts and attachments share one series of numbers, which starts at 1; a part without that
// header, or with a disposition of another kind, has no number and is never reported.
#ifndef TARN_EML_ATTACHMENTREPORT_H
#define TARN_EML_ATTACHMENTREPORT_H

#include <string_view>

#include "Internal/AttachmentRequest.h"
#include "Internal/EmlMessage.h"

namespace tarn {

// Adds the parameter `key` (a literal, with its punctuation) of [start, end), if it exists, under
// the name `key` itself, its encoded words decoded. 1, -1, or the failure of AddAttachmentProperty.
int32_t AddHeaderParameterProperty(PropertyList& list, const char* start, const char* end,
                                   std::string_view key);

// Counts the part by its disposition in `message` and, where the request (or null) wants it, calls
// back with its bytes, name and properties. [headerStart, headerEnd) are the part's headers and
// [value, valueEnd) the disposition's value. The bytes are delivered for mere information, too; the
// list is empty when the bytes are what is wanted. The callback may keep either.
//
// 1; the result of the callback; 0 when the file name or a looked-up property is no UTF-8; -814
// when the part has no bytes, raw or decoded; -1 or the code of a buffer that the host refused.
int32_t ReportEmlAttachment(const AttachmentRequest* request, EmlPart& part, EmlMessage& message,
                            const char* headerStart, const char* headerEnd, const char* value,
                            const char* valueEnd);

}  // namespace tarn

#endif
