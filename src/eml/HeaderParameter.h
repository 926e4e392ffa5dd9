// HeaderParameter.h - one parameter of a header value, as in `; charset="utf-8"` (RFC 2045,
// section 5.1).
//
// There is no grammar behind it: the key is searched as text, comments are not known, and the forms
// of RFC 2231 ("filename*=") are other keys and so are not found. Nothing allocates or fails.
#ifndef TARN_EML_HEADERPARAMETER_H
#define TARN_EML_HEADERPARAMETER_H

#include <string_view>

namespace tarn {

// The value of the parameter `key` (given with its punctuation, as in "filename=") in [start, end),
// and behind it in `valueEnd`; null when there is none, and then `valueEnd` stays. The name is
// matched ignoring case, and not inside a longer name; a key that ends exactly at `end` is not
// found. A quoted value loses its quotes; others end at ";", a quote or the line end.
const char* FindHeaderParameter(const char* start, const char* end, std::string_view key,
                                const char** valueEnd);

}  // namespace tarn

#endif
