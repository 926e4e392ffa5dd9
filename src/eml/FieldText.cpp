#include "eml/FieldText.h"

#include <cstring>

namespace tarn {

int32_t FieldText::appendAsIs(const char* piece, uint64_t length) {
  const uint64_t kept = WithoutTrailingNul({buffer_.data(), buffer_.length()}).size();
  if (buffer_.reserve(kept + length + 1) == nullptr) return StatusOutOfMemory;
  if (length != 0) std::memcpy(buffer_.data() + kept, piece, length);
  buffer_.setLength(kept + length);
  buffer_.data()[buffer_.length()] = '\0';
  return StatusOk;
}

int32_t FieldText::append(const char* piece, uint64_t length) {
  const int32_t status = appendAsIs(piece, length);
  if (status != StatusOk) return status;
  const uint64_t sum = buffer_.length();
  if (sum == 0 || buffer_.data()[sum - 1] != '\0') buffer_.setLength(sum + 1);
  return StatusOk;
}

void FieldText::moveTo(SizedBytes& field) {
  const uint64_t length = buffer_.length();
  field.adopt(buffer_.take(), length);
}

}  // namespace tarn
