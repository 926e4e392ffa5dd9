// MimePart.h - reads one leaf of a mail: its headers, its content, its charset.
//
//   start    the line end after the delimiter   (the first byte of a file that is no multipart)
//            header lines
//            empty line
//            content                            up to the end of the part
//
// Values of some headers are taken from a fixed place after the colon, where the one blank of a
// usual header line ends: a Content-Transfer-Encoding without that blank is misread, and so is raw.
#ifndef TARN_EML_MIMEPART_H
#define TARN_EML_MIMEPART_H

#include "Internal/AttachmentRequest.h"
#include "Internal/EmlMessage.h"

namespace tarn {

// Reads the leaf [part.start, end) of the file into `part`, whose name, raw and decoded content are
// absent, reports it by its Content-Disposition, and moves the cursor to its end. Its content is
// decoded here for a callback and for a text that the document needs; else that is left to
// EnsureDecoded. The first part whose charset asks for it makes the message's texts UTF-8: that
// part, all later ones, and the header fields. The report comes before that: a callback gets the
// bytes decoded, but not converted.
//   StatusOk
//   StatusOutOfMemory    also for base64 content of length 0, unless there is a Content-Disposition
//   other                the result of the report (StatusDone among it), or the failure of the
//                        conversion
// After a failure the three are absent again.
Status ParseMimePart(EmlPart& part, EmlMessage& message, size_t& cursor, size_t end,
                     const AttachmentRequest* request);

// The class of the first type that the Content-Type value begins with, ignoring case; ContentOther
// for every other value. A type is a prefix: "text/htmlx" and "image/svg+xml" count.
ContentClass ClassifyContent(std::string_view value);

}  // namespace tarn

#endif
