// RtfFontTable.h - the font table of an RTF document, and how it is read from a "\fonttbl" group.
//
//   {\rtf1\ansi\ansicpg1252\deff0{\fonttbl{\f0\fswiss\fcharset0 Arial;}}\pard ...}
//         ^ ansiCodePage    ^      ^                                 ^
//                defaultFont       tableStart (at "\fonttbl")        tableEnd (after the brace)
//
// Only RtfFonts (RtfFonts.h) changes a table that has been read.
#ifndef TARN_RTF_RTFFONTTABLE_H
#define TARN_RTF_RTFFONTTABLE_H

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "Common/KernelArray.h"
#include "Internal/Tarnclasses_.h"

namespace tarn {

inline constexpr uint32_t kNoRtfFont = UINT32_MAX;

// Font numbers of RTF are signed 16-bit; no document needs more fonts than there are numbers.
inline constexpr size_t kMaxRtfFonts = 32768;

struct RtfFontEntry {
  uint32_t number = kNoRtfFont;  // N of "\fN"
  uint32_t codePage = 0;         // 0: none known
  uint32_t charset = 0;          // of fonts added by AddRtfFont only
  char* name = nullptr;          // a kernel block of the table's; null: none
};

struct RtfFontTable {
  KernelArray<RtfFontEntry> entries;  // grows by one
  bool parsed = false;                // PrepareRtfFontTable has found a table
  uint32_t ansiCodePage = 0;          // of the document
  uint32_t defaultFont = 0;           // N of "\deffN"
  bool changed = false;               // a font was added
  uint32_t nextNumber = kNoRtfFont;
  uint64_t tableStart = 0;  // offsets in the document
  uint64_t tableEnd = 0;
  TrackedBuffer<char> tableText;  // of the document, with what was added; no NUL after it

  RtfFontTable() = default;
  RtfFontTable(const RtfFontTable&) = delete;
  RtfFontTable& operator=(const RtfFontTable&) = delete;
  ~RtfFontTable();

  size_t count() const { return entries.size(); }
};

// Appends the entries of the table whose "\fonttbl" word the text begins at or after. Returns
//   StatusOk             the table is taken off the text, its closing brace included;
//   StatusNotSupported   fewer than two bytes of the text follow a backslash;
//   StatusOutOfMemory    without memory, and for more than kMaxRtfFonts fonts.
// On failure the entries read so far stay, and the text is as it was.
Status ParseRtfFontTable(RtfFontTable& table, std::string_view& text);

// Frees names and entries. The other fields stay.
void ReleaseRtfFontTable(RtfFontTable& table);

// A face name in a block of its own, with a NUL after it; an empty owner without memory.
KernelBlock<char> CopyRtfFontName(std::string_view name);

}  // namespace tarn

#endif
