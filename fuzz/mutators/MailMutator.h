// MailMutator.h - changes a mail where it has a meaning: a header field, the decoded content of a
// part, the order and nesting of parts, the boundary in the field and in the delimiters.
#ifndef TARN_FUZZ_MUTATORS_MAILMUTATOR_H
#define TARN_FUZZ_MUTATORS_MAILMUTATOR_H

#include "mutators/Dice.h"

namespace tarn::fuzz {

// A FileMutation.
bool MutateMail(std::string& mail, size_t most, Dice& dice, const ByteMutation& mutate);

}  // namespace tarn::fuzz

#endif
