// FontCoverage.h - whether a face has the glyphs of a text.
//
// Each question makes a font and a block of glyph words in the kernel; both are gone when it is
// answered.
#ifndef TARN_RTF_FONTCOVERAGE_H
#define TARN_RTF_FONTCOVERAGE_H

#include <cstdint>
#include <string_view>

namespace tarn {

// The screen's device context, or null.
class DeviceContext {
 public:
  DeviceContext();
  DeviceContext(const DeviceContext&) = delete;
  DeviceContext& operator=(const DeviceContext&) = delete;
  ~DeviceContext();
  void* get() const { return context_; }

 private:
  void* context_;
};

enum class FaceAnswer {
  Covers,  // the face has a glyph for every unit of the text
  CoversNot,
  Unknown,  // the font could not be made, which counts as one that does not cover the text
  NoMemory
};

// Only the first 31 bytes of a face name count, 32 with the NUL that ends it in a LOGFONT; they are
// in the code page of programs that know nothing of Unicode. `context` is not null.
FaceAnswer AskFace(void* context, const char* faceName, std::u16string_view text);

// Whether the face covers the text. A null argument is covered by none.
bool FontCoversText(void* context, const char* faceName, const char16_t* text, uint64_t length);

}  // namespace tarn

#endif
