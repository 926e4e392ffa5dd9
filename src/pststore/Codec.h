// Codec.h - the two encodings of the data in external blocks (MS-PST, 5.1 and 5.2).
//
// Both decode in place, byte by byte: no byte depends on another. They hide data, and protect it
// from nobody.
#ifndef TARN_PSTSTORE_CODEC_H
#define TARN_PSTSTORE_CODEC_H

#include <cstddef>

#include "pststore/Types.h"

namespace pststore::disk {

// What a byte becomes follows from its value alone.
void decode_permute(unsigned char* bytes, size_t count);

// What a byte becomes follows from its value, its place and the key, the lower 32 bits of the
// block's id.
void decode_cyclic(unsigned char* bytes, size_t count, ulong key);

// How the data of a block is encoded: by a method of the header, and the key of the second.
struct encoding {
  unsigned char method = 0;  // every method but the two is plain data
  ulong key = 0;
};

void decode(unsigned char* bytes, size_t count, encoding how);

}  // namespace pststore::disk

#endif
