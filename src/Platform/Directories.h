// Directories.h - makes and removes one directory.
//
// Paths are NUL-terminated UTF-16 and end at that NUL. Both "\" and "/" separate, on every system.
// A path that is null, empty or longer than the system allows fails. Nothing throws.
#ifndef TARN_PLATFORM_DIRECTORIES_H
#define TARN_PLATFORM_DIRECTORIES_H

namespace tarn::platform {

enum class DirectoryStatus {
  Created,
  AlreadyExisted,  // something has that name already: a directory or anything else
  Failed,          // no such parent, no permission, a parent that is a file, ...
};

// Makes the last directory of the path; its parent must exist. On systems with permission bits only
// the user may enter it.
DirectoryStatus MakeDirectory(const char16_t* path) noexcept;

// Removes a directory without content. False when it stays, and for anything that is no directory.
bool RemoveEmptyDirectory(const char16_t* path) noexcept;

}  // namespace tarn::platform

#endif  // TARN_PLATFORM_DIRECTORIES_H
