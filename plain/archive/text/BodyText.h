// BodyText.h - what a person reads of a body.
#ifndef TARN_ARCHIVE_BODYTEXT_H
#define TARN_ARCHIVE_BODYTEXT_H

#include <cstddef>
#include <string>
#include <string_view>

#include "archive/model/Item.h"

namespace tarn::archive {

// The text of HTML, for a terminal or a search: UTF-8, lines ended by LF, at most `width` columns
// where words allow; 0 is no limit. Links are kept as "text <address>", lists with their marks and
// numbers, quotes with "> "; rows of short cells are lines, those of long ones paragraphs. No
// script, style or hidden text. Takes bytes in their own charset: that of a byte order mark, else
// the one that is named, else the document's own, else UTF-8, else Windows-1252. Nothing is too
// damaged for it, and time and memory are in proportion to the bytes.
std::string TextOfHtml(const HtmlBody& html, size_t width);

// The text of RTF, UTF-8, LF at the ends of lines.
std::string TextOfRtf(std::string_view rtf);

// The best that the bodies have: text unless it is blank, else HTML as text, else RTF as text;
// empty without any.
std::string BestText(const Bodies& bodies, size_t width);

// HTML as UTF-8, whatever its bytes are in; no declaration in it is changed.
std::string Utf8OfHtml(const HtmlBody& html);

// UTF-8 of bytes in a charset (IANA name, any case, aliases and "cp1252", "windows-1252" alike).
// Bytes of an unknown or no charset are UTF-8 when they are valid as such, else Windows-1252. What
// does not convert is U+FFFD.
std::string Utf8Of(std::string_view bytes, std::string_view charset);

}  // namespace tarn::archive

#endif
