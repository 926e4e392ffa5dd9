#include "pststore/Codec.h"

#include <algorithm>
#include <cstring>

#include "pststore/CodecTables.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace pststore::disk {

namespace {

constexpr size_t word_size = sizeof(ulonglong);

// Every byte of the word keeps its place, in either byte order.
ulonglong permute_word(ulonglong word) {
  ulonglong result = 0;
  for (size_t shift = 0; shift < 8 * word_size; shift += 8) {
    result |= ulonglong{mpbb_i[(word >> shift) & 0xFF]} << shift;
  }
  return result;
}

// Decodes bytes whose counters share the upper half `high` and begin with the lower half `low`.
void decode_cyclic_run(std::span<unsigned char> bytes, ulong high, ulong low) {
  for (size_t i = 0; i < bytes.size(); ++i, ++low) {
    const ulong first = mpbb_r[(bytes[i] + low) & 0xFF];
    const ulong second = mpbb_s[(first + high) & 0xFF];
    const ulong third = mpbb_i[(second - high) & 0xFF];
    bytes[i] = static_cast<unsigned char>(third - low);
  }
}

#if defined(__x86_64__)

constexpr size_t wide_size = 64;

bool can_permute_wide() { return __builtin_cpu_supports("avx512vbmi") != 0; }

// 64 bytes at a time, where the processor looks bytes up in tables of 128: the top bit of a byte
// chooses between two of these.
[[gnu::target("avx512bw,avx512vbmi")]] size_t permute_wide(std::span<unsigned char> bytes) {
  __m512i table[4];
  for (size_t i = 0; i < 4; ++i) table[i] = _mm512_loadu_si512(mpbb_i.data() + i * wide_size);
  size_t done = 0;
  for (; bytes.size() - done >= wide_size; done += wide_size) {
    const __m512i from = _mm512_loadu_si512(bytes.data() + done);
    const __m512i lower = _mm512_permutex2var_epi8(table[0], from, table[1]);
    const __m512i upper = _mm512_permutex2var_epi8(table[2], from, table[3]);
    _mm512_storeu_si512(bytes.data() + done,
                        _mm512_mask_blend_epi8(_mm512_movepi8_mask(from), lower, upper));
  }
  return done;
}

#else

bool can_permute_wide() { return false; }
size_t permute_wide(std::span<unsigned char>) { return 0; }

#endif

}  // namespace

void decode_permute(std::span<unsigned char> bytes) {
  size_t done = can_permute_wide() ? permute_wide(bytes) : 0;
  for (; bytes.size() - done >= word_size; done += word_size) {
    ulonglong word;
    std::memcpy(&word, &bytes[done], word_size);
    word = permute_word(word);
    std::memcpy(&bytes[done], &word, word_size);
  }
  for (; done < bytes.size(); ++done) bytes[done] = mpbb_i[bytes[done]];
}

void decode_cyclic(std::span<unsigned char> bytes, ulong key) {
  // The counter has 16 bits and wraps.
  ulong counter = (key ^ (key >> 16)) & 0xFFFF;
  while (!bytes.empty()) {
    const ulong low = counter & 0xFF;
    const auto run = bytes.first(std::min<size_t>(bytes.size(), 256 - low));
    decode_cyclic_run(run, counter >> 8, low);
    bytes = bytes.subspan(run.size());
    counter = static_cast<ulong>(counter + run.size()) & 0xFFFF;
  }
}

void decode(std::span<unsigned char> bytes, encoding how) {
  if (how.method == crypt_method::permute) {
    decode_permute(bytes);
  } else if (how.method == crypt_method::cyclic) {
    decode_cyclic(bytes, how.key);
  }
}

}  // namespace pststore::disk
