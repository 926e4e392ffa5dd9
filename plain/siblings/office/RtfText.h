// RtfText.h - the text of a group, as a reader of RTF would see it.
#ifndef TARN_SIBLINGS_OFFICE_RTFTEXT_H
#define TARN_SIBLINGS_OFFICE_RTFTEXT_H

#include <string>
#include <string_view>

#include "siblings/office/RtfScanner.h"

namespace tarn::pages {

// Reads up to the brace that ends the group, and that brace; gives the text: \u as UTF-8, \' as its
// byte, without groups that begin with \*. No more than kLongestGroupText bytes of it are kept.
std::string RestOfGroup(RtfScanner& scanner);
inline constexpr size_t kLongestGroupText = size_t{64} << 10;

}  // namespace tarn::pages

#endif
