// AsciiText.h - texts whose letters count in either case, and what is around them. Only the letters
// of ASCII have a case here; all other bytes stay as they are.
#ifndef TARN_ARCHIVE_ASCIITEXT_H
#define TARN_ARCHIVE_ASCIITEXT_H

#include <algorithm>
#include <string>
#include <string_view>

namespace tarn::archive {

inline char LowerAscii(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

inline bool IsLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

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

// What C calls space, and what HTML and CSS do.
inline constexpr std::string_view kBlanks = " \t\r\n\v\f";
inline constexpr std::string_view kHtmlSpace = " \t\r\n\f";

inline bool IsHtmlSpace(char c) { return kHtmlSpace.find(c) != kHtmlSpace.npos; }

inline std::string_view TrimmedRight(std::string_view text, std::string_view blanks = kBlanks) {
  return text.substr(0, text.find_last_not_of(blanks) + 1);
}

inline std::string_view Trimmed(std::string_view text, std::string_view blanks = kBlanks) {
  text = TrimmedRight(text, blanks);
  return text.substr(std::min(text.find_first_not_of(blanks), text.size()));
}

// "a@b" of "<a@b>", as ids of messages and of parts are written.
inline std::string WithoutBrackets(std::string text) {
  if (text.starts_with('<')) text.erase(0, 1);
  if (text.ends_with('>')) text.pop_back();
  return text;
}

}  // namespace tarn::archive

#endif
