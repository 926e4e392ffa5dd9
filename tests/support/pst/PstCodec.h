// PstCodec.h - checksums, signatures and data encodings of a PST file (MS-PST 5.1 to 5.5).
#ifndef TARN_TESTS_SUPPORT_PST_PSTCODEC_H
#define TARN_TESTS_SUPPORT_PST_PSTCODEC_H

#include <cstdint>
#include <string>
#include <string_view>

#include "support/pst/PstLayout.h"

namespace tarn::test {

// The reflected CRC-32 of polynomial 0xEDB88320 that starts at 0 and is not inverted at the end.
uint32_t PstCrc(std::string_view bytes);

// wSig of a page or block with this id at this file offset.
uint16_t PstSignature(uint64_t id, uint64_t address);

// The bytes as an external block of this id holds them.
std::string PstEncode(PstEncoding encoding, uint64_t bid, std::string_view bytes);
std::string PstDecode(PstEncoding encoding, uint64_t bid, std::string_view bytes);

}  // namespace tarn::test

#endif
