// PlainDocument.h - the bytes of a plain-text document as lines of UTF-8.
//
// Documents carry marks, and not all of them tell the whole truth:
//
//   FF FE     a store's text: rows of UTF-8, each a label, a tab, a value and CR LF, and after them
//             the body in UTF-16 (little endian). An odd byte at the end is not shown. A body that
//             is bytes after all is shown as bytes.
//   EF BB BF  UTF-8. The end may be cut in the middle of a character, which is not shown then.
//   "+/v"     7-bit text with UTF-8 rows; the mark is not shown.
//   none      UTF-8; a line that is not UTF-8 is Windows-1252.
//
// NULs at the end, and control characters but for tabs and line ends anywhere, are not shown.
// Vertical tabs and form feeds end lines.
#ifndef TARN_SIBLINGS_LAYOUT_PLAINDOCUMENT_H
#define TARN_SIBLINGS_LAYOUT_PLAINDOCUMENT_H

#include <string>
#include <string_view>

namespace tarn::pages {

// Valid UTF-8. Every line end is one LF, also that of the last line if it has one.
std::string DecodePlainDocument(std::string_view document);

}  // namespace tarn::pages

#endif
