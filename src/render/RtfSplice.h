// RtfSplice.h - puts a header block into RTF, before its first "\pard", and replaces the
// document's font table by one that grew while the block was written.
//
//   {\rtf1 ... {\fonttbl{\f0 ...}{\f1 ...}} ... <block> <separator> \pard ... }
//               ^ tableStart               ^ tableEnd
//
// Documents have their "\pard" after the table. Where it is inside a table that has grown, the new
// table ends where the block begins, and the rest of the old one follows the block. Where it is
// before such a table, the document loses all before the "\pard".
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

// Puts the rows and a separator after them into the body. Offsets of `fonts` are those of
// body.view(), and are read only when the table has changed. On failure the body is as it was.
//   StatusOk           also for a body without a "\pard", which stays as it is
//   StatusTimeFailed   a body of length 0
//   StatusOutOfMemory  of memory or budget
Status SpliceRtfBlock(SizedBytes& body, const RtfFontTable& fonts, std::string_view rows);

// The same with rows whose block becomes the body's when they are the longer text: neither of the
// two is there twice. Afterwards, and when memory or budget fails, the rows may be gone.
Status SpliceRtfBlock(SizedBytes& body, const RtfFontTable& fonts, TrackedBuffer<char>& rows);

// The same for the block of a mail file, which ends with a separator already and gets a second one:
// two empty paragraphs follow it.
Status SpliceEmlRtf(SizedBytes& body, SizedBytes block);

}  // namespace tarn

#endif
