// ByteSearch.h - the searches of all readers: a needle in a text, exactly or ignoring the case of
// ASCII letters.
//
// A text is bytes that somebody else owns; no search reads outside it, allocates, or fails. Cost is
// linear in the text for any needle. NUL is a byte like any other. An empty needle is found
// nowhere, and neither is one longer than the text.
#ifndef TARN_COMMON_BYTESEARCH_H
#define TARN_COMMON_BYTESEARCH_H

#include <cstddef>
#include <string_view>

namespace tarn {

// What a search answers that finds nothing.
inline constexpr size_t npos = std::string_view::npos;

// The first occurrence from `from` on, or npos.
size_t FindBytes(std::string_view text, std::string_view needle, size_t from = 0);
size_t FindIgnoringCase(std::string_view text, std::string_view needle, size_t from = 0);
size_t FindByte(std::string_view text, char byte, size_t from = 0);

bool StartsWithIgnoringCase(std::string_view text, std::string_view prefix);
bool EqualsIgnoringCase(std::string_view a, std::string_view b);

}  // namespace tarn

#endif
