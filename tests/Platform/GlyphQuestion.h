// GlyphQuestion.h - asks for glyphs as the filter does, with a context and a font of the kernel.
#ifndef TARN_TESTS_PLATFORM_GLYPH_QUESTION_H
#define TARN_TESTS_PLATFORM_GLYPH_QUESTION_H

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Internal/Tarnclasses_.h"
#include "Platform/GlyphCoverage.h"

namespace tarn::test {

// One face, for any number of texts. The kernel's font has the first 31 units of the name.
class GlyphQuestion {
 public:
  explicit GlyphQuestion(std::u16string_view faceName) : faceName_(faceName) {
    LogFont record;
    faceName.copy(record.name.data(), record.name.size() - 1);
    font_ = KernelCreateFont(&record, TARN_HERE);
  }
  GlyphQuestion(const GlyphQuestion&) = delete;
  GlyphQuestion& operator=(const GlyphQuestion&) = delete;
  ~GlyphQuestion() {
    KernelDeleteFont(font_, TARN_HERE);
    KernelDeleteDC(context_, TARN_HERE);
  }

  bool has(std::u16string_view text) const {
    std::vector<uint16_t> glyphs(text.size() + 1);
    return platform::FontHasGlyphs({.context = context_,
                                    .font = font_,
                                    .faceName = faceName_,
                                    .text = text,
                                    .glyphs = glyphs.data()});
  }

 private:
  // LOGFONTW, of which all but the name is zero.
  struct LogFont {
    std::array<uint8_t, 28> numbers{};
    std::array<char16_t, 32> name{};
  };

  std::u16string faceName_;
  void* context_ = KernelCreateDC(0, TARN_HERE);
  void* font_ = nullptr;
};

inline bool Has(std::u16string_view faceName, std::u16string_view text) {
  return GlyphQuestion(faceName).has(text);
}

}  // namespace tarn::test

#endif
