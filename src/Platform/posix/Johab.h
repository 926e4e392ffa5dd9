// Johab.h - the pairs of code page 1361 by calculation.
//
// Below 0xD8 a pair is a syllable block of three 5-bit codes after a set top bit:
//
//   1 iiiii mmmmm fffff     initial consonant, medial vowel, final consonant
//
// each a code of its own order or "fill", for none. Pairs from 0xD9 on are the rows of KS X 1001,
// two rows a lead byte, which code page 949 holds as pairs of 0xA1 to 0xFE. The pairs of 0xD8 are
// U+E000 to U+E0BB, for the user.
#ifndef TARN_PLATFORM_POSIX_JOHAB_H
#define TARN_PLATFORM_POSIX_JOHAB_H

#include <cstdint>
#include <optional>

namespace tarn::platform {

// A pair of Johab means a unit, a pair of page 949, or nothing: then both are 0.
struct JohabMeaning {
  char16_t unit = 0;
  uint16_t wansungPair = 0;
};

JohabMeaning ReadJohabPair(uint8_t lead, uint8_t trail) noexcept;

// The pair of a unit that is not looked up in page 949: syllables, conjoining letters, user units.
std::optional<uint16_t> JohabPairOfUnit(char16_t unit) noexcept;

// The pair of a pair of page 949, if KS X 1001 has it.
std::optional<uint16_t> JohabPairOfWansung(uint16_t wansungPair) noexcept;

}  // namespace tarn::platform

#endif  // TARN_PLATFORM_POSIX_JOHAB_H
