// RtfCodePageStack.h - the code pages that were in force where the open groups began.
//
// Groups nest as deep as a document has bytes, but most of them begin under the same code page, so
// the stack keeps runs: a code page, and how many groups in a row began under it. A run takes 8
// bytes, and comes of at least the four of "{\f1".
#ifndef TARN_RTF_RTFCODEPAGESTACK_H
#define TARN_RTF_RTFCODEPAGESTACK_H

#include <cstdint>

#include "Common/KernelArray.h"

namespace tarn {

class RtfCodePageStack {
 public:
  // False without memory; then nothing has changed.
  bool push(uint32_t codePage) {
    if (!runs_.empty()) {
      Run& top = runs_.back();
      if (top.codePage == codePage && top.groups < UINT32_MAX) {
        ++top.groups;
        return true;
      }
    }
    return runs_.append({codePage, 1});
  }

  // Takes the top into `codePage`; an empty stack leaves it.
  void pop(uint32_t& codePage) {
    if (runs_.empty()) return;
    Run& top = runs_.back();
    codePage = top.codePage;
    if (--top.groups == 0) runs_.truncate(runs_.size() - 1);
  }

 private:
  struct Run {
    uint32_t codePage;
    uint32_t groups;
  };

  KernelArray<Run> runs_;
};

}  // namespace tarn

#endif
