// CodePageForText.h - which code page carries a text.
#ifndef TARN_RTF_CODEPAGEFORTEXT_H
#define TARN_RTF_CODEPAGEFORTEXT_H

#include <cstdint>

namespace tarn {

inline constexpr uint32_t kNoCodePage = UINT32_MAX;

// 1 when the text survives the way into the code page and back; 0 otherwise, and for a code page
// that the platform lacks. `wideScratch` holds `length` units, `byteScratch` `byteScratchSize`
// bytes.
int32_t RoundTripsInCodePage(const char16_t* text, uint64_t length, uint32_t codePage,
                             char16_t* wideScratch, char* byteScratch, uint64_t byteScratchSize);

// The first code page of the charset table that carries the whole text; kNoCodePage when there is
// none, and for an empty text. It takes no memory of the kernel, so that a lack of it never looks
// like a text of several scripts.
uint32_t FindCodePageForText(const char16_t* text, uint64_t length);

}  // namespace tarn

#endif
