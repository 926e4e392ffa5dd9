#include "support/pst/PstHeader.h"

#include "support/pst/PstBytes.h"
#include "support/pst/PstCodec.h"

namespace tarn::test {
namespace {

constexpr uint16_t kClientVersion = 19;
constexpr uint8_t kSentinel = 0x80;
constexpr uint8_t kMapsValid = 2;
constexpr size_t kCrcStart = 8;
constexpr size_t kPartialBytes = 471;
constexpr size_t kFullBytes = 516;

void PutRef(std::string& bytes, size_t offset, const PstPageRef& ref, size_t width) {
  PutLe(bytes, offset, ref.bid, width);
  PutLe(bytes, offset + width, ref.ib, width);
}

}  // namespace

std::string PstHeader::write(PstLayout layout) const {
  const PstOffsets& at = OffsetsOf(layout);
  std::string bytes(at.headerSize, '\0');
  PutBytes(bytes, 0, "!BDN");
  PutBytes(bytes, 8, "SM");
  PutLe(bytes, 10, version, 2);
  PutLe(bytes, 12, kClientVersion, 2);
  PutLe(bytes, 14, 1, 1);
  PutLe(bytes, 15, 1, 1);
  PutLe(bytes, at.bidNextB, bidNextB, at.idWidth);
  PutLe(bytes, at.bidNextP, bidNextP, at.idWidth);
  PutLe(bytes, at.dwUnique, 1, 4);
  for (size_t i = 0; i < nodeIndexes.size(); ++i) {
    PutLe(bytes, at.rgnid + 4 * i, nodeIndexes[i], 4);
  }
  PutLe(bytes, at.ibFileEof, fileEnd, at.idWidth);
  PutLe(bytes, at.ibAMapLast, lastMap, at.idWidth);
  PutLe(bytes, at.cbAMapFree, freeBytes, at.idWidth);
  PutRef(bytes, at.brefNbt, nbtRoot, at.idWidth);
  PutRef(bytes, at.brefBbt, bbtRoot, at.idWidth);
  PutLe(bytes, at.fAMapValid, lastMap == 0 ? 0 : kMapsValid, 1);
  PutBytes(bytes, at.rgbFm, std::string(128, '\xFF'));
  PutBytes(bytes, at.rgbFp, std::string(128, '\xFF'));
  PutLe(bytes, at.bSentinel, kSentinel, 1);
  PutLe(bytes, at.bCryptMethod, static_cast<uint8_t>(encoding), 1);
  RepairPstHeader(bytes, layout);
  return bytes;
}

void RepairPstHeader(std::string& image, PstLayout layout) {
  const std::string_view bytes = image;
  PutLe(image, 4, PstCrc(bytes.substr(kCrcStart, kPartialBytes)), 4);
  const size_t full = OffsetsOf(layout).dwCrcFull;
  if (full != 0) PutLe(image, full, PstCrc(bytes.substr(kCrcStart, kFullBytes)), 4);
}

}  // namespace tarn::test
