// RtfSplice.h - puts a header block into RTF, in front of its first "\pard", and replaces the
// document's font table by one that grew while the block was written.
//
//   {\rtf1 ... {\fonttbl{\f0 ...}{\f1 ...}} ... <block> <separator> \pard ... }
//               ^ tableStart               ^ tableEnd
//
// A "\pard" behind the table is what documents have. Where one stands inside a table that has
// grown, the new table ends where the block begins, and the rest of the old one follows behind the
// block. Where one stands in front of such a table, the document loses all in front of the "\pard".
//
// The body is searched byte by byte, case counts, and a NUL ends nothing. Afterwards it ends with a
// NUL that its length counts.
#ifndef TARN_RENDER_RTF_SPLICE_H
#define TARN_RENDER_RTF_SPLICE_H

#include <string_view>

#include "Internal/Tarnclasses_.h"
#include "rtf/RtfFontTable.h"

namespace tarn {

inline constexpr std::string_view kRtfRowTail = "\\insrsid5716485 \\par }\r\n";

// The empty paragraph between the block and the message.
inline constexpr std::string_view kRtfSeparator =
    "\\pard \\ltrpar\\ql \\li0\\ri0\\widctlpar\\wrapdefault\\aspalpha\\aspnum\\faauto\\adjustright"
    "\\rin0\\lin0\\itap0 {\\rtlch\\fcs1 \\af1 \\ltrch\\fcs0 \\insrsid5716485 \\par }";

// Puts the rows and a separator behind them into the body. Offsets of `fonts` are those of
// body.bytes(), and are read only when the table has changed. 1, also for a body without a "\pard",
// which stays as it is; -74 for a body of length 0; -814 for a body with a length and no pointer;
// -1 when the new text finds no memory or no budget. On failure the body is unchanged.
int32_t SpliceRtfBlock(SizedBytes& body, const RtfFontTable& fonts, std::string_view rows);

// The same with rows whose block becomes the body's when they are the longer text: neither of the
// two is there twice. Afterwards, and when memory or budget fails, the rows may be gone.
int32_t SpliceRtfBlock(SizedBytes& body, const RtfFontTable& fonts, TrackedBuffer<char>& rows);

// The same for the block of a mail file, which ends with a separator already and gets a second one:
// two empty paragraphs follow it. Takes over the block and frees it on every way out; a length
// without a pointer gives -814.
int32_t SpliceEmlRtf(SizedBytes& body, SizedBytes block);

}  // namespace tarn

#endif
