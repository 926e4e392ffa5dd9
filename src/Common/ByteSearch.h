// ByteSearch.h - the searches of all readers: a needle in a stretch of bytes, exactly or
// ignoring the case of ASCII letters.
//
// A stretch is a half-open range [start, end) of a block that somebody else owns; no search reads
// outside it, allocates, or fails. Cost is linear in the stretch for any needle. NUL is a byte like
// any other. An empty needle is found nowhere, and neither is one longer than the stretch.
#ifndef TARN_COMMON_BYTESEARCH_H
#define TARN_COMMON_BYTESEARCH_H

#include <string_view>

namespace tarn {

// The first occurrence from `from` on, or std::string_view::npos.
size_t FindBytes(std::string_view text, std::string_view needle, size_t from = 0);
size_t FindIgnoringCase(std::string_view text, std::string_view needle, size_t from = 0);
size_t FindByte(std::string_view text, char byte, size_t from = 0);

bool StartsWithIgnoringCase(std::string_view text, std::string_view prefix);

// The same with pointers: the first occurrence, or null.
const char* FindBytes(const char* start, const char* end, std::string_view needle);
const char* FindIgnoringCase(const char* start, const char* end, std::string_view needle);
const char* FindByte(const char* start, const char* end, char byte);

// Do the bytes from start on, within end, begin with the prefix?
bool StartsWith(const char* start, const char* end, std::string_view prefix);
bool StartsWithIgnoringCase(const char* start, const char* end, std::string_view prefix);
bool EqualsIgnoringCase(std::string_view a, std::string_view b);

}  // namespace tarn

#endif
