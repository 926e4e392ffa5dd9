// NumberMutation.h - one of the little-endian numbers that bytes are made of gets another value.
#ifndef TARN_FUZZ_MUTATORS_NUMBERMUTATION_H
#define TARN_FUZZ_MUTATORS_NUMBERMUTATION_H

#include <string>

#include "mutators/Dice.h"

namespace tarn::fuzz {

// The bytes are taken as numbers of this width, 1 to 8; one of them becomes a neighbour, 0, all
// ones, a power of two, any number, or another one of the bytes. Fewer bytes stay as they are.
inline void MutateNumber(std::string& bytes, size_t width, Dice& dice) {
  const size_t count = bytes.size() / width;
  if (count == 0) return;
  const size_t place = dice.below(count) * width;
  if (dice.oneIn(4)) {
    const std::string other = bytes.substr(dice.below(count) * width, width);
    bytes.replace(place, width, other);
    return;
  }
  uint64_t value = 0;
  for (size_t i = 0; i < width; ++i) {
    value |= uint64_t{static_cast<unsigned char>(bytes[place + i])} << (8 * i);
  }
  switch (dice.below(6)) {
    case 0:
      value += 1 + dice.below(4);
      break;
    case 1:
      value -= 1 + dice.below(4);
      break;
    case 2:
      value = 0;
      break;
    case 3:
      value = UINT64_MAX;
      break;
    case 4:
      value = uint64_t{1} << dice.below(8 * width);
      break;
    default:
      value = dice.any();
      break;
  }
  for (size_t i = 0; i < width; ++i) bytes[place + i] = static_cast<char>(value >> (8 * i));
}

}  // namespace tarn::fuzz

#endif
