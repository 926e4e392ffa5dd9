// NativePath.h - a path as the system's calls take it, however long it is.
//
// The system takes long paths only when they are full and carry the prefix "\\?\": files from 260
// units on (MAX_PATH), directories from 248 on, since a short file name is to fit behind them. From
// 248 units on the kernel does the same.
#ifndef TARN_TARNMAIL_WIN32_NATIVEPATH_H
#define TARN_TARNMAIL_WIN32_NATIVEPATH_H

#include <filesystem>
#include <string>
#include <string_view>

namespace tarn::host {

// The full form of a path, as the system resolves it against the current directory, without ".."
// and with both separators as "\"; names of devices, such as NUL, become "\\.\NUL". Empty when the
// system cannot.
std::wstring FullPath(const std::filesystem::path& path);

// Whether a full path is that of a device.
bool IsDevicePath(std::wstring_view fullPath);

// Whether that is the console: CON or CONOUT$, with or without "\\.\" in front.
bool IsConsolePath(std::wstring_view path);

// `path` as it stands, or `fullPath`, which is its full form, with the prefix if it needs that.
std::wstring WithLongPrefix(std::wstring_view path, std::wstring_view fullPath);

// The path for a call of the system.
std::wstring NativePath(const std::filesystem::path& path);

}  // namespace tarn::host

#endif
