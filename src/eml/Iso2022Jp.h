// Iso2022Jp.h - ISO-2022-JP (RFC 1468) to UTF-8.
#ifndef TARN_EML_ISO2022JP_H
#define TARN_EML_ISO2022JP_H

#include <string_view>

#include "Internal/Tarnclasses_.h"

namespace tarn {

// Converts the text from `offset` on, renaming its first "iso-2022-jp" there to "UTF-8". Text
// without an escape keeps its bytes but for the name. The resulting length does not count the
// terminating NUL that is written; text that stays as it is keeps its length. Unknown escapes stay
// in the text as data; unknown characters become U+FFFD. 1; -814 for a null text; -1 without
// memory, or the code of a refused budget, and then nothing has changed.
int32_t ConvertIso2022Jp(SizedBytes& text, uint64_t offset);

// Appends JIS-Roman text, "~" as U+203E. 1 or a failure code of the buffer.
int32_t AppendJisRoman(TrackedBuffer<char>& output, std::string_view text);

}  // namespace tarn

#endif
