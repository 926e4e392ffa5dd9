// Device contexts and fonts: the system's, and the register of those alive.
#include <cstdint>

#include "Report.h"
#include "SystemGraphics.h"
#include "Tarnbase/Kernel.h"
#include "TrackedObjects.h"

namespace tarn::kernel {
namespace {

enum GraphicsKind : int32_t { DeviceContext = 1, Font = 2 };

void* Tracked(GraphicsKind kind, void* object, int32_t line, const char16_t* file) {
  GraphicsObjects().Add(kind, object, line, file);
  return object;
}

// Before the object goes: its address or handle may be given out again at once.
void Untrack(GraphicsKind kind, const char* operation, const void* object, int32_t line,
             const char16_t* file) {
  if (GraphicsObjects().Remove(kind, object)) return;
  AbortOnMisuse(operation, "not a live object of this kind", object, line, file);
}

}  // namespace
}  // namespace tarn::kernel

using namespace tarn::kernel;

void* KernelCreateDC(int32_t /*reserved*/, int32_t line, const char16_t* file) {
  return Tracked(DeviceContext, MakeContext(), line, file);
}

void KernelDeleteDC(void* context, int32_t line, const char16_t* file) {
  Untrack(DeviceContext, "KernelDeleteDC", context, line, file);
  DestroyContext(context);
}

void* KernelCreateFont(const void* logFont, int32_t line, const char16_t* file) {
  if (logFont == nullptr) return nullptr;
  return Tracked(Font, MakeFont(logFont), line, file);
}

void KernelDeleteFont(void* font, int32_t line, const char16_t* file) {
  Untrack(Font, "KernelDeleteFont", font, line, file);
  DestroyFont(font);
}
