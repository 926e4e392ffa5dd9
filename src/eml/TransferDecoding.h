// TransferDecoding.h - content transfer encodings (RFC 2045, section 6), as this reader decodes
// them: one pass each, and no input is ever refused.
#ifndef TARN_EML_TRANSFERDECODING_H
#define TARN_EML_TRANSFERDECODING_H

#include "Internal/EmlMessage.h"

namespace tarn {

// The encoding that a Content-Transfer-Encoding value begins with; TransferRaw for all others.
TransferEncoding ClassifyTransferEncoding(std::string_view value);

// Base64 into `destination`; `capacity` holds its room in bytes on the way in and the bytes written
// on the way out. Bytes outside the alphabet are passed over, "=" does not end the text, and a last
// group that is cut short gives all its bytes: two bytes more than the source has are always room
// enough, and what has no room is dropped. Source and destination may be the same block.
//   StatusOk
//   StatusBadArgument   a null pointer, or a capacity below the length of the source
//   StatusOutOfMemory   the source is empty
// A failure changes nothing.
Status DecodeBase64(std::string_view source, char* destination, uint64_t& capacity);

// Quoted-printable; `destination` has room for as many bytes as the source and is another block.
// With `underscoreIsBlank` (RFC 2047, "Q") a "_" gives a blank. An "=" at the very end reads the
// two bytes of `after`, or zeros where it has none. Returns the bytes written.
uint64_t DecodeQuotedPrintable(std::string_view source, char* destination, bool underscoreIsBlank,
                               std::string_view after);

// Decodes part.raw into part.decoded by part.encoding, a NUL after it that does not count. The
// block has at most 32 bytes more than the text. 7-bit content gets "+/v" before it.
//   StatusOk
//   StatusOutOfMemory   also for an empty base64 content, which leaves an empty decoded text
//   StatusBadArgument   a null raw; nothing has changed
Status DecodePartContent(EmlPart& part);

// The same for a part that may have been decoded already; an empty base64 content is an empty text.
//   StatusOk
//   StatusOutOfMemory
//   StatusNullArgument   the part has neither a decoded text nor a raw one
Status EnsureDecoded(EmlPart& part);

}  // namespace tarn

#endif
