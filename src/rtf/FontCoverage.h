// FontCoverage.h - which font has the glyphs of a text.
#ifndef TARN_RTF_FONTCOVERAGE_H
#define TARN_RTF_FONTCOVERAGE_H

#include <cstdint>

#include "rtf/RtfFontTable.h"

namespace tarn {

// 1 when the face has a glyph for every unit of the text; 0 otherwise, and on any failure.
// `context` is a device context of the kernel. Only the first 31 bytes of a face name count.
int32_t FontCoversText(void* context, const char* faceName, const char16_t* text, uint64_t length);

// The first font that covers the text: of the table, or else of a short list of common ones, which
// is then added to the table. 1, or 0 when none does and without memory.
int32_t FindFontForText(RtfFontTable& table, const char16_t* text, uint64_t length,
                        uint32_t& fontNumber);

}  // namespace tarn

#endif
