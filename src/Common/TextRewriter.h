// TextRewriter.h - replaces many stretches of a text in its own block, each byte moved twice.
//
// The block grows once, the old text moves to its end, and the new one is written from the start,
// out of the old text and the replacements:
//
//   |<- new, written ->|  gap  |<- old, still to come ->|
//
// The gap never closes so long as the block has grown by the most that the new text is ever ahead
// of the old one. Two texts are thus never in memory.
#ifndef TARN_COMMON_TEXTREWRITER_H
#define TARN_COMMON_TEXTREWRITER_H

#include <algorithm>

#include "Internal/Tarnclasses_.h"

namespace tarn {

// How far the new text is ahead of the old one, stretch by stretch.
class TextGrowth {
 public:
  void add(uint64_t removed, uint64_t added) {
    now_ += static_cast<int64_t>(added) - static_cast<int64_t>(removed);
    most_ = std::max(most_, now_);
  }
  uint64_t most() const { return static_cast<uint64_t>(most_); }

 private:
  int64_t now_ = 0;
  int64_t most_ = 0;
};

class TextRewriter {
 public:
  // False without memory, and then the text is as it was. Until close() the rewriter has its block.
  bool open(SizedBytes& text, const TextGrowth& growth);

  // The text as it was. What lies before the last replaced stretch's end is not there any more.
  std::string_view old() const { return old_; }

  // Puts the replacement, which is in another block, in the place of [start, end) of the old text;
  // no stretch starts before the one before it ends.
  void replace(uint64_t start, uint64_t end, std::string_view replacement);

  // The rest stays as it is, and the text is the new one.
  void close();

 private:
  void keepUpTo(uint64_t place);

  SizedBytes* text_ = nullptr;
  KernelBlock<char> block_;
  std::string_view old_;
  uint64_t taken_ = 0;    // of the old text
  uint64_t written_ = 0;  // of the new one
};

}  // namespace tarn

#endif
