// MimeTrouble.h - what in the structure of a mail makes the filter give up with
// StatusOutOfMemory, which is also what exhausted memory gives.
#ifndef TARN_TARNMAIL_MIMETROUBLE_H
#define TARN_TARNMAIL_MIMETROUBLE_H

#include <optional>
#include <string>
#include <string_view>

namespace tarn::host {

enum class MimeTrouble {
  None,         // also when the search would take too long
  TooDeep,      // multiparts nested deeper than the filter goes
  EmptyBase64,  // a part in base64 with nothing in it, and no Content-Disposition
};

// Goes through the parts in the order and by the rules of the filter, up to the first trouble. The
// mail is one that the filter takes for a mail. May throw std::bad_alloc.
MimeTrouble FindMimeTrouble(std::string_view mail);

// In words; nothing for no trouble.
std::optional<std::string> DescribeMimeTrouble(MimeTrouble trouble);

}  // namespace tarn::host

#endif
