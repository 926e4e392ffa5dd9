// RtfSymbols.h - the charsets of RTF's fonts, and what symbol fonts show.
#ifndef TARN_ARCHIVE_RTFSYMBOLS_H
#define TARN_ARCHIVE_RTFSYMBOLS_H

#include <cstdint>

#include "rtf/CharsetCodePages.h"

namespace tarn::archive {

inline constexpr uint32_t kSymbolCodePage = 42;

// 0 for charsets that are unknown, and for the one that means the document's own.
constexpr uint32_t CodePageOfRtfCharset(int32_t charset) {
  for (const CharsetCodePage& row : CharsetCodePageTable) {
    if (row.charset == static_cast<uint32_t>(charset)) return row.codePage;
  }
  return 0;
}

// A character of a symbol font as text: marks of lists and arrows as such, letters as letters,
// since fonts are not told apart here.
constexpr char32_t CharacterOfSymbol(unsigned char byte) {
  switch (byte) {
    case 0xA7:
      return 0x25AA;
    case 0xA8:
      return 0x25CB;
    case 0xB7:
      return 0x2022;
    case 0xD8:
      return 0x27A2;
    case 0xE0:
    case 0xF0:
      return 0x2192;
    case 0xFC:
      return 0x2713;
    default:
      return byte < 0x80 || byte >= 0xA0 ? byte : 0x2022;
  }
}

}  // namespace tarn::archive

#endif
