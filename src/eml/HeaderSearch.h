// HeaderSearch.h - where headers, their values and their parameters are in a mail file (RFC 822,
// section 3; RFC 2045, section 5.1).
//
// There is no parse tree and no grammar: every header that is wanted is searched by name in a
// stretch of the file, ignoring the case of ASCII letters. Comments are not known, and neither are
// the forms of RFC 2231: "filename*=" is another key. Places are positions in the stretch, and npos
// where there is none. Nothing allocates or fails.
#ifndef TARN_EML_HEADERSEARCH_H
#define TARN_EML_HEADERSEARCH_H

#include <cstddef>
#include <optional>
#include <string_view>

namespace tarn {

inline bool IsLineEnd(char byte) { return byte == '\r' || byte == '\n'; }

// After the header block of the text: after the first "\r\n\r\n", else the first "\n\n", else the
// first "\r\n", else the end. A text without an empty line thus has a header of one line.
size_t FindHeaderEnd(std::string_view text);

// The first line that begins with `name`, or npos. A line begins at the start and after a CR or LF.
size_t FindHeaderLine(std::string_view text, std::string_view name);

// The value of the first Content-Type line, blanks (no tabs) before it passed over, or npos.
size_t FindContentType(std::string_view text);

// Where the value of the line at `line` begins: one byte after `name`, whatever that byte is, or
// the end of the text. A value right after the colon thus loses its first byte.
size_t FixedValue(std::string_view text, size_t line, std::string_view name);
// The same for the first line that begins with `name`; npos without one.
size_t FindFixedValue(std::string_view text, std::string_view name);

// The end of the line that `from` is in: the first CR or LF, or the end.
size_t FindLineEnd(std::string_view text, size_t from = 0);

// A stretch of a header block, and what may be read after it: a byte of the content can tell
// whether the last line of the header is folded.
struct HeaderStretch {
  std::string_view readable;  // the stretch and the bytes after it
  size_t size = 0;            // of the stretch

  std::string_view text() const { return readable.substr(0, size); }
  // What is left of it from `position` on.
  HeaderStretch from(size_t position) const { return {readable.substr(position), size - position}; }
};

// The end of the value that the stretch begins with: the first line end that no folded line
// follows, or the end of the stretch. A line is folded when the byte two places after the line
// end's first byte can be read and is a blank or a tab; the search goes on from that byte. (Two
// places are right for CR LF; after a lone LF that is the second byte of the next line.)
size_t FindFoldedLineEnd(const HeaderStretch& value);

// The value of the parameter `key` (given with its punctuation, as in "filename=") or nothing. The
// name is not found inside a longer one, nor where it ends exactly at the end of the text. A quoted
// value loses its quotes; others end at ";", a quote or the line end.
std::optional<std::string_view> FindHeaderParameter(std::string_view text, std::string_view key);

}  // namespace tarn

#endif
