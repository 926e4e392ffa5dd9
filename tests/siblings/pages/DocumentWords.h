// DocumentWords.h - the text of a document, read without an engine: what its pages have to say.
#ifndef TARN_TESTS_SIBLINGS_PAGES_DOCUMENTWORDS_H
#define TARN_TESTS_SIBLINGS_PAGES_DOCUMENTWORDS_H

#include <string>
#include <string_view>

namespace tarn::test {

// Words with single blanks between them. Blanks of Unicode's are blanks; form feeds are, too.
std::string Words(std::string_view text);

// The words of plain text: UTF-8, with any of the marks that the filter writes, or ASCII in UTF-16
// after rows of UTF-8 (FF FE).
std::string WordsOfText(std::string_view document);

// The words of HTML in UTF-8: without its head, comments and tags. It knows the references by
// number, and &nbsp; &lt; &gt; &amp; &quot; &euro;.
std::string WordsOfHtml(std::string_view document);

// The words of RTF: without its tables of fonts, colours and styles, pictures, and destinations
// that may be passed over. Fonts are of Windows-1252, or of Shift-JIS (\fcharset128).
std::string WordsOfRtf(std::string_view document);

}  // namespace tarn::test

#endif
