// Directories.h - makes and removes one directory.
//
// Paths are NUL-terminated UTF-16 and end at that NUL. Both "\" and "/" separate, on every system.
// A path that is null, empty or longer than the system allows fails. Nothing throws.
#ifndef TARN_PLATFORM_DIRECTORIES_H
#define TARN_PLATFORM_DIRECTORIES_H

namespace tarn::platform {

enum class DirectoryStatus {
  Created,
  AlreadyExisted,  // on Windows: something has that name, a directory or anything else; on systems
                   // with permission bits: a directory of the user's that nobody else may write to
  Failed,          // no such parent, no permission, a name taken by anything else, ...
};

// Makes the last directory of the path; its parent must exist. On systems with permission bits only
// the user may enter it, and what else may have its name is looked at closely: in a shared
// directory others can take a name between two steps of the caller.
DirectoryStatus MakeDirectory(const char16_t* path) noexcept;

// Removes a directory without content. False when it stays, and for anything that is no directory.
bool RemoveEmptyDirectory(const char16_t* path) noexcept;

}  // namespace tarn::platform

#endif  // TARN_PLATFORM_DIRECTORIES_H
