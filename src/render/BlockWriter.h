// BlockWriter.h - a text under construction, written from front to back.
//
// The writer owns its bytes until moveInto() gives them away. The first failure sticks: every write
// behind it does nothing, so that a caller may look at status() once, before it uses the text.
#ifndef TARN_RENDER_BLOCK_WRITER_H
#define TARN_RENDER_BLOCK_WRITER_H

#include <string_view>

#include "Internal/Tarnclasses_.h"

namespace tarn {

class BlockWriter {
 public:
  // `step`: the spare bytes of each growth.
  explicit BlockWriter(uint64_t step = 1024) : buffer_(0, step) {}

  // Room for `count` bytes in all.
  void reserve(uint64_t count) {
    if (status_ == StatusOk && buffer_.reserve(count) == nullptr) status_ = buffer_.lastError();
  }

  void write(std::string_view text) {
    if (status_ == StatusOk) status_ = buffer_.append(text.data(), text.size());
  }

  // A field without its terminating NUL, or all bytes that a text's length counts. A null pointer
  // with a length is a failure, -814.
  void writeField(const SizedBytes& field) {
    if (CheckSource(field)) write(field.text());
  }
  void writeWhole(const SizedBytes& text) {
    if (CheckSource(text)) write(text.view());
  }

  // A NUL that the text counts, unless it ends with one already.
  void terminate() {
    if (status_ == StatusOk && !text().ends_with('\0')) write(std::string_view("\0", 1));
  }

  // 1, or the code of the first write that failed.
  int32_t status() const { return status_; }

  // What has been written; to be relied on only while the status is 1.
  std::string_view text() const {
    return buffer_.data() == nullptr ? std::string_view()
                                     : std::string_view(buffer_.data(), buffer_.length());
  }

  // Frees the target's old block and gives it the text.
  void moveInto(SizedBytes& target) {
    const uint64_t length = buffer_.length();
    target.adopt(buffer_.take(), length);
  }

 private:
  bool CheckSource(const SizedBytes& source) {
    const bool broken = source.data() == nullptr && source.length() != 0;
    if (broken && status_ == StatusOk) status_ = StatusNullArgument;
    return !broken;
  }

  TrackedBuffer<char> buffer_;
  int32_t status_ = StatusOk;
};

}  // namespace tarn

#endif
