// RtfTextWriter.h - writes text of any script as RTF, with fonts from the document's font table or
// added to it.
//
// One code page for the whole text if there is one; otherwise piece by piece, each in the first
// code page that carries it; a character that no code page carries goes out as "\uN ?" in the first
// font that has its glyphs.
//
// Wide text is UTF-16 of `length` units; it may hold NULs and lone surrogates. Output goes behind
// what the buffer holds.
#ifndef TARN_RTF_RTFTEXTWRITER_H
#define TARN_RTF_RTFTEXTWRITER_H

#include <cstdint>

#include "Internal/Tarnclasses_.h"
#include "rtf/RtfFontTable.h"

namespace tarn {

// A block of RTF under construction, and the font table of the document that it is for.
struct RtfRender {
  RtfFontTable fonts;
  TrackedBuffer<char> output;
};

// Writes UTF-8. Malformed parts come out as U+FFFD. 1; -814 for a null text with a length; -13 when
// a text cannot be converted; the output's last error; -1 without memory.
int32_t WriteRtfUtf8Text(RtfRender& render, const char* text, uint64_t length);

// Writes a whole wide text, and leaves the document's default font as the current one.
int32_t WriteRtfWideText(TrackedBuffer<char>& output, RtfFontTable& table, const char16_t* text,
                         uint64_t length);

// Writes a text that the code page carries: runs beyond ASCII as escapes in its font, the rest in
// the ASCII font.
int32_t WriteRtfCodePageText(TrackedBuffer<char>& output, RtfFontTable& table, uint32_t asciiFont,
                             uint32_t& currentFont, uint32_t codePage, const char16_t* text,
                             uint64_t length);

// Writes the ASCII text in front of the first unit that is 0 or at least 128, and puts the number
// of its units into `taken`. What stands between the last special character and such a unit is
// taken but not written; documents made so far look that way, and comparisons rely on it.
int32_t WriteRtfAsciiRun(TrackedBuffer<char>& output, uint32_t& currentFont, uint32_t asciiFont,
                         const char16_t* text, uint64_t length, uint64_t* taken);

}  // namespace tarn

#endif
