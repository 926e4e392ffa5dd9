// MimeBoundary.h - the delimiter between the parts of a multipart (RFC 2046, section 5.1.1).
//
//   delimiter   [CR] LF "--" boundary      the line end in front of a part belongs to it
//
// Any header block with a "boundary=" in it opens a multipart, whatever its type says. An unquoted
// boundary runs to the line end, a quoted one to the next quote, and so may hold any bytes at all.
#ifndef TARN_EML_MIMEBOUNDARY_H
#define TARN_EML_MIMEBOUNDARY_H

#include "Internal/Tarnclasses_.h"

namespace tarn {

// Does [start, end) open a multipart? 1 with the delimiter (its CR only if one stands behind the
// boundary in the header; terminated, length without the terminator) in the place of what the
// buffer held, and the cursor at the first line behind the boundary's, folded lines included; where
// no such line starts in the header, the cursor is one or two bytes behind it, and so may lie
// behind `end`. 2 when there is no boundary; -1 without memory; -814 for a null `cursor`.
int32_t FindMimeBoundary(const char* start, const char* end, TrackedBuffer<char>& delimiter,
                         const char** cursor);

// The same for a stretch whose header block is known to end at `headerEnd`, and behind which bytes
// can be read up to `readableEnd`.
int32_t FindBoundaryInHeader(const char* start, const char* headerEnd, const char* readableEnd,
                             TrackedBuffer<char>& delimiter, const char** cursor);

}  // namespace tarn

#endif
