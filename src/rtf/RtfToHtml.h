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
// "{\*\htmltag" group nothing but that NUL remains. Returns
//   StatusOk             the text is markup;
//   StatusNotSupported   in a font table fewer than two bytes of the text follow a backslash;
//   StatusOutOfMemory    without memory, and for more than kMaxRtfFonts fonts.
// On failure the text is unchanged.
Status RtfToHtml(SizedBytes& text);

}  // namespace tarn

#endif
