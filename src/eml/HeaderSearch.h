// HeaderSearch.h - where headers are in a mail file (RFC 822, section 3).
//
// There is no parse tree: every header that is wanted is searched by name in a stretch [start, end)
// of the file's block, ignoring the case of ASCII letters. Nothing allocates or fails.
#ifndef TARN_EML_HEADERSEARCH_H
#define TARN_EML_HEADERSEARCH_H

#include <string_view>

namespace tarn {

// Behind the header block of the stretch: behind the first "\r\n\r\n", else the first "\n\n", else
// the first "\r\n", else end. A stretch without an empty line thus has a header of one line.
const char* FindHeaderEnd(const char* start, const char* end);

// The first line that begins with `name`, or null. A line begins at start and behind a CR or LF.
const char* FindHeaderLine(const char* start, const char* end, std::string_view name);

// The value of the first Content-Type line, blanks (no tabs) in front of it passed over, or null.
const char* FindContentType(const char* start, const char* end);

// The end of the line that start stands in: the first CR or LF, or end.
const char* FindLineEnd(const char* start, const char* end);

// The first line end that no folded line follows: the byte two places behind its first byte is
// neither blank nor tab. A byte at or behind end is neither. Behind a folded line the search goes
// on from the byte that was tested. Null when no line end is left before end. (Two places are right
// for CR LF; behind a lone LF the test looks at the second byte of the next line.)
const char* FindFoldedLineEnd(const char* start, const char* end);

}  // namespace tarn

#endif
