// RtfHexRun.h - a run of neighbouring "\'hh" escapes, decoded as one text of a code page.
#ifndef TARN_RTF_RTFHEXRUN_H
#define TARN_RTF_RTFHEXRUN_H

#include <cstdint>
#include <string_view>

#include "rtf/RtfScanOutput.h"

namespace tarn {

// Decodes the run whose first "\'" is at the front of the text, and takes it off. A unit below 128
// is written as that byte, any other as "&#xHHHH;". When the code page is unknown, or there is no
// memory for the conversion, the bytes themselves are written. Letters up to "z" count as hex
// digits, and any other byte with its own code; bytes after the end are zeros. False when the
// output cannot grow.
bool DecodeRtfHexRun(std::string_view& text, RtfScanOutput& output, uint32_t codePage);

}  // namespace tarn

#endif
