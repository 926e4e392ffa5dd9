// LongPaths.h - paths as the system's calls take them, however long they are.
//
// The system takes long paths only when they are full and carry the prefix "\\?\": files from 260
// units on (MAX_PATH), directories from 248 on, since a short file name must fit after them.
// Paths whose full form has 248 units or more get the prefix, so that their length fails only at
// the limits that it leaves: 32,767 units, and 255 in one component.
//
// Texts are UTF-16. Everything may throw std::bad_alloc and nothing else.
#ifndef TARN_PLATFORM_WIN32_LONG_PATHS_H
#define TARN_PLATFORM_WIN32_LONG_PATHS_H

#include <string>
#include <string_view>

namespace tarn::platform {

inline constexpr std::wstring_view kVerbatimPrefix = L"\\\\?\\";
inline constexpr std::wstring_view kDevicePrefix = L"\\\\.\\";

// The full form of a path, as the system resolves it against the current directory, without ".."
// and with both separators as "\"; names of devices, such as NUL, become "\\.\NUL". Empty when the
// system cannot, and for an empty path.
std::wstring FullPath(const std::wstring& path);

// `path` as it is, or `fullPath`, which is its full form, with the prefix if it needs that.
std::wstring WithLongPrefix(std::wstring_view path, std::wstring_view fullPath);

// The path for a call of the system.
std::wstring LongPath(const std::wstring& path);

}  // namespace tarn::platform

#endif  // TARN_PLATFORM_WIN32_LONG_PATHS_H
