// HtmlScan.h - makes a text in HTML fit for laying out, before any of it is parsed.
//
// What has no place on paper goes: comments, scripts, frames, objects, forms' fields, links to
// other files; and the mark "+/v" of 7-bit content before a body. Elements that are nested too deep
// lose their tags and keep their text, since what comes after goes through the tree by recursion.
// `data:` URLs, which may be megabytes, are put aside and named.
#ifndef TARN_SIBLINGS_LAYOUT_HTMLSCAN_H
#define TARN_SIBLINGS_LAYOUT_HTMLSCAN_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace tarn::pages {

struct ScannedHtml {
  std::string html;
  // The `data:` URLs. The text names number N as kDataName and N, from 0.
  std::vector<std::string> dataUrls;
};

inline constexpr std::string_view kDataName = "tarn-data:";

// Elements, and tables, that are nested deeper are flattened.
inline constexpr size_t kMostNested = 200;
inline constexpr size_t kMostNestedTables = 30;
// Paragraphs and items of lists times the elements that each is in; beyond it they are flattened
// too.
inline constexpr size_t kMostNesting = 1'000'000;
// A style element whose rules are nested deeper is left out: the layout library keeps the rest of
// the sheet for each that is open.
inline constexpr size_t kMostNestedRules = 100;
// Elements of style that are open at once.
inline constexpr size_t kMostFormatting = 60;
// More is refused with Trouble::TooLarge: elements, those that a parser repeats for style among
// them, and bytes of text.
inline constexpr size_t kMostElements = 400'000;
inline constexpr size_t kMostTextBytes = 8'000'000;

// Selectors of style elements times elements that they are compared with; beyond it the document is
// shown without its style elements.
inline constexpr size_t kMostMatches = 20'000'000;

// The text is UTF-8. What style elements hold comes first in the result.
ScannedHtml ScanHtml(std::string_view html);

}  // namespace tarn::pages

#endif
