// RtfWords.h - the control words of RTF that a reader of its text has to know.
#ifndef TARN_ARCHIVE_RTFWORDS_H
#define TARN_ARCHIVE_RTFWORDS_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace tarn::archive {

enum class RtfAction : uint8_t {
  None,
  AnsiCodePage,      // \ansicpgN
  Cell,              // the end of a cell
  Character,         // text: see RtfWord
  CodePage,          // of the document, by a word without a number: see RtfWord::value
  DefaultFont,       // \deffN
  FieldInstruction,  // destination: what makes a field
  FieldResult,       // what a field shows
  Font,              // \fN
  FontCharset,       // in the font table
  FontCodePage,      // in the font table
  FontTable,         // destination
  Hidden,            // on, or off with 0
  HtmlRtf,           // on, or off with 0
  HtmlTag,           // destination: a piece of HTML
  LineEnd,           // \par and \line
  ListMark,          // destination: the mark of a list's item, for readers that know no lists
  Page,              // the end of a page or section
  Plain,             // \plain
  Row,               // the end of a row
  Shape,             // destination: a drawing
  ShapeInstruction,  // what makes a drawing
  ShapeResult,       // what readers show that know no drawings
  ShapeText,         // the text in a drawing
  Skip,              // destination without text of the document
  Tab,
  Unicode,      // \uN
  UnicodePair,  // destination: a text, and the same in Unicode
  UnicodeSkip,  // \ucN
  UnicodeText   // the second of a pair
};

struct RtfWord {
  std::string_view name;
  RtfAction action;
  char32_t value = 0;            // of a Character, and of a CodePage
  std::string_view entity = {};  // of a Character, where HTML has a name for it (MS-OXRTFEX)
};

// Sorted by name.
inline constexpr RtfWord kRtfWords[] = {
    {"ansi", RtfAction::CodePage, 1252},
    {"ansicpg", RtfAction::AnsiCodePage},
    {"author", RtfAction::Skip},
    {"bullet", RtfAction::Character, 0x2022, "&bull;"},
    {"buptim", RtfAction::Skip},
    {"cell", RtfAction::Cell},
    {"colortbl", RtfAction::Skip},
    {"cpg", RtfAction::FontCodePage},
    {"creatim", RtfAction::Skip},
    {"deff", RtfAction::DefaultFont},
    {"deleted", RtfAction::Hidden},
    {"emdash", RtfAction::Character, 0x2014, "&mdash;"},
    {"emspace", RtfAction::Character, 0x2003},
    {"endash", RtfAction::Character, 0x2013, "&ndash;"},
    {"enspace", RtfAction::Character, 0x2002},
    {"f", RtfAction::Font},
    {"fcharset", RtfAction::FontCharset},
    {"filetbl", RtfAction::Skip},
    {"fldinst", RtfAction::FieldInstruction},
    {"fldrslt", RtfAction::FieldResult},
    {"fonttbl", RtfAction::FontTable},
    {"footer", RtfAction::Skip},
    {"footerf", RtfAction::Skip},
    {"footerl", RtfAction::Skip},
    {"footerr", RtfAction::Skip},
    {"ftncn", RtfAction::Skip},
    {"ftnsep", RtfAction::Skip},
    {"ftnsepc", RtfAction::Skip},
    {"header", RtfAction::Skip},
    {"headerf", RtfAction::Skip},
    {"headerl", RtfAction::Skip},
    {"headerr", RtfAction::Skip},
    {"htmlrtf", RtfAction::HtmlRtf},
    {"htmltag", RtfAction::HtmlTag},
    {"info", RtfAction::Skip},
    {"ldblquote", RtfAction::Character, 0x201C, "&ldquo;"},
    {"line", RtfAction::LineEnd},
    {"listtext", RtfAction::ListMark},
    {"lquote", RtfAction::Character, 0x2018, "&lsquo;"},
    {"ltrmark", RtfAction::Character, 0x200E},
    {"mac", RtfAction::CodePage, 10000},
    {"mhtmltag", RtfAction::Skip},
    {"nestcell", RtfAction::Cell},
    {"nestrow", RtfAction::Row},
    {"nonesttables", RtfAction::Skip},
    {"nonshppict", RtfAction::Skip},
    {"objdata", RtfAction::Skip},
    {"page", RtfAction::Page},
    {"par", RtfAction::LineEnd},
    {"pc", RtfAction::CodePage, 437},
    {"pca", RtfAction::CodePage, 850},
    {"pict", RtfAction::Skip},
    {"plain", RtfAction::Plain},
    {"pntext", RtfAction::ListMark},
    {"pntxta", RtfAction::Skip},
    {"pntxtb", RtfAction::Skip},
    {"private", RtfAction::Skip},
    {"qmspace", RtfAction::Character, 0x2005},
    {"rdblquote", RtfAction::Character, 0x201D, "&rdquo;"},
    {"revtbl", RtfAction::Skip},
    {"row", RtfAction::Row},
    {"rquote", RtfAction::Character, 0x2019, "&rsquo;"},
    {"rtlmark", RtfAction::Character, 0x200F},
    {"rxe", RtfAction::Skip},
    {"sect", RtfAction::Page},
    {"shp", RtfAction::Shape},
    {"shpinst", RtfAction::ShapeInstruction},
    {"shprslt", RtfAction::ShapeResult},
    {"shptxt", RtfAction::ShapeText},
    {"stylesheet", RtfAction::Skip},
    {"tab", RtfAction::Tab},
    {"tc", RtfAction::Skip},
    {"txe", RtfAction::Skip},
    {"u", RtfAction::Unicode},
    {"uc", RtfAction::UnicodeSkip},
    {"ud", RtfAction::UnicodeText},
    {"upr", RtfAction::UnicodePair},
    {"v", RtfAction::Hidden},
    {"xe", RtfAction::Skip},
    {"zwbo", RtfAction::Character, 0x200B},
    {"zwj", RtfAction::Character, 0x200D},
    {"zwnbo", RtfAction::Character, 0x2060},
    {"zwnj", RtfAction::Character, 0x200C},
};

consteval bool RtfWordsAreSorted() {
  for (size_t at = 1; at < std::size(kRtfWords); ++at) {
    if (kRtfWords[at - 1].name >= kRtfWords[at].name) return false;
  }
  return true;
}
static_assert(RtfWordsAreSorted());

// One of action None for a word that is not in the table.
inline RtfWord FindRtfWord(std::string_view name) {
  const auto* const found = std::lower_bound(
      std::begin(kRtfWords), std::end(kRtfWords), name,
      [](const RtfWord& word, std::string_view wanted) { return word.name < wanted; });
  if (found == std::end(kRtfWords) || found->name != name) return {name, RtfAction::None};
  return *found;
}

}  // namespace tarn::archive

#endif
