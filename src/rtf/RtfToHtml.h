// RtfToHtml.h - HTML out of RTF that wraps HTML (MS-OXRTFEX).
//
// This is no RTF parser but one forward scan over the bytes, which knows a fixed list of control
// words by their prefixes and copies everything else, unknown words included.
#ifndef TARN_RTF_RTFTOHTML_H
#define TARN_RTF_RTFTOHTML_H

#include <cstdint>

#include "Internal/Tarnclasses_.h"

namespace tarn {

// Turns the text into markup; afterwards it ends with a NUL that its length counts. Without any
// "{\*\htmltag" group nothing but that NUL remains. 1; -9 for a font table in which fewer
// than two bytes of the text follow a backslash; -1 without memory, and for more than kMaxRtfFonts
// fonts. On failure the text is unchanged.
int32_t RtfToHtml(SizedBytes& text);

}  // namespace tarn

#endif
