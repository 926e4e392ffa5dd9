#include "pststore/Disk.h"

#include "Common/Crc32.h"

namespace pststore::disk {

void outside_of_bytes() { throw database_corrupt("entry beyond its page or block"); }

ulong compute_crc(const void* bytes, size_t count) { return tarn::Crc32(bytes, count); }

}  // namespace pststore::disk
