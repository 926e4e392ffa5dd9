// FieldText.h - a text that is put together from many small pieces.
//
// It follows AppendTerminated to the letter, and its bytes are those that a SizedBytes would hold
// after the same calls; but its block grows in large steps, so that a field of a megabyte made of
// a hundred thousand pieces costs no more than a few copies. It owns its block until moveTo().
#ifndef TARN_EML_FIELDTEXT_H
#define TARN_EML_FIELDTEXT_H

#include "Internal/Tarnclasses_.h"

namespace tarn {

class FieldText {
 public:
  // Fields are no matter of the host's budget, however large: like every SizedBytes.
  FieldText() { buffer_.setThreshold(UINT64_MAX); }

  // Appends behind the text, less one trailing NUL, and ends it with a NUL that counts, unless the
  // piece brought one. 1 or -1.
  int32_t append(const char* piece, uint64_t length);

  // Appends behind the text, less one trailing NUL, and counts exactly the bytes given, whatever
  // their last one is; a NUL that does not count stands behind them. 1 or -1.
  int32_t appendAsIs(const char* piece, uint64_t length);

  // Lets `field` own the text in the place of what it had. Nothing appended: the field is emptied.
  void moveTo(SizedBytes& field);

 private:
  TrackedBuffer<char> buffer_{0, 256};
};

}  // namespace tarn

#endif
