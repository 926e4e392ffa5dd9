#include "Platform/Utf8.h"

#include <cstddef>

#include "Platform/Output.h"

namespace tarn::platform {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

// The shape of a sequence by its first byte: how many bytes follow, and which the first of those
// may be. This keeps out overlong forms, surrogates and everything beyond U+10FFFF.
struct SequenceShape {
  uint32_t followers;  // 0: the byte opens no sequence
  uint8_t low;
  uint8_t high;
};

SequenceShape ShapeOf(uint8_t first) noexcept {
  if (first >= 0xC2 && first <= 0xDF) return {1, 0x80, 0xBF};
  if (first == 0xE0) return {2, 0xA0, 0xBF};
  if (first == 0xED) return {2, 0x80, 0x9F};
  if (first >= 0xE1 && first <= 0xEF) return {2, 0x80, 0xBF};
  if (first == 0xF0) return {3, 0x90, 0xBF};
  if (first >= 0xF1 && first <= 0xF3) return {3, 0x80, 0xBF};
  if (first == 0xF4) return {3, 0x80, 0x8F};
  return {0, 0, 0};
}

// The code point at a position behind ASCII, which moves behind what was taken.
char32_t TakeSequence(std::string_view source, size_t& at) noexcept {
  const auto first = static_cast<uint8_t>(source[at++]);
  SequenceShape shape = ShapeOf(first);
  if (shape.followers == 0) return kReplacement;
  char32_t codePoint = first & (0x3Fu >> shape.followers);
  for (; shape.followers > 0; --shape.followers) {
    if (at == source.size()) return kReplacement;
    const auto byte = static_cast<uint8_t>(source[at]);
    if (byte < shape.low || byte > shape.high) return kReplacement;
    codePoint = (codePoint << 6) | (byte & 0x3Fu);
    shape.low = 0x80;
    shape.high = 0xBF;
    ++at;
  }
  return codePoint;
}

constexpr bool IsHighSurrogate(char16_t unit) { return (unit & 0xFC00) == 0xD800; }
constexpr bool IsLowSurrogate(char16_t unit) { return (unit & 0xFC00) == 0xDC00; }

bool PutUtf8(Output<char>& output, char32_t codePoint) noexcept {
  const auto put = [&output](char32_t byte) { return output.Put(static_cast<char>(byte)); };
  const auto follower = [codePoint](uint32_t shift) {
    return 0x80 | ((codePoint >> shift) & 0x3F);
  };
  if (codePoint < 0x80) return put(codePoint);
  if (codePoint < 0x800) return put(0xC0 | (codePoint >> 6)) && put(follower(0));
  if (codePoint < 0x10000) {
    return put(0xE0 | (codePoint >> 12)) && put(follower(6)) && put(follower(0));
  }
  return put(0xF0 | (codePoint >> 18)) && put(follower(12)) && put(follower(6)) && put(follower(0));
}

}  // namespace

int32_t Utf8ToUtf16(std::string_view source, char16_t* destination, int32_t capacity) noexcept {
  Output<char16_t> output(destination, capacity);
  for (size_t at = 0; at < source.size();) {
    const auto byte = static_cast<uint8_t>(source[at]);
    if (byte < 0x80) {
      if (!output.Put(byte)) return 0;
      ++at;
      continue;
    }
    const char32_t codePoint = TakeSequence(source, at);
    if (codePoint < 0x10000) {
      if (!output.Put(static_cast<char16_t>(codePoint))) return 0;
      continue;
    }
    if (!output.Put(static_cast<char16_t>(0xD7C0 + (codePoint >> 10)))) return 0;
    if (!output.Put(static_cast<char16_t>(0xDC00 | (codePoint & 0x3FF)))) return 0;
  }
  return output.Size();
}

int32_t Utf16ToUtf8(std::u16string_view source, char* destination, int32_t capacity,
                    bool& usedDefault) noexcept {
  Output<char> output(destination, capacity);
  for (size_t at = 0; at < source.size(); ++at) {
    const char16_t unit = source[at];
    char32_t codePoint = unit;
    if (IsHighSurrogate(unit) && at + 1 < source.size() && IsLowSurrogate(source[at + 1])) {
      codePoint = 0x10000 + ((unit & 0x3FFu) << 10) + (source[++at] & 0x3FFu);
    } else if (IsHighSurrogate(unit) || IsLowSurrogate(unit)) {
      codePoint = kReplacement;
      usedDefault = true;
    }
    if (!PutUtf8(output, codePoint)) return 0;
  }
  return output.Size();
}

}  // namespace tarn::platform
