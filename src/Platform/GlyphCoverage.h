// GlyphCoverage.h - whether a font has the glyphs of a text.
//
// The installed face of exactly that family name (compared without case, never substituted), the
// one nearest to regular, is asked through its Unicode character map or else its symbol map. The
// installed families are listed once in a process, the face of a family is opened once, when the
// family is first asked for, and nothing is kept of other names, however many documents bring.
// docs/glyph-coverage.md tells more.
//
// Context, font and glyph words are the seam for a system whose text services want a font selected
// into a context; nothing looks at them now.
//
// Units are looked at one by one, so no unit of a surrogate pair has a glyph.
#ifndef TARN_PLATFORM_GLYPHCOVERAGE_H
#define TARN_PLATFORM_GLYPHCOVERAGE_H

#include <cstdint>
#include <string_view>

namespace tarn::platform {

struct GlyphQuery {
  void* context = nullptr;       // the kernel's device context
  void* font = nullptr;          // the kernel's font of that face
  std::u16string_view faceName;  // without a NUL
  std::u16string_view text;
  uint16_t* glyphs = nullptr;  // scratch, one word a unit of the text
};

// True when every unit has a glyph; false otherwise, for an unknown face and on any failure.
// Without any font, and where the system has no configuration of fonts, all answers are false. May
// be called from any thread; nothing throws. A face that is no longer on disk counts as it was.
bool FontHasGlyphs(const GlyphQuery& query) noexcept;

}  // namespace tarn::platform

#endif
