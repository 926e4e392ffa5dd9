// Device contexts and fonts. The plain kernel draws nothing: a context is a bare record, and a font
// is a copy of the LOGFONTW record that it was made from.
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "Report.h"
#include "Tarnbase/Kernel.h"
#include "TrackedObjects.h"

namespace tarn::kernel {
namespace {

enum GraphicsKind : int32_t { DeviceContext = 1, Font = 2 };

constexpr size_t kLogFontBytes = 92;  // LOGFONTW: 28 bytes of numbers, 32 units of face name
constexpr size_t kContextBytes = 16;

void* NewGraphicsObject(GraphicsKind kind, size_t bytes, int32_t line, const char16_t* file) {
  void* const object = std::calloc(1, bytes);
  if (object != nullptr) GraphicsObjects().Add(kind, object, line, file);
  return object;
}

void DeleteGraphicsObject(GraphicsKind kind, const char* operation, void* object, int32_t line,
                          const char16_t* file) {
  if (!GraphicsObjects().Remove(kind, object)) {
    AbortOnMisuse(operation, "not a live object of this kind", object, line, file);
  }
  std::free(object);
}

}  // namespace
}  // namespace tarn::kernel

using namespace tarn::kernel;

void* KernelCreateDC(int32_t /*reserved*/, int32_t line, const char16_t* file) {
  return NewGraphicsObject(DeviceContext, kContextBytes, line, file);
}

void KernelDeleteDC(void* context, int32_t line, const char16_t* file) {
  DeleteGraphicsObject(DeviceContext, "KernelDeleteDC", context, line, file);
}

void* KernelCreateFont(const void* logFont, int32_t line, const char16_t* file) {
  if (logFont == nullptr) return nullptr;
  void* const font = NewGraphicsObject(Font, kLogFontBytes, line, file);
  if (font != nullptr) std::memcpy(font, logFont, kLogFontBytes);
  return font;
}

void KernelDeleteFont(void* font, int32_t line, const char16_t* file) {
  DeleteGraphicsObject(Font, "KernelDeleteFont", font, line, file);
}
