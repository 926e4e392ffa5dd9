// MimeBoundary.h - the delimiter between the parts of a multipart (RFC 2046, section 5.1.1).
//
//   delimiter   [CR] LF "--" boundary      the line end before a part belongs to it
//
// Any header block with a "boundary=" in it opens a multipart, whatever its type says. An unquoted
// boundary runs to the line end, a quoted one to the next quote, and so may hold any bytes at all.
#ifndef TARN_EML_MIMEBOUNDARY_H
#define TARN_EML_MIMEBOUNDARY_H

#include "Internal/Tarnclasses_.h"
#include "eml/HeaderSearch.h"

namespace tarn {

// Does the text open a multipart?
//   StatusOk             `delimiter` holds the delimiter, terminated, in the place of what it held.
//                        Its CR is there only if one comes after the boundary in the header.
//                        `cursor` is the first line after the boundary's and its folded lines, as a
//                        position in the text; where no such line starts in the header, it is one
//                        or two bytes after the header, and so may be beyond the text
//   StatusDone           there is no boundary
//   StatusOutOfMemory
//   StatusNullArgument   `cursor` is null
Status FindMimeBoundary(std::string_view text, TrackedBuffer<char>& delimiter, size_t* cursor);

// The same for a header block whose end is known.
Status FindBoundaryInHeader(const HeaderStretch& header, TrackedBuffer<char>& delimiter,
                            size_t& cursor);

}  // namespace tarn

#endif
