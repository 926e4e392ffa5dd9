// Nothing is drawn here: a context is a bare record, and a font is a copy of the LOGFONTW record
// that it was made from.
#include "SystemGraphics.h"

#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace tarn::kernel {
namespace {

constexpr size_t kLogFontBytes = 92;  // LOGFONTW: 28 bytes of numbers, 32 units of face name
constexpr size_t kContextBytes = 16;

}  // namespace

void* MakeContext() { return std::calloc(1, kContextBytes); }

void DestroyContext(void* context) { std::free(context); }

void* MakeFont(const void* logFont) {
  void* const font = std::malloc(kLogFontBytes);
  if (font != nullptr) std::memcpy(font, logFont, kLogFontBytes);
  return font;
}

void DestroyFont(void* font) { std::free(font); }

}  // namespace tarn::kernel
