// CountWhile.h - how far a text goes on in the usual way.
#ifndef TARN_ARCHIVE_COUNTWHILE_H
#define TARN_ARCHIVE_COUNTWHILE_H

#include <cstddef>
#include <string_view>

namespace tarn::archive {

// How many bytes at the beginning are as they are wanted. Compilers turn the inner loop into one
// comparison of all bytes of a block, so that texts in which almost all are wanted take little
// time.
template <typename IsWanted>
size_t CountWhile(std::string_view text, IsWanted isWanted) {
  constexpr size_t kBlock = 16;
  size_t at = 0;
  for (; text.size() - at >= kBlock; at += kBlock) {
    unsigned char others = 0;
    for (size_t each = 0; each < kBlock; ++each) {
      others |= static_cast<unsigned char>(isWanted(text[at + each]) ? 0 : 1);
    }
    if (others != 0) break;
  }
  while (at < text.size() && isWanted(text[at])) ++at;
  return at;
}

inline size_t CountAscii(std::string_view text) {
  return CountWhile(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

}  // namespace tarn::archive

#endif
