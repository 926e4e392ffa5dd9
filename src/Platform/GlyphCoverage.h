// GlyphCoverage.h - whether a font has the glyphs of a text.
//
// Who answers depends on the system; docs/glyph-coverage.md tells more.
//
//   Windows     Uniscribe, for the font selected into the context. GDI made the font from the face
//               name and, where that is not installed, silently took another: then that one
//               answers.
//   elsewhere   fontconfig and FreeType, for the installed face of exactly that family name
//               (compared without case, never substituted), the one nearest to regular, through its
//               Unicode character map or else its symbol map. The installed families are listed
//               once in a process, the face of a family is opened once, when the family is first
//               asked for, and nothing is kept of other names, however many documents bring.
//
// Units are looked at one by one; no real font has a glyph for half of a surrogate pair.
#ifndef TARN_PLATFORM_GLYPHCOVERAGE_H
#define TARN_PLATFORM_GLYPHCOVERAGE_H

#include <cstdint>
#include <string_view>

namespace tarn::platform {

struct GlyphQuery {
  void* context = nullptr;       // the kernel's device context; Windows only
  void* font = nullptr;          // the kernel's font of that face; Windows only
  std::u16string_view faceName;  // without a NUL; not for Windows, which has the font
  std::u16string_view text;
  uint16_t* glyphs = nullptr;  // scratch, one word a unit of the text; Windows only
};

// True when every unit has a glyph; false otherwise, and on any failure. The caller keeps what the
// query points to; the context has its old font again when this returns. Without any font, and
// where the system has no configuration of fonts, all answers are false. May be called from any
// thread, on Windows with a context and a font of its own; nothing throws. Where faces are opened
// once, one that is no longer on disk counts as it was.
bool FontHasGlyphs(const GlyphQuery& query) noexcept;

}  // namespace tarn::platform

#endif
