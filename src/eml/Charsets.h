// Charsets.h - charset names and the way of text of a known charset into UTF-8.
//
// ISO-2022-JP has a decoder of its own (Iso2022Jp.h); all other conversions go through the
// platform's code pages. An unknown charset is no failure: its text passes through.
#ifndef TARN_EML_CHARSETS_H
#define TARN_EML_CHARSETS_H

#include "Internal/CharsetRef.h"
#include "Internal/Tarnclasses_.h"

namespace tarn {

// The charset of a name, ignoring case; CharsetOther for all that is not known.
CharsetRef ClassifyCharset(std::string_view name);

// Replaces the string's bytes from `offset` on by their UTF-8 form, with a terminating NUL that the
// length counts (ISO-2022-JP: does not count). Text stays as it is in a charset or code page that
// is not converted, and beyond INT32_MAX bytes.
//   StatusOk                 also for text that stays
//   StatusOutOfMemory        nothing has changed
//   StatusPathToUtf8Failed   the UTF-8 form cannot be made; the string is cut at the offset
//   a code of the host       ISO-2022-JP: a refused budget; nothing has changed
Status ConvertTailToUtf8(SizedBytes& text, uint64_t offset, CharsetRef charset);

// Converts a whole text to UTF-8 and renames the charset where the text first declares it. Without
// `force` only ISO-2022-JP is converted. The length of a converted text counts no NUL; one that is
// not converted keeps its own. For us-ascii, whose bytes stay, `charset` becomes CharsetUtf8 when
// the name was replaced.
//   StatusOk                 also for a text that is not converted
//   StatusNullArgument       a null address; an absent text of ISO-2022-JP
//   StatusOutOfMemory        nothing has changed
//   StatusPathToUtf8Failed   the text is cut where the conversion started
//   StatusFailed             no memory for a longer name; the text is absent
//   a code of the host       ISO-2022-JP: a refused budget; nothing has changed
Status ConvertBodyToUtf8(SizedBytes* text, CharsetRef* charset, bool force);

// Converts a header field that is not UTF-8 by form from `charset`, as ConvertBodyToUtf8 with force
// does. Overlong forms and surrogates count as UTF-8. Failures are not reported.
void RepairFieldToUtf8(SizedBytes& field, CharsetRef charset);

// Overwrites `oldLength` bytes at `offset` with "UTF-8".
//   StatusOk
//   StatusFailed   no memory, or a range that is not wholly inside the text; after either the text
//                  is absent
Status ReplaceWithUtf8Name(SizedBytes& text, uint64_t offset, uint64_t oldLength);

}  // namespace tarn

#endif
