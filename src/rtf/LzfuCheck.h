// LzfuCheck.h - whether packed text would unpack, for those who do not want the text.
//
// The packed bytes come in pieces of any size, and nothing of them is kept: where the write
// position is follows from the control bytes and the lengths of the references alone.
#ifndef TARN_RTF_LZFUCHECK_H
#define TARN_RTF_LZFUCHECK_H

#include <cstdint>
#include <span>

#include "rtf/LzfuUnpack.h"

namespace tarn {

class LzfuCheck {
 public:
  // For UnpackLzfu up to a text of `textSize` bytes, into a block with room for `spare` more.
  LzfuCheck(uint64_t textSize, uint64_t spare)
      : end_(kLzfuFixedSize + textSize), room_(end_ + spare) {}

  // The next packed bytes; those after the text's end do not count.
  void take(std::span<const unsigned char> packed);

  // Whether the text is whole with what has been taken; false after damage.
  bool isWhole() const { return !isDamaged_ && position_ >= end_; }

 private:
  uint64_t passGroups(std::span<const unsigned char> packed);
  void passReference(unsigned low);
  void endToken();

  uint64_t position_ = kLzfuFixedSize;
  uint64_t end_;
  uint64_t room_;
  unsigned control_ = 0;     // of the tokens to come, from bit 0 up
  unsigned tokensLeft_ = 0;  // of the group
  unsigned high_ = 0;        // the first byte of a reference
  bool hasHigh_ = false;
  bool isDamaged_ = false;
};

}  // namespace tarn

#endif
