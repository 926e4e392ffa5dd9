// PrivateFolder.h - the one folder of a process for all its temporary files.
#ifndef TARN_CONSOLE_PRIVATEFOLDER_H
#define TARN_CONSOLE_PRIVATEFOLDER_H

#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

#include "RemovedAtEnd.h"

namespace tarn::host {

// Made at the first need, under a name that nobody can guess and for its owner alone (on Windows
// the system may enter too). Goes with all that is in it at the end of this object, or when a
// signal ends the program.
class PrivateFolder {
 public:
  // In the directory named by the user, else in the system's for temporary files. Throws Failure
  // (Usage) for a named one that does not exist, is no directory or has a name that is not UTF-8.
  explicit PrivateFolder(const std::optional<std::string>& directory);

  // The full path, without links. On an error there is none.
  const std::filesystem::path& path(std::error_code& error);

  // The same, but a folder that cannot be made throws Failure (Usage) with what to do.
  const std::filesystem::path& path();

 private:
  std::filesystem::path parent_;
  RemovedAtEnd folder_;
  std::error_code error_;
};

}  // namespace tarn::host

#endif
