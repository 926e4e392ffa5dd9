#include "pststore/Codec.h"

#include <algorithm>
#include <cstring>

#include "pststore/CodecTables.h"
#include "pststore/Disk.h"

namespace pststore::disk {

namespace {

constexpr size_t word_size = sizeof(ulonglong);

// The bytes of a word keep their places whichever end of it comes first in memory.
ulonglong permute_word(ulonglong word) {
  ulonglong result = 0;
  for (size_t shift = 0; shift < 8 * word_size; shift += 8) {
    result |= static_cast<ulonglong>(mpbb_i[(word >> shift) & 0xFF]) << shift;
  }
  return result;
}

// Decodes bytes whose counters share the upper half `high` and begin with the lower half `low`.
void decode_cyclic_run(unsigned char* bytes, size_t count, ulong high, ulong low) {
  for (size_t i = 0; i < count; ++i, ++low) {
    const ulong first = mpbb_r[(bytes[i] + low) & 0xFF];
    const ulong second = mpbb_s[(first + high) & 0xFF];
    const ulong third = mpbb_i[(second - high) & 0xFF];
    bytes[i] = static_cast<unsigned char>(third - low);
  }
}

}  // namespace

void decode_permute(unsigned char* bytes, size_t count) {
  size_t done = 0;
  for (; count - done >= word_size; done += word_size) {
    ulonglong word;
    std::memcpy(&word, bytes + done, word_size);
    word = permute_word(word);
    std::memcpy(bytes + done, &word, word_size);
  }
  for (; done < count; ++done) bytes[done] = mpbb_i[bytes[done]];
}

void decode_cyclic(unsigned char* bytes, size_t count, ulong key) {
  // The counter has 16 bits and wraps.
  ulong counter = (key ^ (key >> 16)) & 0xFFFF;
  while (count > 0) {
    const ulong low = counter & 0xFF;
    const size_t run = std::min<size_t>(count, 256 - low);
    decode_cyclic_run(bytes, run, counter >> 8, low);
    bytes += run;
    count -= run;
    counter = static_cast<ulong>(counter + run) & 0xFFFF;
  }
}

void decode(unsigned char* bytes, size_t count, encoding how) {
  if (how.method == crypt_method_permute) {
    decode_permute(bytes, count);
  } else if (how.method == crypt_method_cyclic) {
    decode_cyclic(bytes, count, how.key);
  }
}

}  // namespace pststore::disk
