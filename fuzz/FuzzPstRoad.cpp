// Whole stores through the exports, the first three messages of each.
//
// Checksums and signatures of the input are made to fit first, so that damage gets behind them; the
// checksum that stood in its header chooses the variant.

#include "RoadFuzzing.h"
#include "support/pst/PstDamage.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  constexpr size_t kHeaderChecksum = 4;
  if (size <= kHeaderChecksum) return 0;
  std::string store(reinterpret_cast<const char*>(data), size);
  tarn::test::RepairPstImage(store);
  for (int32_t message = 1; message <= 3; ++message) {
    tarn::fuzz::RunRoad(store, data[kHeaderChecksum], message,
                        tarn::fuzz::Throws::StandardExceptions);
  }
  return 0;
}
