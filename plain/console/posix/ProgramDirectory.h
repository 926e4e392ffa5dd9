// ProgramDirectory.h - where this program is.
#ifndef TARN_CONSOLE_POSIX_PROGRAMDIRECTORY_H
#define TARN_CONSOLE_POSIX_PROGRAMDIRECTORY_H

#include <filesystem>

namespace tarn::host {

// The full path, without links.
inline std::filesystem::path ProgramDirectory() {
  return std::filesystem::read_symlink("/proc/self/exe").parent_path();
}

}  // namespace tarn::host

#endif
