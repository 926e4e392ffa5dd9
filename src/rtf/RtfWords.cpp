#include "rtf/RtfWords.h"

#include <array>
#include <charconv>
#include <string_view>

namespace tarn {
namespace {

int32_t AppendNumbered(TrackedBuffer<char>& output, std::string_view word, int32_t number,
                       std::string_view ending) {
  std::array<char, 24> text;  // a word of two bytes, eleven digits, an ending of two
  char* at = text.data() + word.copy(text.data(), word.size());
  at = std::to_chars(at, text.data() + text.size(), number).ptr;
  at += ending.copy(at, ending.size());
  return output.append(text.data(), static_cast<uint64_t>(at - text.data()));
}

}  // namespace

int32_t AppendRtfFont(TrackedBuffer<char>& output, uint32_t number) {
  return AppendNumbered(output, "\\f", static_cast<int32_t>(number), " ");
}

int32_t AppendRtfByte(TrackedBuffer<char>& output, uint8_t byte) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  const std::array<char, 4> text = {'\\', '\'', kDigits[byte >> 4], kDigits[byte & 15]};
  return output.append(text.data(), text.size());
}

int32_t AppendRtfUnit(TrackedBuffer<char>& output, char16_t unit) {
  return AppendNumbered(output, "\\u", static_cast<int16_t>(unit), " ?");
}

}  // namespace tarn
