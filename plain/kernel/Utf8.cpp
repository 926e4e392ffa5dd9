#include "Utf8.h"

#include "Surrogates.h"

namespace tarn::kernel {
namespace {

constexpr int64_t kStride = 16;  // ASCII goes over in runs of this many; compilers vectorise them

// Both copy the ASCII run at the front, as far as both sides reach, and advance both positions.
void CopyAsciiRun(const char16_t*& in, const char16_t* inEnd, char*& out, const char* outEnd) {
  while (inEnd - in >= kStride && outEnd - out >= kStride) {
    unsigned seen = 0;
    for (int64_t i = 0; i < kStride; ++i) seen |= in[i];
    if (seen >= 0x80) break;
    for (int64_t i = 0; i < kStride; ++i) out[i] = static_cast<char>(in[i]);
    in += kStride;
    out += kStride;
  }
  while (in < inEnd && out < outEnd && *in < 0x80) *out++ = static_cast<char>(*in++);
}

void CopyAsciiRun(const char*& in, const char* inEnd, char16_t*& out, const char16_t* outEnd) {
  while (inEnd - in >= kStride && outEnd - out >= kStride) {
    unsigned seen = 0;
    for (int64_t i = 0; i < kStride; ++i) seen |= static_cast<unsigned char>(in[i]);
    if (seen >= 0x80) break;
    for (int64_t i = 0; i < kStride; ++i) out[i] = static_cast<unsigned char>(in[i]);
    in += kStride;
    out += kStride;
  }
  while (in < inEnd && out < outEnd && static_cast<unsigned char>(*in) < 0x80) {
    *out++ = static_cast<unsigned char>(*in++);
  }
}

// The code point at the front, past which `in` moves; a lone surrogate reads as U+FFFD.
char32_t TakeWide(const char16_t*& in, const char16_t* inEnd) {
  const char16_t unit = *in++;
  if (!IsSurrogate(unit)) return unit;
  if (!IsHighSurrogate(unit) || in == inEnd || !IsLowSurrogate(*in)) return 0xFFFD;
  return JoinSurrogates(unit, *in++);
}

int64_t EncodedLength(char32_t point) {
  return point < 0x80 ? 1 : point < 0x800 ? 2 : point < 0x10000 ? 3 : 4;
}

void Encode(char32_t point, int64_t length, char* out) {
  static constexpr unsigned char kLead[] = {0, 0, 0xC0, 0xE0, 0xF0};
  for (int64_t i = length - 1; i > 0; --i, point >>= 6) {
    out[i] = static_cast<char>(0x80 | (point & 0x3F));
  }
  out[0] = static_cast<char>(length == 1 ? point : kLead[length] | point);
}

// A lead byte's sequence: its length, its own bits, and the bounds of the byte behind it, which
// shut out overlong forms, surrogates and what lies above U+10FFFF.
struct Sequence {
  int64_t length = 0;  // 0: no sequence begins with the byte
  char32_t bits = 0;
  unsigned char low = 0x80;
  unsigned char high = 0xBF;
};

Sequence SequenceOf(unsigned char lead) {
  if (lead < 0x80) return {1, lead, 0, 0};
  if (lead < 0xC2 || lead > 0xF4) return {};
  if (lead < 0xE0) return {2, static_cast<char32_t>(lead & 0x1F), 0x80, 0xBF};
  if (lead < 0xF0) {
    return {3, static_cast<char32_t>(lead & 0x0F),
            static_cast<unsigned char>(lead == 0xE0 ? 0xA0 : 0x80),
            static_cast<unsigned char>(lead == 0xED ? 0x9F : 0xBF)};
  }
  return {4, static_cast<char32_t>(lead & 0x07),
          static_cast<unsigned char>(lead == 0xF0 ? 0x90 : 0x80),
          static_cast<unsigned char>(lead == 0xF4 ? 0x8F : 0xBF)};
}

// False when the front is no well-formed sequence.
bool TakeUtf8(const char*& in, const char* inEnd, char32_t& point) {
  const Sequence sequence = SequenceOf(static_cast<unsigned char>(*in));
  if (sequence.length == 0 || inEnd - in < sequence.length) return false;
  point = sequence.bits;
  for (int64_t i = 1; i < sequence.length; ++i) {
    const unsigned char byte = static_cast<unsigned char>(in[i]);
    const unsigned char low = i == 1 ? sequence.low : 0x80;
    const unsigned char high = i == 1 ? sequence.high : 0xBF;
    if (byte < low || byte > high) return false;
    point = point << 6 | (byte & 0x3F);
  }
  in += sequence.length;
  return true;
}

}  // namespace

int64_t EncodeUtf8(const char16_t* source, int64_t units, char* destination, int64_t bytes) {
  if (source == nullptr || destination == nullptr || units <= 0 || bytes <= 0) return 0;
  const char16_t* in = source;
  const char16_t* const inEnd = source + units;
  char* out = destination;
  char* const outEnd = destination + bytes;
  while (in < inEnd) {
    CopyAsciiRun(in, inEnd, out, outEnd);
    if (in == inEnd) break;
    const char32_t point = TakeWide(in, inEnd);
    const int64_t length = EncodedLength(point);
    if (outEnd - out < length) return 0;
    Encode(point, length, out);
    out += length;
  }
  if (out < outEnd) *out = '\0';
  return out - destination;
}

int64_t DecodeUtf8(const char* source, int64_t bytes, char16_t* destination, int64_t units) {
  if (source == nullptr || destination == nullptr || bytes <= 0 || units <= 0) return 0;
  const char* in = source;
  const char* const inEnd = source + bytes;
  char16_t* out = destination;
  char16_t* const outEnd = destination + units;
  while (in < inEnd) {
    CopyAsciiRun(in, inEnd, out, outEnd);
    if (in == inEnd) break;
    char32_t point = 0;
    if (!TakeUtf8(in, inEnd, point)) return 0;
    if (outEnd - out < (point < 0x10000 ? 1 : 2)) return 0;
    if (point >= 0x10000) {
      *out++ = HighSurrogateOf(point);
      *out++ = LowSurrogateOf(point);
    } else {
      *out++ = static_cast<char16_t>(point);
    }
  }
  if (out < outEnd) *out = u'\0';
  return out - destination;
}

int64_t WideLength(const char16_t* text) {
  int64_t units = 0;
  while (text[units] != u'\0') ++units;
  return units;
}

bool IsWellFormed(const char16_t* text, int64_t units) {
  for (int64_t i = 0; i < units; ++i) {
    if (!IsSurrogate(text[i])) continue;
    if (!IsHighSurrogate(text[i]) || i + 1 == units || !IsLowSurrogate(text[i + 1])) return false;
    ++i;
  }
  return true;
}

std::string ToUtf8(const char16_t* text, int64_t units) {
  if (units <= 0 || !IsWellFormed(text, units)) return {};
  std::string result(static_cast<size_t>(units) * 3, '\0');
  const int64_t bytes = EncodeUtf8(text, units, result.data(), static_cast<int64_t>(result.size()));
  result.resize(static_cast<size_t>(bytes));
  return result;
}

std::u16string ToWide(const std::string& text) {
  std::u16string result(text.size(), u'\0');
  const int64_t units = DecodeUtf8(text.data(), static_cast<int64_t>(text.size()), result.data(),
                                   static_cast<int64_t>(result.size()));
  result.resize(static_cast<size_t>(units));
  return result;
}

}  // namespace tarn::kernel
