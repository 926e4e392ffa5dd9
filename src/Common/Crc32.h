// Crc32.h - the checksum of compressed RTF (MS-OXRTFCP, 2.2.1) and of PST stores (MS-PST, 5.3).
//
// CRC-32 with the reflected polynomial 0xEDB88320, started at 0 and without a final complement. So
// it is not the checksum of ZIP files, and zeros at the beginning do not change it.
#ifndef TARN_COMMON_CRC32_H
#define TARN_COMMON_CRC32_H

#include <cstdint>

namespace tarn {

// 0 for no bytes, and then `bytes` may be null. Bytes that follow others go on from the checksum of
// those.
uint32_t Crc32(const void* bytes, uint64_t count, uint32_t before = 0);

}  // namespace tarn

#endif
