// FindAnyByte.h - the next of a few bytes in a text.
#ifndef TARN_RTF_FINDANYBYTE_H
#define TARN_RTF_FINDANYBYTE_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tarn {

// The place of the first of the bytes in the text, or the text's size.
template <char... kBytes>
size_t FindAnyByte(std::string_view text) {
  size_t at = 0;
#if defined(__SSE2__)
  for (; text.size() - at >= 16; at += 16) {
    const auto* const block = reinterpret_cast<const __m128i*>(text.data() + at);
    const __m128i bytes = _mm_loadu_si128(block);
    __m128i found = _mm_setzero_si128();
    ((found = _mm_or_si128(found, _mm_cmpeq_epi8(bytes, _mm_set1_epi8(kBytes)))), ...);
    const auto places = static_cast<uint32_t>(_mm_movemask_epi8(found));
    if (places != 0) return at + static_cast<uint32_t>(std::countr_zero(places));
  }
#endif
  while (at < text.size() && ((text[at] != kBytes) && ...)) ++at;
  return at;
}

}  // namespace tarn

#endif
