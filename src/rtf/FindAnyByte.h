// FindAnyByte.h - the next of a few bytes in a stretch; nothing outside of it is read.
#ifndef TARN_RTF_FINDANYBYTE_H
#define TARN_RTF_FINDANYBYTE_H

#include <bit>
#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tarn {

// The first place in [from, end) with one of the bytes, or the end.
template <char... kBytes>
const char* FindAnyByte(const char* from, const char* end) {
#if defined(__SSE2__)
  for (; end - from >= 16; from += 16) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
    __m128i found = _mm_setzero_si128();
    ((found = _mm_or_si128(found, _mm_cmpeq_epi8(bytes, _mm_set1_epi8(kBytes)))), ...);
    const auto places = static_cast<uint32_t>(_mm_movemask_epi8(found));
    if (places != 0) return from + std::countr_zero(places);
  }
#endif
  while (from < end && ((*from != kBytes) && ...)) ++from;
  return from;
}

}  // namespace tarn

#endif
