#include "rtf/FontCoverage.h"

#include <array>
#include <cstddef>
#include <span>

#include "Internal/Tarnclasses_.h"
#include "Platform/CodePages.h"
#include "Platform/GlyphCoverage.h"

namespace tarn {
namespace {

// LOGFONTW.
struct LogFont {
  int32_t height = 0;
  int32_t width = 0;
  int32_t escapement = 0;
  int32_t orientation = 0;
  int32_t weight = 0;
  std::array<uint8_t, 8> styles{};
  std::array<char16_t, 32> faceName{};
};
static_assert(sizeof(LogFont) == 92 && offsetof(LogFont, faceName) == 28);

class Font {
 public:
  explicit Font(const LogFont& record) : font_(KernelCreateFont(&record, TARN_HERE)) {}
  Font(const Font&) = delete;
  Font& operator=(const Font&) = delete;
  ~Font() {
    if (font_ != nullptr) KernelDeleteFont(font_, TARN_HERE);
  }
  void* get() const { return font_; }

 private:
  void* font_;
};

// The units of the face name in the record.
std::u16string_view SetFaceName(LogFont& record, const char* faceName) {
  const size_t most = record.faceName.size() - 1;
  size_t bytes = 0;
  while (bytes < most && faceName[bytes] != '\0') ++bytes;
  const size_t units = platform::BytesToUtf16(platform::AnsiCodePage(), {faceName, bytes},
                                              std::span(record.faceName).first(most));
  return {record.faceName.data(), units};
}

}  // namespace

FaceAnswer AskFace(void* context, const char* faceName, std::u16string_view text) {
  LogFont record;
  const std::u16string_view name = SetFaceName(record, faceName);
  const Font font(record);
  if (font.get() == nullptr) return FaceAnswer::Unknown;
  const auto glyphs = AllocateBlock<uint16_t>(text.size(), TARN_HERE);
  if (!glyphs) return FaceAnswer::NoMemory;
  const bool covers = platform::FontHasGlyphs({.context = context,
                                               .font = font.get(),
                                               .faceName = name,
                                               .text = text,
                                               .glyphs = glyphs.get()});
  return covers ? FaceAnswer::Covers : FaceAnswer::CoversNot;
}

bool FontCoversText(void* context, const char* faceName, const char16_t* text, uint64_t length) {
  if (context == nullptr || faceName == nullptr || (text == nullptr && length != 0)) return false;
  return AskFace(context, faceName, {text, length}) == FaceAnswer::Covers;
}

DeviceContext::DeviceContext() : context_(KernelCreateDC(0, TARN_HERE)) {}

DeviceContext::~DeviceContext() {
  if (context_ != nullptr) KernelDeleteDC(context_, TARN_HERE);
}

}  // namespace tarn
