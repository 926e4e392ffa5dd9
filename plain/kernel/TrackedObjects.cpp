#include "TrackedObjects.h"

#include "Report.h"
#include "Tarnbase/Kernel.h"
#include "Undying.h"

namespace tarn::kernel {
namespace {

struct Registers {
  ObjectRegister tracked;
  ObjectRegister graphics;
};

}  // namespace

ObjectRegister& TrackedObjects() { return Undying<Registers>().tracked; }
ObjectRegister& GraphicsObjects() { return Undying<Registers>().graphics; }

}  // namespace tarn::kernel

void KernelTrackObject(int32_t kind, const void* object, int32_t line, const char16_t* file) {
  tarn::kernel::TrackedObjects().Add(kind, object, line, file);
}

void KernelUntrackObject(int32_t kind, const void* object, int32_t line, const char16_t* file) {
  if (tarn::kernel::TrackedObjects().Remove(kind, object)) return;
  tarn::kernel::AbortOnMisuse("KernelUntrackObject", "not tracked with this kind", object, line,
                              file);
}
