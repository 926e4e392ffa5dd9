// Utf8CodePage.h - code page 65001, converted here on every platform: how many U+FFFD a malformed
// sequence gives differs between versions of Windows.
//
// The two conversions of CodePages.h for UTF-8, with the same results. The caller has checked the
// arguments.
#ifndef TARN_PLATFORM_UTF8_CODE_PAGE_H
#define TARN_PLATFORM_UTF8_CODE_PAGE_H

#include <cstdint>
#include <string_view>

namespace tarn::platform {

// Each maximal malformed part gives U+FFFD.
int32_t Utf8ToUtf16(std::string_view source, char16_t* destination, int32_t capacity) noexcept;

// Lone surrogates give EF BF BD and set usedDefault.
int32_t Utf16ToUtf8(std::u16string_view source, char* destination, int32_t capacity,
                    bool& usedDefault) noexcept;

}  // namespace tarn::platform

#endif  // TARN_PLATFORM_UTF8_CODE_PAGE_H
