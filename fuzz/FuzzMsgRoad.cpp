// Whole MSG files through the exports: the last byte of the input chooses the variant, the rest is
// the file; where it does not begin as a compound file, it is made to.

#include <algorithm>

#include "RoadFuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  constexpr std::string_view kMagic = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1";
  constexpr size_t kSniffed = 12;
  if (size < 1 + kSniffed) return 0;
  std::string file(reinterpret_cast<const char*>(data), size - 1);
  std::copy(kMagic.begin(), kMagic.end(), file.begin());
  tarn::fuzz::RunRoad(file, data[size - 1], 1, tarn::fuzz::Throws::Nothing);
  return 0;
}
