// ScrubHtmlBody.h - blanks out what turning RTF into HTML can leave in a text: certain whole tags,
// and numeric references of control characters at its head.
#ifndef TARN_RTF_SCRUBHTMLBODY_H
#define TARN_RTF_SCRUBHTMLBODY_H

#include <cstdint>

#include "Internal/Status.h"

namespace tarn {

// Changes bytes in place; the length stays. The text ends at its first NUL or at `length`,
// whichever comes first. Always StatusOk.
Status ScrubHtmlBody(char* text, uint64_t length);

}  // namespace tarn

#endif
