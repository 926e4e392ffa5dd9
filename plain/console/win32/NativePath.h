// NativePath.h - a path as the system's calls take it, however long it is (Platform/win32/
// LongPaths.h, as in the kernel), and what it names.
#ifndef TARN_CONSOLE_WIN32_NATIVEPATH_H
#define TARN_CONSOLE_WIN32_NATIVEPATH_H

#include <filesystem>
#include <string>
#include <string_view>

namespace tarn::host {

// The full form of a path; empty when the system cannot tell.
std::wstring FullPath(const std::filesystem::path& path);

// Whether a full path is that of a device.
bool IsDevicePath(std::wstring_view fullPath);

// Whether a full path is that of a pipe: "\\.\pipe\" and a name.
bool IsPipePath(std::wstring_view fullPath);

// Whether that is the console: CON or CONOUT$, with or without "\\.\" in front.
bool IsConsolePath(std::wstring_view path);

// The path for a call of the system.
std::wstring NativePath(const std::filesystem::path& path);

}  // namespace tarn::host

#endif
