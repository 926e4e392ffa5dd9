// FuzzHost.h - a host that makes the calls of a script on one file, and believes nothing.
//
// It has one slot, siblings that read all they are given, and a folder for files. Besides what the
// sanitizers see, it ends the process when
//   - a call answers with what is no code of TarnPst.h, nor the sibling's own,
//   - something other than a store's exception, or the sibling's, leaves a call,
//   - a call without a record in the slot leaves anything in the kernel; a failing list may leave
//     what its items own, and nothing else,
//   - anything is left once the slot is empty again,
//   - a record's second call gives the sibling other bytes than its first, or a second reading of a
//     message other bytes than the first,
//   - an answer, a list or an attachment is not as the header says, or cannot be read,
//   - a call takes more memory than 192 MiB and 32 times the file.
#ifndef TARN_FUZZ_HOST_FUZZHOST_H
#define TARN_FUZZ_HOST_FUZZHOST_H

#include <string_view>
#include <vector>

#include "mutators/CallScript.h"

namespace tarn::fuzz {

void RunCalls(std::string_view file, const std::vector<CallStep>& steps);

}  // namespace tarn::fuzz

#endif
