#include "Common/TextWriter.h"

namespace tarn {

void TextWriter::appendAsIs(std::string_view piece) {
  const uint64_t kept = WithoutTrailingNul(view()).size();
  reserve(kept + piece.size() + 1);
  if (!status_.ok()) return;
  buffer_.setLength(kept);
  write(piece);
  buffer_.data()[buffer_.length()] = '\0';
}

void TextWriter::append(std::string_view piece) {
  appendAsIs(piece);
  if (status_.ok()) terminate();
}

}  // namespace tarn
