// SystemFiles.h - the file calls of the operating system, as few as the kernel can do with. One
// folder a system implements them (posix/, win32/).
//
// Paths are UTF-8. "Null" below is a failure of any kind. All may throw std::bad_alloc, and then no
// file was made, emptied or removed.
#ifndef TARN_KERNEL_SYSTEMFILES_H
#define TARN_KERNEL_SYSTEMFILES_H

#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "Handles.h"

namespace tarn::kernel {

// What the system puts between the components of a path that the kernel makes.
extern const char kPathSeparator;

// An existing file for reading, and a file made or emptied for writing. The path is tried as it
// is; where the system does not know "\" as a separator, it is read as one only when nothing
// of that name exists or, for a file to make, when its directory does not. A directory is null.
std::shared_ptr<OpenFile> OpenForReading(const std::string& path);
std::shared_ptr<OpenFile> OpenForWriting(const std::string& path);

// A temporary file, and the directory that the host or the system chose for such files. That one is
// trusted, however it is reached. On systems with permission bits no link is followed in what the
// path has after it; elsewhere none in the last component.
struct TemporaryPlace {
  std::string path;     // "\" and "/" both separate
  std::string trusted;  // may be empty
};

// A regular file made or emptied for writing, which is no link. On null none was made.
//
// On systems with permission bits, files made here and by MakeNewFile are for their owner alone; on
// Windows they inherit what their directory grants.
std::shared_ptr<OpenFile> OpenTemporary(const TemporaryPlace& place);

enum class Creation { Made, Exists, Failed };

// Makes an empty file, if nothing of that name exists.
Creation MakeNewFile(const TemporaryPlace& place);

// Whether no file of that name exists afterwards, or will once those who have it open let go.
bool RemoveFile(const TemporaryPlace& place);

// The same directory without ".." components; empty when there is none.
std::string ResolveDirectory(const std::string& path);

// Where the system wants temporary files.
std::string SystemTempDirectory();

// Unpredictable bytes; false when the system gives none.
bool RandomBytes(std::span<unsigned char> bytes);

}  // namespace tarn::kernel

#endif
