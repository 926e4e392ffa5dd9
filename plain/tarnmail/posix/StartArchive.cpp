#include "StartArchive.h"

#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <system_error>

#include "console/Failure.h"
#include "console/SystemErrors.h"
#include "console/posix/InstalledPrograms.h"

namespace tarn::host {

void StartArchive(const std::vector<std::string>& words) {
  namespace fs = std::filesystem;
  const char* const name = words.front() == "search" ? "tarnmail-search" : "tarnmail-archive";
  std::vector<std::string> copies = words;
  copies.insert(copies.begin(), name);
  std::vector<char*> arguments;
  arguments.reserve(copies.size() + 1);
  for (std::string& word : copies) arguments.push_back(word.data());
  arguments.push_back(nullptr);

  const std::optional<fs::path> folder = FolderOfProgram(name);
  if (!folder) {
    throw Failure(ExitStatus::Broken, words.front(),
                  "the archive commands are not installed: the package tarnpst-archive has them");
  }
  const fs::path program = *folder / name;
  // GLib's own allocator ends a program by a signal where there is no memory; it looks at this
  // before main().
  setenv("G_SLICE", "always-malloc", 0);
  execv(program.c_str(), arguments.data());
  throw Failure(ExitStatus::Broken, program.string(), ErrorText({errno, std::generic_category()}));
}

}  // namespace tarn::host
