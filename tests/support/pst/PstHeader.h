// PstHeader.h - the header of a PST file as it is written (MS-PST 2.2.2.6).
#ifndef TARN_TESTS_SUPPORT_PST_PSTHEADER_H
#define TARN_TESTS_SUPPORT_PST_PSTHEADER_H

#include <array>
#include <cstdint>
#include <string>

#include "support/pst/PstLayout.h"
#include "support/pst/PstTreePages.h"

namespace tarn::test {

struct PstHeader {
  uint16_t version = 23;
  PstEncoding encoding = PstEncoding::None;
  uint64_t bidNextB = 4;
  uint64_t bidNextP = 1;
  std::array<uint32_t, 32> nodeIndexes = {};  // rgnid
  uint64_t fileEnd = 0;
  uint64_t lastMap = 0;
  uint64_t freeBytes = 0;
  PstPageRef nbtRoot;
  PstPageRef bbtRoot;

  // 512 or 564 bytes, with their checksums.
  std::string write(PstLayout layout) const;
};

// Makes the checksums of an image's header fit its bytes; the image has a whole header.
void RepairPstHeader(std::string& image, PstLayout layout);

}  // namespace tarn::test

#endif
