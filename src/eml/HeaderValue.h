// HeaderValue.h - the end of a header value that may be folded.
#ifndef TARN_EML_HEADERVALUE_H
#define TARN_EML_HEADERVALUE_H

namespace tarn {

// The first line end of [value, headerEnd) that no folded line follows, as FindFoldedLineEnd has
// it, or null. The byte that tells a folded line may stand behind the header block, where the
// content begins; one at or behind `readableEnd` is neither blank nor tab.
const char* FindValueEnd(const char* value, const char* headerEnd, const char* readableEnd);

}  // namespace tarn

#endif
