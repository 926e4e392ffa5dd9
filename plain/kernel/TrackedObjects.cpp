#include "TrackedObjects.h"

#include "Report.h"
#include "Tarnbase/Kernel.h"

namespace tarn::kernel {
namespace {

constinit ObjectRegister trackedObjects;
constinit ObjectRegister graphicsObjects;

}  // namespace

void ObjectRegister::Add(int32_t kind, const void* object, int32_t line, const char16_t* file) {
  if (object == nullptr) return;
  const std::lock_guard lock(mutex_);
  if (!table_.Insert(object, Record{file, line, kind})) ++unrecorded_;
}

bool ObjectRegister::Remove(int32_t kind, const void* object) {
  const std::lock_guard lock(mutex_);
  Record taken = {};
  if (table_.Take(object, taken, [kind](const Record& record) { return record.kind == kind; })) {
    return true;
  }
  // It may be one of those that could not be recorded: the caller gets the benefit of the doubt.
  if (object == nullptr || unrecorded_ == 0) return false;
  --unrecorded_;
  return true;
}

uint64_t ObjectRegister::size() {
  const std::lock_guard lock(mutex_);
  return table_.size() + unrecorded_;
}

bool ObjectRegister::List(const char* what) {
  const std::unique_lock lock(mutex_, std::try_to_lock);
  if (!lock) return false;
  table_.ForEach([what](const void* object, const Record& record) {
    ReportLeak(what, object, record.line, record.file);
  });
  return true;
}

ObjectRegister& TrackedObjects() { return trackedObjects; }
ObjectRegister& GraphicsObjects() { return graphicsObjects; }

}  // namespace tarn::kernel

void KernelTrackObject(int32_t kind, const void* object, int32_t line, const char16_t* file) {
  tarn::kernel::TrackedObjects().Add(kind, object, line, file);
}

void KernelUntrackObject(int32_t kind, const void* object, int32_t line, const char16_t* file) {
  if (tarn::kernel::TrackedObjects().Remove(kind, object)) return;
  tarn::kernel::AbortOnMisuse("KernelUntrackObject", "not tracked with this kind", object, line,
                              file);
}
