// WideText.h - the two names of a UTF-16 unit.
#ifndef TARN_TARNMAIL_WIN32_WIDETEXT_H
#define TARN_TARNMAIL_WIN32_WIDETEXT_H

#include <string>
#include <string_view>

namespace tarn::host {

static_assert(sizeof(wchar_t) == sizeof(char16_t));

inline std::u16string_view AsUtf16(std::wstring_view text) {
  return {reinterpret_cast<const char16_t*>(text.data()), text.size()};
}

}  // namespace tarn::host

#endif
