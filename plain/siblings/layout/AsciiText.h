// AsciiText.h - texts of HTML and CSS: letters that count in either case, and what is around them.
#ifndef TARN_SIBLINGS_LAYOUT_ASCIITEXT_H
#define TARN_SIBLINGS_LAYOUT_ASCIITEXT_H

#include <glib.h>

#include <algorithm>
#include <string_view>

namespace tarn::pages {

// What HTML and CSS call space.
inline constexpr std::string_view kBlanks = " \t\r\n\f";

inline bool IsBlank(char c) { return kBlanks.find(c) != kBlanks.npos; }

inline std::string_view Trimmed(std::string_view text, std::string_view blanks = kBlanks) {
  text.remove_suffix(text.size() - (text.find_last_not_of(blanks) + 1));
  return text.substr(std::min(text.find_first_not_of(blanks), text.size()));
}

inline bool StartsWithAnyCase(std::string_view text, std::string_view start) {
  return text.size() >= start.size() &&
         g_ascii_strncasecmp(text.data(), start.data(), start.size()) == 0;
}

}  // namespace tarn::pages

#endif
