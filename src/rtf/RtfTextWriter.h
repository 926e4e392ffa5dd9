// RtfTextWriter.h - writes text of any script as RTF, with fonts from the document's font table or
// added to it.
//
// One code page for the whole text if there is one; otherwise piece by piece, each in the first
// code page that carries it; a character that no code page carries goes out as "\uN ?" in the first
// font that has its glyphs.
//
// Wide text is UTF-16 of `length` units; it may hold lone surrogates. UTF-8 text may hold NULs in
// front of its first character beyond ASCII; any other NUL belongs to no run and ends in -13.
// A null text is -814, even one of length 0 (but see WriteRtfAsciiRun).
//
// Output goes behind what the buffer holds. Where it cannot grow, the two writers in the middle
// leave out what did not fit and go on; the first and the last report it. Without memory, what was
// written before stays. A host that refuses its budget, though, costs the output its block, and
// what follows begins anew. So a success does not say that the output is whole: AppendRtfHeaderRow
// therefore clears its `lastError` in front of a text and looks at it afterwards.
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

// Writes UTF-8. Malformed parts come out as U+FFFD. 1; -13 for more than INT32_MAX bytes from the
// first one beyond ASCII on; the output's last error; or a failure of the writers below.
int32_t WriteRtfUtf8Text(RtfRender& render, const char* text, uint64_t length);

// Writes a whole wide text, and leaves the document's default font as the current one. Statuses are
// those below; -13 also for a document of unknown default font whose code page no charset of RTF
// has.
int32_t WriteRtfWideText(TrackedBuffer<char>& output, RtfFontTable& table, const char16_t* text,
                         uint64_t length);

// Writes a text that the code page carries: runs beyond ASCII as escapes in its font, the rest in
// the ASCII font. 1; -13 when a run cannot be converted or no charset of RTF has the code page; -1
// without memory; a failure of WriteRtfAsciiRun.
int32_t WriteRtfCodePageText(TrackedBuffer<char>& output, RtfFontTable& table, uint32_t asciiFont,
                             uint32_t& currentFont, uint32_t codePage, const char16_t* text,
                             uint64_t length);

// Writes the ASCII text in front of the first unit that is 0 or at least 128, and puts the number
// of its units into `taken`. What stands between the last special character and such a unit is
// taken but not written; documents made so far look that way, and comparisons rely on it. 1; -814
// without text or `taken`, unless the length is 0; -1851 when the conversion to UTF-8 fails, -1778
// when its result might pass 32 bits; the output's last error; -1 without memory.
int32_t WriteRtfAsciiRun(TrackedBuffer<char>& output, uint32_t& currentFont, uint32_t asciiFont,
                         const char16_t* text, uint64_t length, uint64_t* taken);

}  // namespace tarn

#endif
