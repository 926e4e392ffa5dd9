#include "support/pst/PstLayout.h"

namespace tarn::test {
namespace {

constexpr PstOffsets kAnsi = {
    .idWidth = 4,
    .headerSize = 512,
    .bidNextB = 24,
    .bidNextP = 28,
    .dwUnique = 32,
    .rgnid = 36,
    .ibFileEof = 168,
    .ibAMapLast = 172,
    .cbAMapFree = 176,
    .cbPMapFree = 180,
    .brefNbt = 184,
    .brefBbt = 192,
    .fAMapValid = 200,
    .rgbFm = 204,
    .rgbFp = 332,
    .bSentinel = 460,
    .bCryptMethod = 461,
    .dwCrcFull = 0,
    .pageTrailer = 500,
    .pageSignature = 502,
    .pageBid = 504,
    .pageCrc = 508,
    .pageCounters = 496,
    .mapBits = 4,
    .nbtLeafEntry = 16,
    .bbtLeafEntry = 12,
    .innerEntry = 12,
    .blockTrailer = 12,
    .blockBid = 4,
    .blockCrc = 8,
    .maxBlockData = 8180,
    .extendedFanOut = (8180 - 8) / 4,
    .subnodeEntries = 4,
    .subnodeLeafEntry = 12,
    .subnodeInnerEntry = 8,
};

constexpr PstOffsets kUnicode = {
    .idWidth = 8,
    .headerSize = 564,
    .bidNextB = 516,
    .bidNextP = 32,
    .dwUnique = 40,
    .rgnid = 44,
    .ibFileEof = 184,
    .ibAMapLast = 192,
    .cbAMapFree = 200,
    .cbPMapFree = 208,
    .brefNbt = 216,
    .brefBbt = 232,
    .fAMapValid = 248,
    .rgbFm = 256,
    .rgbFp = 384,
    .bSentinel = 512,
    .bCryptMethod = 513,
    .dwCrcFull = 524,
    .pageTrailer = 496,
    .pageSignature = 498,
    .pageBid = 504,
    .pageCrc = 500,
    .pageCounters = 488,
    .mapBits = 0,
    .nbtLeafEntry = 32,
    .bbtLeafEntry = 24,
    .innerEntry = 24,
    .blockTrailer = 16,
    .blockBid = 8,
    .blockCrc = 4,
    .maxBlockData = 8176,
    .extendedFanOut = (8176 - 8) / 8,
    .subnodeEntries = 8,
    .subnodeLeafEntry = 24,
    .subnodeInnerEntry = 16,
};

}  // namespace

const PstOffsets& OffsetsOf(PstLayout layout) {
  return layout == PstLayout::Ansi ? kAnsi : kUnicode;
}

}  // namespace tarn::test
