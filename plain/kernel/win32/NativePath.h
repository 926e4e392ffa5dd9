// NativePath.h - the kernel's paths as the system's calls take them.
//
// Long ones get the prefix "\\?\" (Platform/win32/LongPaths.h). Paths are empty when they were
// empty or no well-formed text: a name with half a surrogate pair, which the system can hold,
// cannot be told in UTF-8.
#ifndef TARN_KERNEL_WIN32_NATIVEPATH_H
#define TARN_KERNEL_WIN32_NATIVEPATH_H

#include <string>

namespace tarn::kernel {

// Both are runs of UTF-16 code units.
inline const wchar_t* AsNative(const std::u16string& text) {
  return reinterpret_cast<const wchar_t*>(text.c_str());
}
inline const char16_t* AsText(const wchar_t* text) {
  return reinterpret_cast<const char16_t*>(text);
}

// The full form of a path, as the system resolves it against the current directory; empty when it
// cannot.
std::u16string FullPath(const std::u16string& path);

// A path that the host gave: one that begins with "\\?\" or "\\.\" is the host's own business.
std::u16string HostPath(const std::string& path);

// Without a prefix "\\?\" before a drive, or "\\?\UNC\" before a server: what has a
// name without it too.
std::string WithoutVerbatimPrefix(const std::string& path);

// A path of a temporary file: a prefix "\\?\" is taken off, so that the usual rules of names hold
// after it too.
std::u16string TemporaryPath(const std::string& path);

}  // namespace tarn::kernel

#endif
