// HtmlTag.h - one tag of a text in HTML, found as a browser's tokenizer finds it.
#ifndef TARN_SIBLINGS_LAYOUT_HTMLTAG_H
#define TARN_SIBLINGS_LAYOUT_HTMLTAG_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tarn::pages {

// A parser compares each attribute of a tag with those before it.
inline constexpr size_t kMostAttributes = 1000;

struct HtmlTag {
  bool end = false;         // of an element: "</p>"
  std::string name;         // in lower case
  std::string_view inside;  // what is between the name and ">"
  size_t size = 0;          // of all of it, from "<" to ">"
  size_t kept = 0;  // of what is before the attribute after kMostAttributes; `size` without one
};

// The tag that a text begins with. Nothing when it begins with "<" and no name, and when the text
// ends within the tag.
std::optional<HtmlTag> ReadHtmlTag(std::string_view text);

}  // namespace tarn::pages

#endif
