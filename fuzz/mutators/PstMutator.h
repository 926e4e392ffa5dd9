// PstMutator.h - changes a PST image (MS-PST) where it has a meaning: the data of a block before
// its encoding, an allocation of a heap, an entry of a page, the data of one block in another.
//
// Checksums, signatures and trailers fit afterwards. A block whose data grows beyond its extent
// moves to the end of the image, and its entry with it.
#ifndef TARN_FUZZ_MUTATORS_PSTMUTATOR_H
#define TARN_FUZZ_MUTATORS_PSTMUTATOR_H

#include "mutators/Dice.h"

namespace tarn::fuzz {

// A FileMutation.
bool MutatePstImage(std::string& image, size_t most, Dice& dice, const ByteMutation& mutate);

}  // namespace tarn::fuzz

#endif
