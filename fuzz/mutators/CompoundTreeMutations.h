// CompoundTreeMutations.h - one change of the streams and storages of a compound file.
#ifndef TARN_FUZZ_MUTATORS_COMPOUNDTREEMUTATIONS_H
#define TARN_FUZZ_MUTATORS_COMPOUNDTREEMUTATIONS_H

#include "mutators/CompoundTree.h"
#include "mutators/Dice.h"

namespace tarn::fuzz {

// `room` is how many bytes the file may grow by.
void MutateCompoundTree(CompoundEntry& root, size_t room, Dice& dice, const ByteMutation& mutate);

}  // namespace tarn::fuzz

#endif
