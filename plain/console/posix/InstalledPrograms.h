// InstalledPrograms.h - the programs that are installed with this one.
#ifndef TARN_CONSOLE_POSIX_INSTALLEDPROGRAMS_H
#define TARN_CONSOLE_POSIX_INSTALLEDPROGRAMS_H

#include <filesystem>
#include <optional>

namespace tarn::host {

// The folder with the program of that name: this program's own, as built, or the one where an
// installation has it. None where it is in neither.
std::optional<std::filesystem::path> FolderOfProgram(const char* name);

}  // namespace tarn::host

#endif
