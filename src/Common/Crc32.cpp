// Slicing by eight: the remainder of a byte followed by k zero bytes comes from the k-th table, so
// that eight bytes are eight look-ups which do not wait for one another, where the plain method
// waits for each byte's look-up before it can make the next.
//
// Where the processor multiplies polynomials, long runs are folded first: 16 bytes, n bits before
// the end of others, may be replaced by a multiple of x^n that has the same remainder, added to
// those others. In the end 16 bytes are left that have the remainder of all.
#include "Common/Crc32.h"

#include <array>

#include "Common/LittleEndian.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace tarn {
namespace {

constexpr uint32_t kPolynomial = 0xEDB88320;
constexpr uint64_t kSlices = 8;

using Tables = std::array<std::array<uint32_t, 256>, kSlices>;

consteval Tables MakeTables() {
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

uint32_t SlicedCrc32(const unsigned char* at, uint64_t count, uint32_t crc) {
  for (; count >= kSlices; count -= kSlices, at += kSlices) {
    crc = FourBytes(crc ^ LoadLittleEndian<uint32_t>(at), 4) ^
          FourBytes(LoadLittleEndian<uint32_t>(at + 4), 0);
  }
  for (; count > 0; --count, ++at) crc = kTables[0][(crc ^ *at) & 0xFF] ^ (crc >> 8);
  return crc;
}

#if defined(__x86_64__)

constexpr uint64_t kLane = 16;
constexpr uint64_t kLanes = 4;

// The remainder of x^n, with the coefficient of x^63 in bit 0, as the bytes of a lane have it.
consteval uint64_t PowerOfX(unsigned n) {
  uint32_t remainder = 0x80000000;
  for (; n > 0; --n) remainder = (remainder >> 1) ^ ((remainder & 1) != 0 ? kPolynomial : 0);
  return static_cast<uint64_t>(remainder) << 32;
}

// What a lane is multiplied by to fold it over `bits` bits: its first half is 64 bits higher,
// and a product of two numbers in this order is x times too large.
struct FoldFactors {
  explicit consteval FoldFactors(unsigned bits)
      : first(PowerOfX(bits + 63)), second(PowerOfX(bits - 1)) {}

  uint64_t first;
  uint64_t second;
};

constexpr FoldFactors kOverAllLanes(8 * kLane * kLanes);
constexpr FoldFactors kOverOneLane(8 * kLane);

[[gnu::target("pclmul")]] inline __m128i LoadLane(const unsigned char* at) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
}

[[gnu::target("pclmul")]] inline __m128i LoadFactors(const FoldFactors& factors) {
  return _mm_set_epi64x(static_cast<int64_t>(factors.second), static_cast<int64_t>(factors.first));
}

[[gnu::target("pclmul")]] inline __m128i Fold(__m128i lane, __m128i factors, __m128i onto) {
  const __m128i first = _mm_clmulepi64_si128(lane, factors, 0x00);
  const __m128i second = _mm_clmulepi64_si128(lane, factors, 0x11);
  return _mm_xor_si128(_mm_xor_si128(first, second), onto);
}

// Of whole lanes, all four at least.
[[gnu::target("pclmul")]] uint32_t FoldedCrc32(const unsigned char* at, uint64_t count,
                                               uint32_t crc) {
  __m128i lanes[kLanes];
  for (uint64_t i = 0; i < kLanes; ++i) lanes[i] = LoadLane(at + i * kLane);
  lanes[0] = _mm_xor_si128(lanes[0], _mm_cvtsi32_si128(static_cast<int32_t>(crc)));
  at += kLanes * kLane;
  count -= kLanes * kLane;

  const __m128i overAll = LoadFactors(kOverAllLanes);
  for (; count >= kLanes * kLane; count -= kLanes * kLane, at += kLanes * kLane) {
    for (uint64_t i = 0; i < kLanes; ++i)
      lanes[i] = Fold(lanes[i], overAll, LoadLane(at + i * kLane));
  }
  const __m128i overOne = LoadFactors(kOverOneLane);
  for (uint64_t i = 1; i < kLanes; ++i) lanes[i] = Fold(lanes[i - 1], overOne, lanes[i]);
  __m128i last = lanes[kLanes - 1];
  for (; count >= kLane; count -= kLane, at += kLane) last = Fold(last, overOne, LoadLane(at));

  alignas(kLane) unsigned char left[kLane];
  _mm_store_si128(reinterpret_cast<__m128i*>(left), last);
  return SlicedCrc32(left, kLane, 0);
}

bool CanFold() { return __builtin_cpu_supports("pclmul") != 0; }

#endif

}  // namespace

uint32_t Crc32(const void* bytes, uint64_t count, uint32_t before) {
  const auto* at = static_cast<const unsigned char*>(bytes);
  uint32_t crc = before;
#if defined(__x86_64__)
  if (count >= kLanes * kLane && CanFold()) {
    const uint64_t whole = count - count % kLane;
    crc = FoldedCrc32(at, whole, crc);
    at += whole;
    count -= whole;
  }
#endif
  return SlicedCrc32(at, count, crc);
}

}  // namespace tarn
