// UnwrapRtf.h - RTF that wraps HTML or plain text, unwrapped (MS-OXRTFEX).
#ifndef TARN_ARCHIVE_UNWRAPRTF_H
#define TARN_ARCHIVE_UNWRAPRTF_H

#include <cstdint>
#include <string>
#include <string_view>

namespace tarn::archive {

enum class Wrapped : uint8_t { Nothing, Html, Text };

struct UnwrappedRtf {
  Wrapped kind = Wrapped::Nothing;
  std::string content;  // UTF-8; empty for Nothing
};

// A reader of its own beside the filter's scan: it keeps every text that MS-OXRTFEX keeps and adds
// none. Time and memory are in proportion to the text; groups may be nested to any depth.
UnwrappedRtf UnwrapRtf(std::string_view rtf);

}  // namespace tarn::archive

#endif
