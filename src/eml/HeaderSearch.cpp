#include "eml/HeaderSearch.h"

#include <algorithm>

#include "Common/ByteSearch.h"

namespace tarn {
namespace {

// Does this byte, before a key, make it the tail of a longer name?
bool ContinuesName(char byte) {
  return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') ||
         (byte >= '0' && byte <= '9') || byte == '-' || byte == '_';
}

// After the first occurrence of the key that is a name of its own, or npos.
size_t FindAfterKey(std::string_view text, std::string_view key) {
  // A key that counts has at least one byte after it.
  const std::string_view searched = text.substr(0, text.size() - std::min<size_t>(text.size(), 1));
  for (size_t from = 0;;) {
    const size_t hit = FindIgnoringCase(searched, key, from);
    if (hit == npos) return npos;
    from = hit + key.size();
    if (hit == 0 || !ContinuesName(text[hit - 1])) return from;
  }
}

}  // namespace

size_t FindHeaderEnd(std::string_view text) {
  // The last of them counts on purpose: without an empty line all after the first line is content.
  for (const std::string_view headerEnd : {"\r\n\r\n", "\n\n", "\r\n"}) {
    const size_t found = FindBytes(text, headerEnd);
    if (found != npos) return found + headerEnd.size();
  }
  return text.size();
}

size_t FindHeaderLine(std::string_view text, std::string_view name) {
  size_t found = FindIgnoringCase(text, name);
  while (found != npos && found != 0 && !IsLineEnd(text[found - 1])) {
    found = FindIgnoringCase(text, name, found + 1);
  }
  return found;
}

size_t FindContentType(std::string_view text) {
  constexpr std::string_view kName = "Content-Type:";
  const size_t line = FindHeaderLine(text, kName);
  if (line == npos) return npos;
  return std::min(text.find_first_not_of(' ', line + kName.size()), text.size());
}

size_t FixedValue(std::string_view text, size_t line, std::string_view name) {
  return std::min(line + name.size() + 1, text.size());
}

size_t FindFixedValue(std::string_view text, std::string_view name) {
  const size_t line = FindHeaderLine(text, name);
  return line != npos ? FixedValue(text, line, name) : npos;
}

size_t FindLineEnd(std::string_view text, size_t from) {
  // In pieces: a text with one kind of line end would else be read to its end for the other kind.
  constexpr size_t kPiece = 256;
  for (; from < text.size(); from += kPiece) {
    const std::string_view piece = text.substr(from, kPiece);
    const size_t lf = FindByte(piece, '\n');
    const size_t cr = FindByte(piece.substr(0, lf), '\r');
    if (cr != npos) return from + cr;
    if (lf != npos) return from + lf;
  }
  return text.size();
}

size_t FindFoldedLineEnd(const HeaderStretch& value) {
  const std::string_view text = value.text();
  size_t lineEnd = FindLineEnd(text);
  while (lineEnd != text.size()) {
    const size_t tested = lineEnd + 2;
    if (tested >= value.readable.size()) return lineEnd;
    if (value.readable[tested] != ' ' && value.readable[tested] != '\t') return lineEnd;
    lineEnd = FindLineEnd(text, tested);
  }
  return lineEnd;
}

std::optional<std::string_view> FindHeaderParameter(std::string_view text, std::string_view key) {
  const size_t afterKey = FindAfterKey(text, key);
  if (afterKey == npos) return std::nullopt;
  size_t start = std::min(text.find_first_not_of(' ', afterKey), text.size());

  const bool quoted = start != text.size() && text[start] == '"';
  if (quoted) ++start;
  const std::string_view line = text.substr(start, FindLineEnd(text, start) - start);
  if (quoted) {
    const size_t quote = FindByte(line, '"');
    if (quote != npos) return line.substr(0, quote);
  }
  return line.substr(0, line.find_first_of(";\""));
}

}  // namespace tarn
