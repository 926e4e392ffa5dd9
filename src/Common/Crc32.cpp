// Slicing by eight: the remainder of a byte followed by k zero bytes comes from the k-th table, so
// that eight bytes are eight look-ups which do not wait for one another, where the plain method
// waits for each byte's look-up before it can make the next.
#include "Common/Crc32.h"

#include <array>

#include "Common/LittleEndian.h"

namespace tarn {
namespace {

constexpr uint32_t kPolynomial = 0xEDB88320;
constexpr uint64_t kSlices = 8;

using Tables = std::array<std::array<uint32_t, 256>, kSlices>;

constexpr Tables MakeTables() {
  Tables tables = {};
  for (uint32_t byte = 0; byte < 256; ++byte) {
    uint32_t remainder = byte;
    for (int bit = 0; bit < 8; ++bit) {
      remainder = (remainder >> 1) ^ ((remainder & 1) != 0 ? kPolynomial : 0);
    }
    tables[0][byte] = remainder;
  }
  for (uint64_t slice = 1; slice < kSlices; ++slice) {
    for (uint32_t byte = 0; byte < 256; ++byte) {
      const uint32_t shorter = tables[slice - 1][byte];
      tables[slice][byte] = tables[0][shorter & 0xFF] ^ (shorter >> 8);
    }
  }
  return tables;
}

constexpr Tables kTables = MakeTables();

uint32_t FourBytes(uint32_t bytes, uint64_t zerosBehind) {
  return kTables[zerosBehind + 3][bytes & 0xFF] ^ kTables[zerosBehind + 2][(bytes >> 8) & 0xFF] ^
         kTables[zerosBehind + 1][(bytes >> 16) & 0xFF] ^ kTables[zerosBehind][bytes >> 24];
}

}  // namespace

uint32_t Crc32(const void* bytes, uint64_t count, uint32_t before) {
  const auto* at = static_cast<const unsigned char*>(bytes);
  uint32_t crc = before;
  for (; count >= kSlices; count -= kSlices, at += kSlices) {
    crc = FourBytes(crc ^ LoadLittleEndian<uint32_t>(at), 4) ^
          FourBytes(LoadLittleEndian<uint32_t>(at + 4), 0);
  }
  for (; count > 0; --count, ++at) crc = kTables[0][(crc ^ *at) & 0xFF] ^ (crc >> 8);
  return crc;
}

}  // namespace tarn
