// AsciiText.h - comparing what mails write in letters of either case.
#ifndef TARN_ARCHIVE_ASCIITEXT_H
#define TARN_ARCHIVE_ASCIITEXT_H

#include <algorithm>
#include <string>
#include <string_view>

namespace tarn::archive::mail {

inline char LowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

inline bool SameNoCase(char a, char b) { return LowerAscii(a) == LowerAscii(b); }

inline bool EqualsNoCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), SameNoCase);
}

inline bool StartsWithNoCase(std::string_view text, std::string_view start) {
  return text.size() >= start.size() && EqualsNoCase(text.substr(0, start.size()), start);
}

inline bool ContainsNoCase(std::string_view text, std::string_view wanted) {
  return std::search(text.begin(), text.end(), wanted.begin(), wanted.end(), SameNoCase) !=
         text.end();
}

inline std::string LoweredAscii(std::string_view text) {
  std::string lowered(text);
  std::transform(lowered.begin(), lowered.end(), lowered.begin(), LowerAscii);
  return lowered;
}

constexpr std::string_view kBlanks = " \t\r\n\v\f";

inline std::string_view TrimmedRight(std::string_view text) {
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

inline std::string_view Trimmed(std::string_view text) {
  text = TrimmedRight(text);
  return text.substr(std::min(text.find_first_not_of(kBlanks), text.size()));
}

}  // namespace tarn::archive::mail

#endif
