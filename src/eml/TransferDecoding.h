// TransferDecoding.h - content transfer encodings (RFC 2045, section 6), as this reader decodes
// them: one pass each, and no input is ever refused.
#ifndef TARN_EML_TRANSFERDECODING_H
#define TARN_EML_TRANSFERDECODING_H

#include <cstdint>
#include <string_view>

#include "Internal/EmlMessage.h"

namespace tarn {

// The encoding that a Content-Transfer-Encoding value begins with; TransferRaw for all others.
TransferEncoding ClassifyTransferEncoding(const char* start, const char* end);

// Base64 of `length` bytes into `destination`; `capacity` holds its room in bytes on the way in and
// the bytes written on the way out. Bytes outside the alphabet are passed over, "=" does not end
// the text, and a last group that is cut short gives all its bytes: length + 2 is always room
// enough, and what has no room is dropped. 1; -13 for null pointers or a capacity below length; -1
// for a length of 0; a failure changes nothing. Source and destination may be the same block.
int32_t DecodeBase64(const char* source, uint64_t length, char* destination, uint64_t& capacity);

// Quoted-printable; `destination` has room for as many bytes as the source and is another block.
// With `underscoreIsBlank` (RFC 2047, "Q") a "_" gives a blank. An "=" at the very end reads the
// two bytes of `behind`, or zeros where it has none. Returns the bytes written.
uint64_t DecodeQuotedPrintable(std::string_view source, char* destination, bool underscoreIsBlank,
                               std::string_view behind);

// Fills part.decoded, terminated, and part.decodedLength from part.raw by part.encoding. The block
// has at most 32 bytes more than the text. 7-bit content gets "+/v" in front of it. 1; -1 without
// memory, or for an empty base64 content, which leaves an empty decoded text; -13 for a null raw,
// and then nothing has changed.
int32_t DecodePartContent(EmlPart& part);

// The same for a part that may have been decoded already; an empty base64 content is an empty text.
// 1; -1 without memory; -814 for a part that has neither a decoded text nor a raw one.
int32_t EnsureDecoded(EmlPart& part);

}  // namespace tarn

#endif
