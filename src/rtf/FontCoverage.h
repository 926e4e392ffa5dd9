// FontCoverage.h - which font has the glyphs of a text.
//
// Texts are characters that no code page carries. Each test of a font makes a font and a block of
// glyph words in the kernel; both are gone when it ends, whatever it finds.
//
// A document may name thousands of fonts and have thousands of characters that none of them has.
// So the answers for the first RtfCoverageMemo::kMostAnswers different characters are remembered in
// the table, and no font is asked twice for one of them; answers that a font that could not be made
// left uncertain and characters of more than 4 units are asked for again. And the work for one
// table is bounded: a font without a name counts as 1, a test as 1 and the units of its text. When
// kMaxCoverageWork is used up, only remembered characters are found any more, and what is not found
// is written in the current font. The work is enough for 200 fonts that lack 3,000 different emoji.
#ifndef TARN_RTF_FONTCOVERAGE_H
#define TARN_RTF_FONTCOVERAGE_H

#include <cstdint>

#include "rtf/RtfFontTable.h"

namespace tarn {

inline constexpr uint64_t kMaxCoverageWork = 1u << 21;

// 1 when the face has a glyph for every unit of the text; 0 otherwise, and on any failure.
// `context` is a device context of the kernel. Only the first 31 bytes of a face name count, 32
// with the NUL that ends it in a LOGFONT; they are in the code page of programs that know nothing
// of Unicode.
int32_t FontCoversText(void* context, const char* faceName, const char16_t* text, uint64_t length);

// The first font that covers the text: of the table, in its order, or else of a short list of
// common ones, which is then added to the table. 1, 0 when none does, or -1 without memory; unless
// it is 1, `fontNumber` and the table are as they were.
int32_t FindFontForText(RtfFontTable& table, const char16_t* text, uint64_t length,
                        uint32_t& fontNumber);

}  // namespace tarn

#endif
