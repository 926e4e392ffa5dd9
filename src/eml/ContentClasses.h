// ContentClasses.h - what a part is, by the start of its Content-Type value (RFC 2045, section 5).
#ifndef TARN_EML_CONTENTCLASSES_H
#define TARN_EML_CONTENTCLASSES_H

#include "Internal/EmlMessage.h"

namespace tarn {

// The class of the first type that [start, end) begins with, ignoring case; ContentOther for every
// other value. A type is a prefix: "text/htmlx" and "image/svg+xml" count.
ContentClass ClassifyContent(const char* start, const char* end);

}  // namespace tarn

#endif
