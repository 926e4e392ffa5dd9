// RtfMending.h - makes the header of compressed RTF (MS-OXRTFCP) fit its contents.
#ifndef TARN_FUZZ_MUTATORS_RTFMENDING_H
#define TARN_FUZZ_MUTATORS_RTFMENDING_H

#include <string>

namespace tarn::fuzz {

// The compressed size, the checksum, of stored contents too, as stores want it, and the raw size of
// stored contents. Other bytes stay as they are.
void MendCompressedRtf(std::string& bytes);

}  // namespace tarn::fuzz

#endif
