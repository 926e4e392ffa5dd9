// CompoundMutator.h - changes a compound file (MS-CFB) where it has a meaning.
//
// Mostly the file is read as a tree, a stream's content, a name or the tree itself is changed, and
// the whole is written anew: chains, tables and directory fit. Else a field of the directory, a
// link of a table or a field of the header is changed where it lies, so that one structure at a
// time does not hold; what a reader would refuse at once is mended now and then.
#ifndef TARN_FUZZ_MUTATORS_COMPOUNDMUTATOR_H
#define TARN_FUZZ_MUTATORS_COMPOUNDMUTATOR_H

#include "mutators/Dice.h"

namespace tarn::fuzz {

// A FileMutation.
bool MutateCompoundFile(std::string& file, size_t most, Dice& dice, const ByteMutation& mutate);

}  // namespace tarn::fuzz

#endif
