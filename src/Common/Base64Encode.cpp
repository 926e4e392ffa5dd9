// Twelve bits at a time: a table holds the two characters of each of the 4096 values.
#include "Common/Base64Encode.h"

#include <array>
#include <cstring>

namespace tarn {
namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

using Pairs = std::array<std::array<char, 2>, 4096>;

consteval Pairs MakePairs() {
  Pairs pairs = {};
  for (unsigned value = 0; value < pairs.size(); ++value) {
    pairs[value] = {kAlphabet[value >> 6], kAlphabet[value & 63]};
  }
  return pairs;
}

constexpr Pairs kPairs = MakePairs();

void PutPair(char* out, unsigned value) { std::memcpy(out, kPairs[value].data(), 2); }

}  // namespace

uint64_t Base64Encode(char* out, uint64_t room, const char* bytes, uint64_t size) {
  const uint64_t groups = size / 3 + (size % 3 != 0 ? 1 : 0);
  if (groups >= UINT64_MAX / 4 || 4 * groups >= room) return 0;

  const auto* in = reinterpret_cast<const unsigned char*>(bytes);
  uint64_t left = size;
  for (; left >= 3; left -= 3, in += 3, out += 4) {
    const unsigned b0 = in[0];
    const unsigned b1 = in[1];
    const unsigned b2 = in[2];
    PutPair(out, b0 << 4 | b1 >> 4);
    PutPair(out + 2, (b1 & 15) << 8 | b2);
  }
  if (left != 0) {
    const unsigned b0 = in[0];
    const unsigned b1 = left == 2 ? in[1] : 0;
    PutPair(out, b0 << 4 | b1 >> 4);
    out[2] = left == 2 ? kAlphabet[(b1 & 15) << 2] : '=';
    out[3] = '=';
    out += 4;
  }
  *out = '\0';
  return 4 * groups;
}

}  // namespace tarn
