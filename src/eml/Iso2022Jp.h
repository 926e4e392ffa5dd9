// Iso2022Jp.h - ISO-2022-JP (RFC 1468) to UTF-8.
#ifndef TARN_EML_ISO2022JP_H
#define TARN_EML_ISO2022JP_H

#include "Internal/Tarnclasses_.h"

namespace tarn {

// Converts the text from `offset` on, renaming its first "iso-2022-jp" there to "UTF-8". Text
// without an escape keeps its bytes but for the name. The resulting length does not count the
// terminating NUL that is written; text that stays as it is keeps its length. Unknown escapes stay
// in the text as data; unknown characters become U+FFFD.
//   StatusOk
//   StatusNullArgument   the text is absent
//   StatusOutOfMemory    nothing has changed
//   other                of a refused budget; nothing has changed
Status ConvertIso2022Jp(SizedBytes& text, uint64_t offset);

// Appends JIS-Roman text, "~" as U+203E.
//   StatusOk
//   StatusOutOfMemory    the output is as it was
//   a code of the host   a refused budget; the output's block is gone
Status AppendJisRoman(TrackedBuffer<char>& output, std::string_view text);

}  // namespace tarn

#endif
