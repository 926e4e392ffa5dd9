#include "siblings/layout/PlainDocument.h"

#include <algorithm>

#include "siblings/layout/Utf8.h"

namespace tarn::pages {

namespace {

constexpr std::string_view kUtf16Mark = "\xFF\xFE";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view k7BitMark = "+/v";

// Takes the mark from the front, if it is there.
bool TakeMark(std::string_view& document, std::string_view mark) {
  if (!document.starts_with(mark)) return false;
  document.remove_prefix(mark.size());
  return true;
}

std::string_view WithoutTrailingNuls(std::string_view text) {
  const size_t last = text.find_last_not_of('\0');
  return text.substr(0, last == std::string_view::npos ? 0 : last + 1);
}

bool IsTextByte(char c) {
  const auto byte = static_cast<uint8_t>(c);
  return (byte >= 0x20 && byte != 0x7F) || c == '\t' || c == '\r' || c == '\n';
}

bool IsByteText(std::string_view text) {
  return std::all_of(text.begin(), text.end(), IsTextByte) && IsUtf8(text);
}

// A label, padded or not, and a tab.
bool StartsWithLabel(std::string_view line) {
  std::string_view label = line.substr(0, line.find('\t'));
  if (label.size() == line.size()) return false;
  while (label.ends_with(' ')) label.remove_suffix(1);
  return label.ends_with(':') && label.find('\0') == std::string_view::npos;
}

// A value may hold any control character, a NUL too, of which UTF-16 has one in most lines.
bool IsRow(std::string_view line) {
  return IsUtf8(line) && (line.find('\0') == std::string_view::npos || StartsWithLabel(line));
}

// How long the rows of UTF-8 before a body in UTF-16 are. Its CR LF is never two bytes, and its
// blanks and letters of Latin scripts have NULs; whatever else it holds is hardly ever UTF-8.
size_t LengthOfRows(std::string_view text) {
  size_t length = 0;
  while (length < text.size()) {
    const size_t end = text.find("\r\n", length);
    if (end == std::string_view::npos) break;
    const std::string_view line = text.substr(length, end - length);
    if (length == 0 && !StartsWithLabel(line)) break;
    if (!IsRow(line)) break;
    length = end + 2;
  }
  return length;
}

std::string DecodeStoreText(std::string_view document) {
  const size_t rows = LengthOfRows(document);
  std::string text(document.substr(0, rows));
  const std::string_view body = document.substr(rows);
  if (IsAscii(body) && IsByteText(WithoutTrailingNuls(body))) {
    text += body;
  } else {
    AppendUtf16(text, body, ByteOrder::Little);
  }
  return text;
}

std::string DecodeMarked(std::string_view document) {
  if (TakeMark(document, kUtf16Mark)) return DecodeStoreText(document);
  if (TakeMark(document, kUtf8Mark)) {
    document = WithoutCutCharacter(WithoutTrailingNuls(document));
  } else {
    TakeMark(document, k7BitMark);
  }
  std::string text;
  text.reserve(document.size());
  AppendLines(text, document);
  return text;
}

// Nothing is to be seen of it, and it does not change how others look.
bool IsInvisible(char32_t character) {
  return character < 0x20 || (character >= 0x7F && character < 0xA0) || character == 0xFEFF ||
         (character & 0xFFFE) == 0xFFFE;
}

// Beside CR and LF: vertical tab, form feed, and the separators of lines and paragraphs.
bool EndsLine(char32_t character) {
  return character == '\v' || character == '\f' || character == 0x2028 || character == 0x2029;
}

}  // namespace

std::string DecodePlainDocument(std::string_view document) {
  const std::string decoded = DecodeMarked(document);
  const std::string_view text = WithoutTrailingNuls(decoded);
  std::string lines;
  lines.reserve(text.size());
  for (size_t position = 0; position < text.size();) {
    const size_t start = position;
    const char32_t character = NextCharacter(text, position);
    if (character == '\r') {
      if (position == text.size() || text[position] != '\n') lines += '\n';
    } else if (EndsLine(character)) {
      lines += '\n';
    } else if (character == '\t' || character == '\n' || !IsInvisible(character)) {
      lines += text.substr(start, position - start);
    }
  }
  return lines;
}

}  // namespace tarn::pages
