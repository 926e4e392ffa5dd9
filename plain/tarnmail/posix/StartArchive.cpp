#include "StartArchive.h"

#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "console/Failure.h"
#include "console/SystemErrors.h"
#include "console/posix/ProgramDirectory.h"

namespace tarn::host {

void StartArchive(const std::vector<std::string>& words) {
  namespace fs = std::filesystem;
  constexpr const char* kProgram = "tarnmail-archive";
  std::vector<std::string> copies = words;
  copies.insert(copies.begin(), kProgram);
  std::vector<char*> arguments;
  arguments.reserve(copies.size() + 1);
  for (std::string& word : copies) arguments.push_back(word.data());
  arguments.push_back(nullptr);

  // Beside this program, as built; or where an installation has it.
  for (const char* folder : {".", TARN_HELPERS_FROM_PROGRAM}) {
    const fs::path program = (ProgramDirectory() / folder).lexically_normal() / kProgram;
    execv(program.c_str(), arguments.data());
    if (errno == ENOENT || errno == ENOTDIR) continue;
    throw Failure(ExitStatus::Broken, program.string(),
                  ErrorText({errno, std::generic_category()}));
  }
  throw Failure(ExitStatus::Broken, words.front(),
                "the archive commands are not installed: the package tarnpst-archive has them");
}

}  // namespace tarn::host
