// IoScope.h - brackets a sibling's use of a temporary file, so that the kernel's I/O mode lets the
// sibling open it by name.
#ifndef TARN_FILEFORMATS_PST_IOSCOPE_H
#define TARN_FILEFORMATS_PST_IOSCOPE_H

#include "Internal/Tarnclasses_.h"

namespace tarn {

// Left on every way out. A mode that cannot be prepared is no failure: the call goes on outside.
class FilterIoScope {
 public:
  FilterIoScope() = default;
  FilterIoScope(const FilterIoScope&) = delete;
  FilterIoScope& operator=(const FilterIoScope&) = delete;
  ~FilterIoScope() { leave(); }

  void enter() {
    if (active_) return;
    if (KernelIoModeFill(state_, KERNEL_IO_SCOPE_BYTES, KERNEL_IO_IN_MEMORY, 0) != StatusOk) return;
    KernelIoModeSwap(state_, 0, 0);
    active_ = true;
  }

  void leave() {
    if (!active_) return;
    KernelIoModeSwap(state_, 0, 0);
    active_ = false;
  }

 private:
  alignas(8) unsigned char state_[KERNEL_IO_SCOPE_BYTES] = {};
  bool active_ = false;
};

}  // namespace tarn

#endif
