// RtfFonts.h - the fonts of an RTF document: found by number, by code page or by glyphs, and
// extended by fonts that the document lacks.
//
// An added font goes before the last byte of the table's text, and `changed` tells that the
// document's stretch is to be replaced by it. A table that never closes ends with the document, and
// its last byte is whatever that ends with: a NUL where the length counts one.
//
// Documents are hostile: a table of more than kMaxRtfFonts fonts is refused like one that memory
// cannot hold, what was found once is remembered, and the work of looking for glyphs is bounded.
// Work counts 1 for a font without a name, and 1 and the units of the text for any other. When
// kMaxCoverageWork is used up, only remembered texts are found any more. It is enough for 200 fonts
// that lack 3,000 different emoji.
#ifndef TARN_RTF_RTFFONTS_H
#define TARN_RTF_RTFFONTS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "Common/KernelMap.h"
#include "rtf/RtfCoverageMemo.h"
#include "rtf/RtfFontTable.h"

namespace tarn {

inline constexpr uint64_t kMaxCoverageWork = 1u << 21;

struct NewRtfFont {
  const char* faceName;
  const char* familyWord;  // without its backslash; may be empty
  uint32_t codePage;
  uint32_t charset;
};

class RtfFonts {
 public:
  RtfFonts() = default;
  // Fonts that are already read, with the names that belong to them.
  explicit RtfFonts(KernelArray<RtfFontEntry> entries);

  const RtfFontTable& table() const { return table_; }

  // The document's code page, where the document does not name one.
  void setAnsiCodePage(uint32_t codePage);

  // Reads "\ansicpg", "\deff" and "\fonttbl" of a whole document; nothing happens once a table has
  // been read (`parsed`). A document without a table gets an insertion point at its "\from" word.
  // All of the document is searched, NULs or not. Returns
  //   StatusOk             the table or the insertion point was found;
  //   StatusNotSupported   the document has neither, or its table breaks off after a backslash;
  //   StatusOutOfMemory    without memory, and for more than kMaxRtfFonts fonts;
  //   a code of the host   its budget refuses the copy of the table's text.
  // After a failure the fonts read so far stay and `parsed` is false: another call adds them again.
  Status prepare(std::string_view document);

  // ParseRtfFontTable, and then every font read so is found by its number.
  Status readTable(std::string_view& text);

  // The code page of the first font with that number, of those that readTable read; or null.
  // kNoRtfFont is no font's number.
  const uint32_t* codePageOf(uint32_t number) const;

  // The number of the first font that carries the code page; a fitting font is added when there is
  // none. Returns
  //   StatusOk            `number` is set;
  //   StatusBadArgument   no charset of RTF has the code page;
  //   StatusOutOfMemory   without memory.
  Status forCodePage(uint32_t codePage, uint32_t& number);

  // The document's default font. Where it is unknown, the font for the document's code page becomes
  // it; the outcomes are those of forCodePage.
  Status defaultFont(uint32_t& number);

  // The first font that has a glyph for every unit of the text: of the table, in its order, or else
  // of a short list of common ones, which is then added to the table. Returns
  //   StatusOk            `number` is set;
  //   StatusFailed        no font was found;
  //   StatusOutOfMemory   without memory.
  // Unless it is StatusOk the table is as it was.
  Status forGlyphs(std::u16string_view text, uint32_t& number);

  // Adds a font under the table's next number, to the entries and to the table's text. A group of
  // more than 99 bytes is cut to 98 and its brace; the entry has the whole name. Returns
  //   StatusOk            `number` is set;
  //   StatusOutOfMemory   without memory or budget; the table is as it was.
  Status add(const NewRtfFont& font, uint32_t& number);

  // ReleaseRtfFontTable, and what was found is forgotten.
  void release();

  // Entries that forCodePage has looked at.
  uint64_t fontSteps() const { return fontSteps_; }
  // What the searches of forGlyphs have cost; tests begin with some of it spent.
  uint64_t coverageWork() const { return coverageWork_; }
  void setCoverageWork(uint64_t work) { coverageWork_ = work; }

 private:
  class GlyphSearch;

  // What forCodePage found before, so that a text of many pieces looks through a long table once
  // for each code page.
  struct Found {
    uint32_t codePage;
    uint32_t number;
  };

  Status readDocumentTable(size_t offset, std::string_view text);
  std::optional<uint32_t> findCarrier(uint32_t codePage);
  bool spend(uint64_t work);

  RtfFontTable table_;
  KernelMap<uint32_t, uint32_t> codePages_;  // by font number
  size_t indexed_ = 0;                       // entries whose numbers are in there
  std::array<Found, 16> found_;
  size_t foundCount_ = 0;  // the latest are kept
  uint64_t fontSteps_ = 0;
  RtfCoverageMemo covered_;
  uint64_t coverageWork_ = 0;
};

// The members prepare, forCodePage, add and forGlyphs, with their outcomes. A null document is an
// empty one; a null text with a length is covered by no font (StatusFailed).
Status PrepareRtfFontTable(RtfFonts& fonts, const char* text, uint64_t length);
Status FontForCodePage(RtfFonts& fonts, uint32_t codePage, uint32_t& fontNumber);
Status AddRtfFont(RtfFonts& fonts, const NewRtfFont& font, uint32_t& fontNumber);
Status FindFontForText(RtfFonts& fonts, const char16_t* text, uint64_t length,
                       uint32_t& fontNumber);

}  // namespace tarn

#endif
