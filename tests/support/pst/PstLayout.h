// PstLayout.h - the two layouts of a PST file and where each keeps its fields (MS-PST 2.2.2).
//
// Offsets of the header count from the file's start, those of a page from the page's start, and
// those of a block's trailer from the trailer's start. Sizes are in bytes.
#ifndef TARN_TESTS_SUPPORT_PST_PSTLAYOUT_H
#define TARN_TESTS_SUPPORT_PST_PSTLAYOUT_H

#include <cstddef>
#include <cstdint>

namespace tarn::test {

enum class PstLayout { Ansi, Unicode };

// bCryptMethod of the header.
enum class PstEncoding : uint8_t { None = 0, Permute = 1, Cyclic = 2 };

inline constexpr size_t kPstPageSize = 512;
inline constexpr size_t kPstBlockAlignment = 64;
inline constexpr uint64_t kPstFirstMap = 0x4400;
inline constexpr uint64_t kPstDensityList = 0x4200;
// One allocation map page: 496 bytes of bits, a bit for each 64 bytes, the page itself included.
inline constexpr uint64_t kPstMapInterval = 496 * 8 * kPstBlockAlignment;

struct PstOffsets {
  size_t idWidth;  // of block ids and file offsets

  size_t headerSize;
  size_t bidNextB;
  size_t bidNextP;
  size_t dwUnique;
  size_t rgnid;
  size_t ibFileEof;
  size_t ibAMapLast;
  size_t cbAMapFree;
  size_t cbPMapFree;
  size_t brefNbt;
  size_t brefBbt;
  size_t fAMapValid;
  size_t rgbFm;
  size_t rgbFp;
  size_t bSentinel;
  size_t bCryptMethod;
  size_t dwCrcFull;  // 0: the layout has none

  size_t pageTrailer;  // the page's CRC covers the bytes in front
  size_t pageSignature;
  size_t pageBid;
  size_t pageCrc;
  size_t pageCounters;  // cEnt, cEntMax, cbEnt, cLevel
  size_t mapBits;       // of an allocation or page map
  size_t nbtLeafEntry;
  size_t bbtLeafEntry;
  size_t innerEntry;

  size_t blockTrailer;  // its size
  size_t blockBid;
  size_t blockCrc;
  size_t maxBlockData;

  size_t extendedFanOut;     // ids in an XBLOCK or XXBLOCK
  size_t subnodeEntries;     // where they start in an SLBLOCK or SIBLOCK
  size_t subnodeLeafEntry;   // size of an SLENTRY
  size_t subnodeInnerEntry;  // size of an SIENTRY
};

const PstOffsets& OffsetsOf(PstLayout layout);

// Data, padding and trailer of a block of cb bytes of data.
inline size_t BlockExtent(PstLayout layout, size_t cb) {
  const size_t mask = kPstBlockAlignment - 1;
  return (cb + OffsetsOf(layout).blockTrailer + mask) & ~mask;
}

}  // namespace tarn::test

#endif
