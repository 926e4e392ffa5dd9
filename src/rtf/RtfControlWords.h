// RtfControlWords.h - the control words that RtfToHtml knows, as a table, and the look-up in it.
//
// A word is compared as a prefix of the bytes at a backslash, and the first row that fits decides:
// "\pardirnatural" is "\pard" with text after it, and "\line" is "\li" and "ne". The last row fits
// every backslash.
//
// Which rows can fit at all is settled by the byte after the backslash. The candidates of each
// byte are derived from the table when this is compiled, so that a look-up compares the few rows
// that matter and still gives what a walk through the whole table would.
#ifndef TARN_RTF_RTFCONTROLWORDS_H
#define TARN_RTF_RTFCONTROLWORDS_H

#include <array>
#include <bit>
#include <cstdint>
#include <string_view>

#include "rtf/RtfNumbers.h"

namespace tarn {

// What is to be done once the word is stepped over and its text written.
enum class RtfWordAction : uint8_t {
  None,
  EatSpace,       // step over a blank
  SkipParameter,  // step over digits and a blank
  Tag,            // drop the group if a replacement was written
  ReplacedTag,    // note the number of the tag that is replaced
  Font,           // take over the font's code page
  HexRun,         // decode the escapes from the word on
  SkipToBrace,    // go to the next closing brace
  SkipBlock,      // drop everything up to "\htmlrtf0"
  AnsiCodePage,   // note the document's code page
  DefaultFont,    // note the document's font, which matters in the head only
  Language,       // note the language's code page
  FontTable,      // read the font table
  Unicode         // write a numeric reference; the number is two bytes after the backslash
};

enum class RtfWordForm : uint8_t {
  Prefix,          // the text
  PrefixAndDigit,  // the text and after it a digit, which is not part of the word
  AnyByteAndMinus  // the text, any byte, "-"
};

struct RtfControlWord {
  std::string_view text;
  std::string_view written;
  RtfWordAction action = RtfWordAction::None;
  RtfWordForm form = RtfWordForm::Prefix;
};

inline constexpr std::array<RtfControlWord, 28> kRtfControlWords = {{
    {"\\*\\htmltag", "", RtfWordAction::Tag},
    {"\\*\\mhtmltag", "", RtfWordAction::ReplacedTag},
    {"\\intbl", " "},
    {"\\qc", " "},
    {"\\pard", "&nbsp;"},
    {"\\par", "\r\n", RtfWordAction::EatSpace},
    {"\\tab", "   ", RtfWordAction::EatSpace},
    {"\\cbpat2", "      ", RtfWordAction::EatSpace},
    {"\\ltrch", "     ", RtfWordAction::EatSpace},
    {"\\rtlch", "", RtfWordAction::EatSpace},
    {"\\li", "", RtfWordAction::SkipParameter},
    {"\\sb", "", RtfWordAction::SkipParameter},
    {"\\qr", "", RtfWordAction::SkipParameter},
    {"\\f", "", RtfWordAction::Font, RtfWordForm::PrefixAndDigit},
    {"\\plain", ""},
    {"\\fi-", "", RtfWordAction::SkipParameter},
    {"\\'", "", RtfWordAction::HexRun},
    {"\\pntext", "", RtfWordAction::SkipToBrace},
    {"\\htmlrtf", "", RtfWordAction::SkipBlock},
    {"\\{", "{"},
    {"\\}", "}"},
    {"\\ansicpg", "", RtfWordAction::AnsiCodePage},
    {"\\lang", "", RtfWordAction::Language},
    {"\\deff", "", RtfWordAction::DefaultFont},
    {"\\fonttbl", "", RtfWordAction::FontTable},
    {"\\u", "", RtfWordAction::Unicode, RtfWordForm::PrefixAndDigit},
    {"\\", "", RtfWordAction::Unicode, RtfWordForm::AnyByteAndMinus},
    {"\\", "\\"},
}};

// Bit i of entry b: row i can fit a backslash with the byte b after it.
consteval std::array<uint32_t, 256> MakeRtfRowsOfByte() {
  static_assert(kRtfControlWords.size() <= 32);
  std::array<uint32_t, 256> rows = {};
  for (size_t i = 0; i < kRtfControlWords.size(); ++i) {
    const std::string_view text = kRtfControlWords[i].text;
    const uint32_t row = uint32_t{1} << i;
    for (size_t byte = 0; byte < rows.size(); ++byte) {
      if (text.size() < 2 || static_cast<unsigned char>(text[1]) == byte) rows[byte] |= row;
    }
  }
  return rows;
}

inline constexpr std::array<uint32_t, 256> kRtfRowsOfByte = MakeRtfRowsOfByte();

constexpr bool FitsRtfControlWord(const RtfControlWord& word, std::string_view bytes) {
  if (!bytes.starts_with(word.text)) return false;
  switch (word.form) {
    case RtfWordForm::PrefixAndDigit:
      return bytes.size() > word.text.size() && IsRtfDigit(bytes[word.text.size()]);
    case RtfWordForm::AnyByteAndMinus:
      return bytes.size() > word.text.size() + 1 && bytes[word.text.size() + 1] == '-';
    case RtfWordForm::Prefix:
      break;
  }
  return true;
}

// The first row that fits the bytes, of which the first is a backslash.
constexpr const RtfControlWord& FindRtfControlWord(std::string_view bytes) {
  if (bytes.size() < 2) return kRtfControlWords.back();
  uint32_t rows = kRtfRowsOfByte[static_cast<unsigned char>(bytes[1])];
  for (;; rows &= rows - 1) {
    const RtfControlWord& word = kRtfControlWords[static_cast<size_t>(std::countr_zero(rows))];
    if (FitsRtfControlWord(word, bytes)) return word;
  }
}

}  // namespace tarn

#endif
