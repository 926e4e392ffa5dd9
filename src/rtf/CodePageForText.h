// CodePageForText.h - which code page carries a text.
#ifndef TARN_RTF_CODEPAGEFORTEXT_H
#define TARN_RTF_CODEPAGEFORTEXT_H

#include <cstdint>
#include <span>
#include <string_view>

namespace tarn {

inline constexpr uint32_t kNoCodePage = UINT32_MAX;

// Whether the text survives the way into the code page and back; no text does, and none in a code
// page that the platform lacks. `wideScratch` has room for the text.
bool RoundTripsInCodePage(std::u16string_view text, uint32_t codePage, char16_t* wideScratch,
                          std::span<char> byteScratch);

// The first code page of the charset table that carries the whole text; kNoCodePage when there is
// none, and for an empty text. It takes no memory of the kernel, so that a lack of it never looks
// like a text of several scripts.
uint32_t FindCodePageForText(std::u16string_view text);

}  // namespace tarn

#endif
