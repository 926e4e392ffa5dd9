// FlowedText.h - text with format=flowed (RFC 3676), its paragraphs in one line each.
#ifndef TARN_ARCHIVE_FLOWEDTEXT_H
#define TARN_ARCHIVE_FLOWEDTEXT_H

#include <string>
#include <string_view>

namespace tarn::archive::mail {

// Lines end with LF. Quotes keep their marks, "> " before each paragraph. `deletesSpace` is what
// DelSp=yes says.
std::string UnflowText(std::string_view text, bool deletesSpace);

}  // namespace tarn::archive::mail

#endif
