// RtfHexRun.h - a run of neighbouring "\'hh" escapes, decoded as one text of a code page.
#ifndef TARN_RTF_RTFHEXRUN_H
#define TARN_RTF_RTFHEXRUN_H

#include <cstdint>

#include "rtf/RtfScanOutput.h"

namespace tarn {

// Decodes the run whose first "\'" the cursor is at, and moves the cursor behind it. A unit below
// 128 is written as that byte, any other as "&#xHHHH;". When the code page is unknown, or there is
// no memory for the conversion, the bytes themselves are written. Letters up to "z" count as hex
// digits, and any other byte with its own code; bytes behind the end are zeros. 1; 0 when the
// output cannot grow.
int32_t DecodeRtfHexRun(const char*& cursor, const char* end, RtfScanOutput& output,
                        uint32_t codePage);

}  // namespace tarn

#endif
