// WideText.h - UTF-16 text as the system's calls take it: there both unit types have 16 bits.
#ifndef TARN_PLATFORM_WIN32_WIDE_TEXT_H
#define TARN_PLATFORM_WIN32_WIDE_TEXT_H

#include <string_view>

namespace tarn::platform {

static_assert(sizeof(wchar_t) == sizeof(char16_t));

inline const wchar_t* AsWide(const char16_t* text) noexcept {
  return reinterpret_cast<const wchar_t*>(text);
}
inline wchar_t* AsWide(char16_t* text) noexcept { return reinterpret_cast<wchar_t*>(text); }

inline std::u16string_view AsUtf16(std::wstring_view text) noexcept {
  return {reinterpret_cast<const char16_t*>(text.data()), text.size()};
}

}  // namespace tarn::platform

#endif  // TARN_PLATFORM_WIN32_WIDE_TEXT_H
