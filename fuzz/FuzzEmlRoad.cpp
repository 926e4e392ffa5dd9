// Whole mails through the exports: the first byte of the input chooses the variant, the rest is the
// mail. One that begins as a store or a compound file is taken as such.

#include "RoadFuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const std::string_view mail(reinterpret_cast<const char*>(data) + 1, size - 1);
  tarn::fuzz::RunRoad(mail, data[0], 1, tarn::fuzz::Throws::StandardExceptions);
  return 0;
}
