#include "support/pst/PstCodec.h"

#include <array>

#include "support/pst/CryptTables.h"

namespace tarn::test {
namespace {

constexpr std::array<uint32_t, 256> MakeCrcTable() {
  std::array<uint32_t, 256> table = {};
  for (uint32_t i = 0; i < 256; ++i) {
    uint32_t value = i;
    for (int bit = 0; bit < 8; ++bit) value = (value >> 1) ^ ((value & 1) ? 0xEDB88320U : 0);
    table[i] = value;
  }
  return table;
}

constexpr std::array<uint32_t, 256> kCrcTable = MakeCrcTable();

std::string Permute(const std::array<uint8_t, 256>& table, std::string_view bytes) {
  std::string result(bytes);
  for (char& c : result) c = static_cast<char>(table[static_cast<uint8_t>(c)]);
  return result;
}

// The cyclic encoding undoes itself when it is applied a second time.
std::string Cycle(uint64_t bid, std::string_view bytes) {
  const uint32_t key = static_cast<uint32_t>(bid);
  uint32_t w = (key ^ (key >> 16)) & 0xFFFF;
  std::string result(bytes);
  for (char& c : result) {
    const uint32_t low = w & 0xFF;
    const uint32_t high = w >> 8;
    uint32_t b = static_cast<uint8_t>(c);
    b = kMpbbR[(b + low) & 0xFF];
    b = kMpbbS[(b + high) & 0xFF];
    b = kMpbbI[(b - high) & 0xFF];
    c = static_cast<char>((b - low) & 0xFF);
    w = (w + 1) & 0xFFFF;
  }
  return result;
}

}  // namespace

uint32_t PstCrc(std::string_view bytes) {
  uint32_t crc = 0;
  for (char c : bytes) crc = kCrcTable[(crc ^ static_cast<uint8_t>(c)) & 0xFF] ^ (crc >> 8);
  return crc;
}

uint16_t PstSignature(uint64_t id, uint64_t address) {
  const uint64_t x = id ^ address;
  return static_cast<uint16_t>((x ^ (x >> 16)) & 0xFFFF);
}

std::string PstEncode(PstEncoding encoding, uint64_t bid, std::string_view bytes) {
  if (encoding == PstEncoding::Permute) return Permute(kMpbbR, bytes);
  if (encoding == PstEncoding::Cyclic) return Cycle(bid, bytes);
  return std::string(bytes);
}

std::string PstDecode(PstEncoding encoding, uint64_t bid, std::string_view bytes) {
  if (encoding == PstEncoding::Permute) return Permute(kMpbbI, bytes);
  return PstEncode(encoding, bid, bytes);
}

}  // namespace tarn::test
