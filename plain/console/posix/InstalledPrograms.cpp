#include "console/posix/InstalledPrograms.h"

#include <system_error>

#include "console/posix/ProgramDirectory.h"

namespace tarn::host {

std::optional<std::filesystem::path> FolderOfProgram(const char* name) {
  for (const char* folder : {".", TARN_HELPERS_FROM_PROGRAM}) {
    std::filesystem::path place = (ProgramDirectory() / folder).lexically_normal();
    std::error_code ignored;
    if (std::filesystem::exists(place / name, ignored)) return place;
  }
  return std::nullopt;
}

}  // namespace tarn::host
