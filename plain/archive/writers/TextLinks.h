// TextLinks.h - plain text as HTML, with what looks like addresses of pages as links.
#ifndef TARN_ARCHIVE_TEXTLINKS_H
#define TARN_ARCHIVE_TEXTLINKS_H

#include <string_view>

#include "archive/writers/SinkBuffer.h"

namespace tarn::archive {

// A paragraph ends at an empty line. Lines end with LF.
void PutParagraphs(std::string_view text, SinkBuffer& out);

// The address that the text begins with ("https://..."), without what more likely belongs to the
// sentence around it; empty for any other text.
std::string_view AddressAt(std::string_view text);

}  // namespace tarn::archive

#endif
