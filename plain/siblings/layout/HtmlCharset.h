// HtmlCharset.h - the bytes of an HTML document as UTF-8.
//
// A mark at the start decides: EF BB BF, FF FE, FE FF. "+/v" there is the mark of 7-bit content,
// which is not shown and decides nothing. Then what a meta element names near the start; then UTF-8
// where the text is that, and Windows-1252 where it is not. Names mean what browsers take them for:
// Latin-1 is Windows-1252. A text that claims UTF-8 in vain is read line by line.
#ifndef TARN_SIBLINGS_LAYOUT_HTMLCHARSET_H
#define TARN_SIBLINGS_LAYOUT_HTMLCHARSET_H

#include <string>
#include <string_view>

namespace tarn::pages {

// Valid UTF-8; bytes that mean nothing are U+FFFD.
std::string DecodeHtmlDocument(std::string_view document);

// What `charset=` names in the first kilobytes, in lower case; empty when nothing does.
std::string NamedCharset(std::string_view html);

}  // namespace tarn::pages

#endif
