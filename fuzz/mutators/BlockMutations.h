// BlockMutations.h - changes the data of an external block of a PST file, before its encoding.
#ifndef TARN_FUZZ_MUTATORS_BLOCKMUTATIONS_H
#define TARN_FUZZ_MUTATORS_BLOCKMUTATIONS_H

#include "mutators/Dice.h"

namespace tarn::fuzz {

// Where the data begins as a heap (MS-PST 2.3.1), mostly one of its allocations is changed, and the
// offsets in its map follow when it grows or shrinks; else any bytes are. Compressed RTF has sizes
// and checksum that fit afterwards. At most `most` bytes come out.
void MutateBlockData(std::string& data, size_t most, Dice& dice, const ByteMutation& mutate);

}  // namespace tarn::fuzz

#endif
