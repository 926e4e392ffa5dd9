// HtmlReferences.h - the character references of HTML.
#ifndef TARN_ARCHIVE_HTMLREFERENCES_H
#define TARN_ARCHIVE_HTMLREFERENCES_H

#include <string>
#include <string_view>

namespace tarn::archive {

// Text with its references resolved: numbers (those of C1 mean Windows-1252), and the names of
// HTML 4, of which those of Latin-1 need no semicolon. Others stay as they are.
std::string DecodedHtmlText(std::string_view text);

// The same of the value of an attribute, where a name without a semicolon that a letter, a digit or
// "=" follows is none: it is one of the values in the address of a query.
std::string DecodedHtmlValue(std::string_view value);

}  // namespace tarn::archive

#endif
