#include "Common/TextWriter.h"

namespace tarn {

void TextWriter::appendAsIs(std::string_view piece) {
  const uint64_t kept = WithoutTrailingNul(view()).size();
  reserve(kept + piece.size() + 1);
  if (!status_.ok()) return;
  const uint64_t length = kept + piece.copy(buffer_.data() + kept, piece.size());
  buffer_.data()[length] = '\0';
  buffer_.setLength(length);
}

void TextWriter::append(std::string_view piece) {
  appendAsIs(piece);
  // The NUL is there already.
  if (status_.ok() && !view().ends_with('\0')) buffer_.setLength(buffer_.length() + 1);
}

}  // namespace tarn
