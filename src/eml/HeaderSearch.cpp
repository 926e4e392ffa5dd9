#include "eml/HeaderSearch.h"

#include <algorithm>

#include "Common/ByteSearch.h"

namespace tarn {
namespace {

bool IsLineEnd(char byte) { return byte == '\r' || byte == '\n'; }

}  // namespace

const char* FindHeaderEnd(const char* start, const char* end) {
  // The last of them counts on purpose: without an empty line all behind the first line is content.
  for (const std::string_view headerEnd : {"\r\n\r\n", "\n\n", "\r\n"}) {
    const char* const found = FindBytes(start, end, headerEnd);
    if (found != nullptr) return found + headerEnd.size();
  }
  return end;
}

const char* FindHeaderLine(const char* start, const char* end, std::string_view name) {
  const char* found = FindIgnoringCase(start, end, name);
  while (found != nullptr && found != start && !IsLineEnd(found[-1])) {
    found = FindIgnoringCase(found + 1, end, name);
  }
  return found;
}

const char* FindContentType(const char* start, const char* end) {
  constexpr std::string_view kName = "Content-Type:";
  const char* const line = FindHeaderLine(start, end, kName);
  if (line == nullptr) return nullptr;
  return std::find_if(line + kName.size(), end, [](char byte) { return byte != ' '; });
}

const char* FindLineEnd(const char* start, const char* end) {
  // In pieces: a text with one kind of line end would else be read to its end for the other kind.
  constexpr long kPiece = 256;
  for (const char* piece = start; piece != end;) {
    const char* const pieceEnd = end - piece > kPiece ? piece + kPiece : end;
    const char* const lf = FindByte(piece, pieceEnd, '\n');
    const char* const cr = FindByte(piece, lf != nullptr ? lf : pieceEnd, '\r');
    if (cr != nullptr) return cr;
    if (lf != nullptr) return lf;
    piece = pieceEnd;
  }
  return end;
}

const char* FindFoldedLineEnd(const char* start, const char* end) {
  const char* lineEnd = FindLineEnd(start, end);
  while (lineEnd != end) {
    if (end - lineEnd <= 2) return lineEnd;
    const char* const tested = lineEnd + 2;
    if (*tested != ' ' && *tested != '\t') return lineEnd;
    lineEnd = FindLineEnd(tested, end);
  }
  return nullptr;
}

}  // namespace tarn
