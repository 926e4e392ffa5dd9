// SearchBlocks.h - finds where two bytes stand at given distances, 64 places at a time.
//
// A block type answers for a row of places p, p + 1, ...: at which of them do both anchors of a
// needle stand? `many` asks for 64 places, `few` for kFewPlaces; bit i of the answer is place
// p + i. `emptyRows` counts the rows of 64 places in front of the first row with such a place. All
// read the bytes [p + offset, p + offset + places) of each anchor, nothing else, at any alignment.
//
//   WordBlock    64-bit words, on every machine.
//   VectorBlock  16-byte vectors, where the compiler targets SSE2.
//   WideBlock    the same with 32-byte vectors, for processors with AVX2: ask IsAvailable().
#ifndef TARN_COMMON_SEARCHBLOCKS_H
#define TARN_COMMON_SEARCHBLOCKS_H

#include <bit>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <immintrin.h>
#endif

namespace tarn::search {

// A byte of the needle that candidates are found by. A byte c of the stretch matches when
// (c | caseBit) == value; caseBit is 0x20 for a letter that is searched in both cases, else 0.
struct Anchor {
  uint64_t offset = 0;
  unsigned char value = 0;
  unsigned char caseBit = 0;

  bool matches(const char* place) const {
    return (static_cast<unsigned char>(place[offset]) | caseBit) == value;
  }
};

inline constexpr uint64_t kManyPlaces = 64;

// The rows in front of the first one, of `rows`, that is not empty.
template <typename Block>
uint64_t CountEmptyRows(const Block& block, const char* p, uint64_t rows) {
  uint64_t row = 0;
  while (row < rows && block.many(p + row * kManyPlaces) == 0) ++row;
  return row;
}

class WordBlock {
 public:
  static constexpr uint64_t kFewPlaces = 8;

  WordBlock(const Anchor& a, const Anchor& b) : a_(a), b_(b) {}

  uint64_t emptyRows(const char* p, uint64_t rows) const { return CountEmptyRows(*this, p, rows); }

  uint64_t few(const char* p) const {
    // A zero byte in `both` is a place where both anchors stand; this marks its top bit, exactly.
    const uint64_t both = a_.differences(p) | b_.differences(p);
    constexpr uint64_t kLow7 = 0x7F7F7F7F7F7F7F7FU;
    const uint64_t zeros = ~(((both & kLow7) + kLow7) | both | kLow7);
    // The multiplication gathers the eight top bits in the top byte.
    return (zeros * 0x0002040810204081U) >> 56;
  }

  uint64_t many(const char* p) const {
    uint64_t mask = 0;
    for (unsigned i = 0; i < kManyPlaces; i += 8) mask |= few(p + i) << i;
    return mask;
  }

 private:
  struct Side {
    explicit Side(const Anchor& anchor)
        : offset(anchor.offset), value(spread(anchor.value)), caseBits(spread(anchor.caseBit)) {}

    static uint64_t spread(unsigned char byte) { return byte * 0x0101010101010101U; }

    uint64_t differences(const char* p) const {
      uint64_t word;
      std::memcpy(&word, p + offset, sizeof word);
      if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap64(word);
      return (word | caseBits) ^ value;
    }

    uint64_t offset;
    uint64_t value;
    uint64_t caseBits;
  };

  Side a_;
  Side b_;
};

#if defined(__SSE2__)

class VectorBlock {
 public:
  static constexpr uint64_t kFewPlaces = 16;

  VectorBlock(const Anchor& a, const Anchor& b) : a_(a), b_(b) {}

  uint64_t emptyRows(const char* p, uint64_t rows) const { return CountEmptyRows(*this, p, rows); }

  uint64_t few(const char* p) const { return bits(both(p)); }

  uint64_t many(const char* p) const {
    const __m128i m0 = both(p);
    const __m128i m1 = both(p + 16);
    const __m128i m2 = both(p + 32);
    const __m128i m3 = both(p + 48);
    const __m128i any = _mm_or_si128(_mm_or_si128(m0, m1), _mm_or_si128(m2, m3));
    if (bits(any) == 0) return 0;
    return bits(m0) | bits(m1) << 16 | bits(m2) << 32 | bits(m3) << 48;
  }

 private:
  struct Side {
    explicit Side(const Anchor& anchor)
        : offset(anchor.offset),
          value(_mm_set1_epi8(static_cast<char>(anchor.value))),
          caseBits(_mm_set1_epi8(static_cast<char>(anchor.caseBit))) {}

    __m128i equal(const char* p) const {
      const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + offset));
      return _mm_cmpeq_epi8(_mm_or_si128(bytes, caseBits), value);
    }

    uint64_t offset;
    __m128i value;
    __m128i caseBits;
  };

  __m128i both(const char* p) const { return _mm_and_si128(a_.equal(p), b_.equal(p)); }

  static uint64_t bits(__m128i mask) { return static_cast<uint32_t>(_mm_movemask_epi8(mask)); }

  Side a_;
  Side b_;
};

class WideBlock : public VectorBlock {
 public:
  static bool IsAvailable() { return __builtin_cpu_supports("avx2") != 0; }

  WideBlock(const Anchor& a, const Anchor& b) : VectorBlock(a, b), a_(a), b_(b) {}

  [[gnu::target("avx2")]] uint64_t emptyRows(const char* p, uint64_t rows) const {
    const __m256i aValue = _mm256_set1_epi8(static_cast<char>(a_.value));
    const __m256i aCase = _mm256_set1_epi8(static_cast<char>(a_.caseBit));
    const __m256i bValue = _mm256_set1_epi8(static_cast<char>(b_.value));
    const __m256i bCase = _mm256_set1_epi8(static_cast<char>(b_.caseBit));
    const auto* a = reinterpret_cast<const __m256i*>(p + a_.offset);
    const auto* b = reinterpret_cast<const __m256i*>(p + b_.offset);
    for (uint64_t row = 0; row < rows; ++row, a += 2, b += 2) {
      const __m256i a0 = _mm256_or_si256(_mm256_loadu_si256(a), aCase);
      const __m256i a1 = _mm256_or_si256(_mm256_loadu_si256(a + 1), aCase);
      const __m256i b0 = _mm256_or_si256(_mm256_loadu_si256(b), bCase);
      const __m256i b1 = _mm256_or_si256(_mm256_loadu_si256(b + 1), bCase);
      const __m256i both0 =
          _mm256_and_si256(_mm256_cmpeq_epi8(a0, aValue), _mm256_cmpeq_epi8(b0, bValue));
      const __m256i both1 =
          _mm256_and_si256(_mm256_cmpeq_epi8(a1, aValue), _mm256_cmpeq_epi8(b1, bValue));
      if (_mm256_movemask_epi8(_mm256_or_si256(both0, both1)) != 0) return row;
    }
    return rows;
  }

 private:
  Anchor a_;
  Anchor b_;
};

#endif

}  // namespace tarn::search

#endif
