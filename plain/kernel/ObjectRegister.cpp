#include "ObjectRegister.h"

#include <algorithm>

#include "Fence.h"
#include "Report.h"

namespace tarn::kernel {

void ObjectRegister::Add(int32_t kind, const void* object, int32_t line, const char16_t* file) {
  if (object == nullptr) return;
  const std::lock_guard lock(mutex_);
  const bool recorded = Fenced(false, [&] {
    records_.emplace(object, Record{file, line, kind});
    return true;
  });
  if (!recorded) ++unrecorded_;
}

bool ObjectRegister::Remove(int32_t kind, const void* object) {
  const std::lock_guard lock(mutex_);
  const auto [first, last] = records_.equal_range(object);
  const auto found =
      std::find_if(first, last, [kind](const auto& entry) { return entry.second.kind == kind; });
  if (found != last) {
    records_.erase(found);
    return true;
  }
  // It may be one of those that could not be recorded: the caller gets the benefit of the doubt.
  if (object == nullptr || unrecorded_ == 0) return false;
  --unrecorded_;
  return true;
}

uint64_t ObjectRegister::size() {
  const std::lock_guard lock(mutex_);
  return records_.size() + unrecorded_;
}

bool ObjectRegister::List(const char* what) {
  const std::unique_lock lock(mutex_, std::try_to_lock);
  if (!lock) return false;
  for (const auto& [object, record] : records_) {
    ReportLeak(what, object, record.line, record.file);
  }
  return true;
}

}  // namespace tarn::kernel
