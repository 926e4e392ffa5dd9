// RtfText.h - the text of a group, as a reader of RTF would see it.
#ifndef TARN_SIBLINGS_OFFICE_RTFTEXT_H
#define TARN_SIBLINGS_OFFICE_RTFTEXT_H

#include <string>
#include <string_view>

#include "siblings/office/RtfScanner.h"

namespace tarn::pages {

struct RtfRest {
  std::string text;        // \u as UTF-8, \' as its byte; groups that begin with \* left out
  std::string_view bytes;  // as they are in the document, without the brace that ends the group
};

// Reads up to the brace that ends the group, and that brace. Of the text no more than
// kLongestGroupText bytes are kept.
RtfRest RestOfGroup(RtfScanner& scanner);
inline constexpr size_t kLongestGroupText = size_t{64} << 10;

}  // namespace tarn::pages

#endif
