// SearchBlocks.h - finds where two bytes of a needle lie at their distance, 64 places at a time.
//
// A block type tells at which of the places p, p + 1, ... the bytes of a text match both anchors of
// a needle: `many` for 64 places, `few` for kFewPlaces. Bit i of the answer is place p + i. Both
// read the bytes [p + offset, p + offset + places) of each anchor, nothing else, at any alignment.
//
//   WordBlock    64-bit words, on every machine.
//   VectorBlock  16-byte vectors, where the compiler targets SSE2.
#ifndef TARN_COMMON_SEARCHBLOCKS_H
#define TARN_COMMON_SEARCHBLOCKS_H

#include <bit>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
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

class WordBlock {
 public:
  static constexpr uint64_t kFewPlaces = 8;

  WordBlock(const Anchor& a, const Anchor& b) : a_(a), b_(b) {}

  uint64_t few(const char* p) const {
    // A zero byte in `both` is a place that matches both anchors; this marks its top bit, exactly.
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

  VectorBlock(const Anchor& a, const Anchor& b)
      : a_(a), b_(b), inBothCases_((a.caseBit | b.caseBit) != 0) {}

  uint64_t few(const char* p) const { return bits(both<true>(p)); }

  uint64_t many(const char* p) const { return inBothCases_ ? four<true>(p) : four<false>(p); }

 private:
  struct Side {
    explicit Side(const Anchor& anchor)
        : offset(anchor.offset),
          value(_mm_set1_epi8(static_cast<char>(anchor.value))),
          caseBits(_mm_set1_epi8(static_cast<char>(anchor.caseBit))) {}

    template <bool kBothCases>
    __m128i equal(const char* p) const {
      __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + offset));
      if constexpr (kBothCases) bytes = _mm_or_si128(bytes, caseBits);
      return _mm_cmpeq_epi8(bytes, value);
    }

    uint64_t offset;
    __m128i value;
    __m128i caseBits;
  };

  template <bool kBothCases>
  __m128i both(const char* p) const {
    return _mm_and_si128(a_.equal<kBothCases>(p), b_.equal<kBothCases>(p));
  }

  template <bool kBothCases>
  uint64_t four(const char* p) const {
    const __m128i m0 = both<kBothCases>(p);
    const __m128i m1 = both<kBothCases>(p + 16);
    const __m128i m2 = both<kBothCases>(p + 32);
    const __m128i m3 = both<kBothCases>(p + 48);
    const __m128i any = _mm_or_si128(_mm_or_si128(m0, m1), _mm_or_si128(m2, m3));
    if (bits(any) == 0) return 0;
    return bits(m0) | bits(m1) << 16 | bits(m2) << 32 | bits(m3) << 48;
  }

  static uint64_t bits(__m128i mask) { return static_cast<uint32_t>(_mm_movemask_epi8(mask)); }

  Side a_;
  Side b_;
  bool inBothCases_;
};

#endif

}  // namespace tarn::search

#endif
