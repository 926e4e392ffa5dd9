// RtfFontTable.h - the font table of an RTF document: read from its "\fonttbl" group, asked for
// the font of a code page, and extended by fonts that the document lacks.
//
//   {\rtf1\ansi\ansicpg1252\deff0{\fonttbl{\f0\fswiss\fcharset0 Arial;}}\pard ...}
//         ^ ansiCodePage    ^      ^                                 ^
//                defaultFont       tableStart (at "\fonttbl")        tableEnd (behind the brace)
//
// `tableText` is a copy of the stretch; an added font goes in front of its last byte, and `changed`
// says that the document's stretch is to be replaced by it. A table that never closes ends with the
// document, and its last byte is whatever that ends with: a NUL where the length counts one.
//
// Names in the table are the document's bytes. All blocks come from the kernel and belong to the
// table. Entries are only ever added, behind the ones that are there. Documents are hostile:
// nothing is read behind `end`, and a document of more than kMaxRtfFonts fonts is refused like one
// that memory cannot hold.
#ifndef TARN_RTF_RTFFONTTABLE_H
#define TARN_RTF_RTFFONTTABLE_H

#include <array>
#include <cstddef>
#include <cstdint>

#include "Internal/Tarnclasses_.h"
#include "rtf/RtfCoverageMemo.h"

namespace tarn {

inline constexpr uint32_t kNoRtfFont = UINT32_MAX;

// Font numbers of RTF are signed 16-bit; no document needs more fonts than there are numbers.
inline constexpr int32_t kMaxRtfFonts = 32768;

struct RtfFontEntry {
  uint32_t number = kNoRtfFont;  // N of "\fN"
  uint32_t codePage = 0;         // 0: none known
  uint32_t charset = 0;          // of fonts added by AddRtfFont only
  char* name = nullptr;          // owned, NUL-terminated; null: none
};

// What FontForCodePage found before, so that a text of many pieces looks through a long table once
// for each code page.
struct RtfFontMemo {
  uint32_t codePage = 0;
  bool ofDocument = false;  // the code page was the table's `ansiCodePage`
  int32_t entry = -1;       // index of the first entry that carries it; -1: unused
};

struct RtfFontTable {
  RtfFontEntry* entries = nullptr;  // owned
  int32_t count = 0;
  uint32_t parsed = 0;        // 1 once PrepareRtfFontTable has found a table
  uint32_t ansiCodePage = 0;  // of the document
  uint32_t defaultFont = 0;   // N of "\deffN"
  uint32_t changed = 0;       // 1 once a font was added
  uint32_t nextNumber = kNoRtfFont;
  uint64_t tableStart = 0;  // offsets in the document
  uint64_t tableEnd = 0;
  TrackedBuffer<char> tableText;  // no NUL behind it
  std::array<RtfFontMemo, 16> found;
  size_t nextFound = 0;       // the memo that the next one replaces
  uint64_t fontSteps = 0;     // entries that FontForCodePage has looked at
  RtfCoverageMemo coverage;   // of FindFontForText
  uint64_t coverageWork = 0;  // what its searches have cost; see kMaxCoverageWork

  RtfFontTable() = default;
  RtfFontTable(const RtfFontTable&) = delete;
  RtfFontTable& operator=(const RtfFontTable&) = delete;
  ~RtfFontTable();
};

// Appends the entries of the table whose "\fonttbl" word the cursor is at or behind. The cursor
// ends behind the table's closing brace, or at the end of the data. 1; -9 for a backslash that
// fewer than two bytes of the data follow; -1 without memory, and for more than kMaxRtfFonts fonts.
// On failure the entries read so far stay, and the cursor is where it was.
int32_t ParseRtfFontTable(RtfFontTable& table, const char*& cursor, const char* end);

// Reads "\ansicpg", "\deff" and "\fonttbl" of a whole document, once: 1 at once for a table that
// is `parsed`. The whole length is searched, NULs or not; nothing is read behind it.
// A document without a table gets an insertion point at its "\from" word. 1; -9 without either; a
// failure of the parser; the code of a `tableText` that cannot grow, which is the host's own when
// its budget refuses the copy.
int32_t PrepareRtfFontTable(RtfFontTable& table, const char* text, uint64_t length);

// The number of the first font that carries the code page; a fitting font is added when there is
// none. 1; -13 for a code page that no charset of RTF has; -1 without memory.
int32_t FontForCodePage(RtfFontTable& table, uint32_t codePage, uint32_t& fontNumber);

// Adds a font under the table's next number, to the entries and, in front of the last byte, to
// `tableText`. `familyWord` is the word without its backslash and may be empty. A group of more
// than 99 bytes is cut to 98 and its brace; the entry has the whole name. 1; -1 without memory, and
// then the table is as it was.
int32_t AddRtfFont(RtfFontTable& table, const char* faceName, const char* familyWord,
                   uint32_t codePage, uint32_t charset, uint32_t& fontNumber);

// Frees names and entries, and forgets what was found in them. The other fields stay.
void ReleaseRtfFontTable(RtfFontTable& table);

}  // namespace tarn

#endif
