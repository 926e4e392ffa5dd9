// Codec.h - the two encodings of the data in external blocks (MS-PST, 5.1 and 5.2).
//
// Both decode in place, byte by byte: no byte depends on another. They hide data, and protect it
// from nobody.
#ifndef TARN_PSTSTORE_CODEC_H
#define TARN_PSTSTORE_CODEC_H

#include <span>

#include "pststore/Types.h"

namespace pststore::disk {

// bCryptMethod of the header. Data of every other method is plain, too.
enum class crypt_method : unsigned char { none = 0, permute = 1, cyclic = 2 };

// What a byte becomes follows from its value alone.
void decode_permute(std::span<unsigned char> bytes);

// What a byte becomes follows from its value, its place and the key, the lower 32 bits of the
// block's id.
void decode_cyclic(std::span<unsigned char> bytes, ulong key);

// How the data of a block is encoded; only the cyclic encoding has a key.
struct encoding {
  crypt_method method = crypt_method::none;
  ulong key = 0;
};

void decode(std::span<unsigned char> bytes, encoding how);

}  // namespace pststore::disk

#endif
