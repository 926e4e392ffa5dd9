// MimePart.h - reads one leaf of a mail: its headers, its content, its charset.
//
//   start    the line end behind the delimiter   (the first byte of a file that is no multipart)
//            header lines
//            empty line
//            content                             up to the end of the part
//
// Values of some headers are taken from a fixed place behind the colon, where the one blank of a
// usual header line ends: a Content-Transfer-Encoding without that blank is misread, and so is raw.
#ifndef TARN_EML_MIMEPART_H
#define TARN_EML_MIMEPART_H

#include "Internal/AttachmentRequest.h"
#include "Internal/EmlMessage.h"

namespace tarn {

// Reads the leaf [part.start, end) into `part`, reports it by its Content-Disposition, and moves
// the cursor to its end. Its content is decoded here for a callback and for a text that the
// document needs; else `decoded` stays empty, for EnsureDecoded to fill. The first part whose
// charset asks for it makes the message's texts UTF-8: that part, all later ones, and the header
// fields. The report comes before that: a callback gets the bytes decoded, but not converted.
//
// 1; the result of the report, if that is not 1 (2 among them); -1 without memory, and for base64
// content of length 0 unless a Content-Disposition line is there; the failure of the conversion.
// Then name, raw and decoded are empty.
int32_t ParseMimePart(EmlPart& part, EmlMessage& message, const char** cursor, const char* end,
                      const AttachmentRequest* request);

}  // namespace tarn

#endif
