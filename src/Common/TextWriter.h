// TextWriter.h - a text under construction, written from front to back in pieces of any size.
//
// The writer owns its bytes until moveInto() gives them away. The first failure sticks: every call
// after it does nothing, so that a caller may look at status() once, before it uses the text.
//
//   write        adds the bytes and nothing else; terminate() ends such a text
//   append       adds to a text that always ends with a NUL, as SizedBytes::append does; but the
//                block grows in large steps, so that a hundred thousand pieces cost a few copies
//   appendAsIs   the same for a piece that brings its own end
#ifndef TARN_COMMON_TEXTWRITER_H
#define TARN_COMMON_TEXTWRITER_H

#include "Internal/Tarnclasses_.h"

namespace tarn {

class TextWriter {
 public:
  // Whether the host's memory budget hears of the block, as of that of a TrackedBuffer, or does
  // not, as of that of a SizedBytes.
  enum class Budget { Counted, Ignored };

  // `step`: the spare bytes of each growth.
  explicit TextWriter(uint64_t step = 1024, Budget budget = Budget::Counted)
      : buffer_(0, step), budget_(budget) {
    if (budget == Budget::Ignored) buffer_.setThreshold(UINT64_MAX);
  }

  // Room for `count` bytes in all.
  void reserve(uint64_t count) {
    if (status_.ok() && buffer_.reserve(count) == nullptr) fail();
  }

  void write(std::string_view bytes) {
    if (status_.ok() && !buffer_.append(bytes).ok()) fail();
  }

  // A NUL that the text counts, unless it ends with one already.
  void terminate() {
    if (!view().ends_with('\0')) write({"\0", 1});
  }

  // Adds to the text, less one trailing NUL, and ends it with a NUL that counts, unless the piece
  // has brought one.
  void append(std::string_view piece);

  // Adds to the text, less one trailing NUL, and counts exactly the bytes given; a NUL that does
  // not count follows them.
  void appendAsIs(std::string_view piece);

  // StatusOk, or of the first call that failed: StatusOutOfMemory, or the host's refusal of a
  // budget that counts.
  Status status() const { return status_; }

  // All that has been written; to be relied on only while the status is StatusOk.
  std::string_view view() const { return buffer_.view(); }

  // Frees the target's block and gives it the text. A text of which nothing was written is absent.
  void moveInto(SizedBytes& target) {
    const uint64_t length = buffer_.length();
    target.adopt(buffer_.take(), length);
  }

 private:
  void fail() {
    status_ = budget_ == Budget::Counted ? buffer_.lastError() : Status(StatusOutOfMemory);
  }

  TrackedBuffer<char> buffer_;
  Budget budget_;
  Status status_;
};

}  // namespace tarn

#endif
