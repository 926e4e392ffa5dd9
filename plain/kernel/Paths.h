// Paths.h - what the kernel knows of paths: UTF-8 texts, taken apart by their separators only.
#ifndef TARN_KERNEL_PATHS_H
#define TARN_KERNEL_PATHS_H

#include <string>

namespace tarn::kernel {

constexpr bool IsSeparator(char c) { return c == '/' || c == '\\'; }

// The path as UTF-8; empty when it is null, empty, or no well-formed text.
std::string PathFromWide(const char16_t* path);

// With every "\" as "/".
std::string WithSlashes(std::string path);

// What stands before the last "/" ("/" for a file of the root, "." without one).
std::string DirectoryOf(const std::string& path);

// Whether a component is "..", by either separator.
bool ClimbsUp(const std::string& path);

// One spelling for all that differ in separators, doubled separators and "." components only.
std::string OneSpelling(const std::string& path);

}  // namespace tarn::kernel

#endif
