// CountWhile.h - how far a text goes on in the usual way.
//
// Texts in which almost all bytes are wanted take little time: 16 bytes are compared at once. What
// is wanted is said of a byte and of a block of them alike, which the operators of C++ compare
// lane by lane:
//
//   CountWhile(text, [](auto c) { return (c >= ' ') & (c < 0x7F) & (c != '='); })
//
// Bytes are signed, those beyond ASCII below 0. A block has no && and ||, but & and |.
#ifndef TARN_ARCHIVE_COUNTWHILE_H
#define TARN_ARCHIVE_COUNTWHILE_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace tarn::archive {

using ByteBlock [[gnu::vector_size(16)]] = signed char;

// The bytes from that place on.
inline ByteBlock BlockAt(std::string_view text, size_t at) {
  ByteBlock block;
  std::memcpy(&block, text.data() + at, sizeof block);
  return block;
}

// How many bytes at the beginning are as they are wanted.
template <typename IsWanted>
size_t CountWhile(std::string_view text, IsWanted isWanted) {
  size_t at = 0;
  for (; text.size() - at >= sizeof(ByteBlock); at += sizeof(ByteBlock)) {
    // All bits of a lane are set where its byte is wanted.
    const ByteBlock wanted = isWanted(BlockAt(text, at));
    uint64_t halves[2];
    std::memcpy(halves, &wanted, sizeof halves);
    if ((halves[0] & halves[1]) != UINT64_MAX) break;
  }
  while (at < text.size() && isWanted(static_cast<signed char>(text[at]))) ++at;
  return at;
}

// How many bytes of the whole text are.
template <typename IsWanted>
size_t CountAll(std::string_view text, IsWanted isWanted) {
  constexpr size_t kMostInLane = 127;
  size_t count = 0;
  size_t at = 0;
  while (text.size() - at >= sizeof(ByteBlock)) {
    ByteBlock lanes = {};
    for (size_t blocks = 0; blocks < kMostInLane && text.size() - at >= sizeof(ByteBlock);
         ++blocks, at += sizeof(ByteBlock)) {
      lanes -= isWanted(BlockAt(text, at));
    }
    for (size_t lane = 0; lane < sizeof lanes; ++lane) count += static_cast<size_t>(lanes[lane]);
  }
  for (; at < text.size(); ++at) count += isWanted(static_cast<signed char>(text[at])) ? 1 : 0;
  return count;
}

inline size_t CountAscii(std::string_view text) {
  return CountWhile(text, [](auto c) { return c >= 0; });
}

}  // namespace tarn::archive

#endif
