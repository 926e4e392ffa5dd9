// RunFilter.h - tells quickly that a text is in none of many short ones.
//
// Every run of eight bytes of the texts sets one bit, by its hash. A text whose own runs have not
// all set theirs is in none of them. Names that count ("image0041.png") differ in a few runs, which
// is enough.
#ifndef TARN_COMMON_RUNFILTER_H
#define TARN_COMMON_RUNFILTER_H

#include <string_view>

#include "Internal/Tarnclasses_.h"

namespace tarn {

class RunFilter {
 public:
  void add(std::string_view text);
  // False when the text is in none of those added. May be true for others too; always is for a
  // text of fewer than eight bytes, and where there was no memory.
  bool mayHold(std::string_view text) const;
  // As new.
  void clear();

 private:
  KernelBlock<uint64_t> bits_;
  bool isBlind_ = false;  // without memory
};

}  // namespace tarn

#endif
