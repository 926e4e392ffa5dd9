// NaiveLzfu.h - compressed RTF unpacked as the format tells it, byte by byte, for comparisons.
#ifndef TARN_TESTS_RTF_NAIVELZFU_H
#define TARN_TESTS_RTF_NAIVELZFU_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "CompressedRtfSupport.h"
#include "support/RtfCompressor.h"

namespace tarn::test {

// Unpacks into a block that is all the room there is, from position 207 until `end` is reached. The
// position after the last token, or 0 for damage.
inline size_t UnpackPlainly(std::string_view contents, std::string& block, size_t end) {
  block.replace(0, 207, LzfuStartText());
  size_t position = 207;
  size_t input = 0;
  unsigned control = 0;
  const auto next = [&] { return static_cast<unsigned char>(contents[input++]); };
  for (uint32_t token = 0; position < end; ++token, control >>= 1) {
    if (token % 8 == 0) {
      if (input >= contents.size()) return 0;
      control = next();
    }
    if ((control & 1) == 0) {
      if (input >= contents.size()) return 0;
      block[position++] = static_cast<char>(next());
      continue;
    }
    if (input + 2 > contents.size()) return 0;
    const unsigned c = next();
    const unsigned d = next();
    const size_t length = (d & 15) + 2;
    const size_t candidate = (position & ~size_t{0xFFF}) + ((c * 16) | (d >> 4));
    if (candidate >= position && candidate < 4096) return 0;
    size_t source = candidate < position ? candidate : candidate - 4096;
    if (position + length > block.size()) return 0;
    for (size_t i = 0; i < length; ++i) block[position++] = block[source++];
  }
  return position;
}

// What the first decoder is to leave of packed contents.
inline Decoded DecodePlainly(std::string_view contents, size_t rawSize, const std::string& old) {
  std::string block(207 + rawSize + 1, '\0');
  if (UnpackPlainly(contents, block, 207 + rawSize) == 0) return {StatusNotSupported, old};
  const std::string text = block.substr(207, rawSize);
  return {StatusOk, !text.empty() && text.back() == '\0' ? text : text + '\0'};
}

// The second decoder unpacks into a body that is long enough, else into a block of just the size.
inline Decoded DecodePstPlainly(std::string_view contents, size_t rawSize, const std::string& old) {
  const size_t end = 207 + rawSize;
  std::string block = old;
  if (old.size() < end) block.resize(end);
  if (UnpackPlainly(contents, block, end) == 0) return {StatusNotSupported, old};
  const std::string text = block.substr(207, rawSize);
  block.replace(0, rawSize, text);
  block.resize(block.size() - 207);
  return {StatusOk, block};
}

}  // namespace tarn::test

#endif
