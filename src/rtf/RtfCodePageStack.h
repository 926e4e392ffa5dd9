// RtfCodePageStack.h - the code pages that were in force where the open groups began.
//
// Groups nest as deep as a document has bytes, but most of them begin under the same code page, so
// the stack keeps runs: a code page, and how many groups in a row began under it. A run of 8 bytes
// stands for at least the four bytes of "{\f1".
#ifndef TARN_RTF_RTFCODEPAGESTACK_H
#define TARN_RTF_RTFCODEPAGESTACK_H

#include <cstdint>

#include "Internal/Tarnclasses_.h"

namespace tarn {

class RtfCodePageStack {
 public:
  // False without memory; then nothing has changed.
  bool push(uint32_t codePage) {
    if (count_ > 0) {
      Run& top = runs_[count_ - 1];
      if (top.codePage == codePage && top.groups < UINT32_MAX) {
        ++top.groups;
        return true;
      }
    }
    if (count_ == capacity_ && !grow()) return false;
    runs_[count_++] = Run{codePage, 1};
    return true;
  }

  // Takes the top into `codePage`; an empty stack leaves it.
  void pop(uint32_t& codePage) {
    if (count_ == 0) return;
    Run& top = runs_[count_ - 1];
    codePage = top.codePage;
    if (--top.groups == 0) --count_;
  }

 private:
  struct Run {
    uint32_t codePage;
    uint32_t groups;
  };

  bool grow() {
    const uint64_t capacity = capacity_ == 0 ? 64 : capacity_ + capacity_ / 2;
    auto* const runs =
        static_cast<Run*>(KernelRealloc(runs_.get(), capacity * sizeof(Run), TARN_HERE));
    if (runs == nullptr) return false;
    runs_.take();
    runs_.reset(runs);
    capacity_ = capacity;
    return true;
  }

  KernelBlock<Run> runs_;
  uint64_t count_ = 0;
  uint64_t capacity_ = 0;
};

}  // namespace tarn

#endif
