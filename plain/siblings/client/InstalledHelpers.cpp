#include "siblings/client/InstalledHelpers.h"

#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

#include "console/Failure.h"
#include "console/posix/InstalledPrograms.h"

namespace tarn::pages {

std::filesystem::path FolderOfHelpers() {
  // The other one is beside it.
  std::optional<std::filesystem::path> programs = host::FolderOfProgram("tarnmail-pages");
  if (!programs) {
    throw host::Failure(
        host::ExitStatus::Broken,
        std::string("the programs that make pages are not installed: ") + kHowToInstallHelpers);
  }
  return *programs;
}

HelperOptions InstalledHelpers(host::PrivateFolder& folder, bool sandbox) {
  HelperOptions options;
  options.programs = FolderOfHelpers();
  std::error_code unmade;
  options.temporary = folder.path(unmade);
  options.sandbox = sandbox;
  return options;
}

}  // namespace tarn::pages
