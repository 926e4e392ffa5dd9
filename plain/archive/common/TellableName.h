// TellableName.h - paths as text.
#ifndef TARN_ARCHIVE_TELLABLENAME_H
#define TARN_ARCHIVE_TELLABLENAME_H

#include <string>
#include <string_view>

namespace tarn::archive {

// A path as UTF-8, different for different paths: each byte that is no UTF-8 is "\\xFF" with its
// two digits, and so is a backslash that such digits come after. Most paths are what they were.
std::string TellableName(std::string_view path);

}  // namespace tarn::archive

#endif
