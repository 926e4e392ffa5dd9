#include "PrivateFolder.h"

#include "Failure.h"
#include "Paths.h"
#include "SystemErrors.h"
#include "SystemFiles.h"
#include "Text.h"

namespace tarn::host {
namespace {

namespace fs = std::filesystem;

// The kernel makes temporary files only below paths that do not climb, so that the directory is
// given without any "..".
fs::path NamedDirectory(const std::string& directory) {
  if (directory.empty()) throw Failure(ExitStatus::Usage, "empty directory name");
  std::error_code error;
  fs::path full = FullDirectory(PathFromUtf8(directory), error);
  const FileKind kind = error ? FileKind::Missing : KindOfFile(full, error);
  if (kind == FileKind::Missing) throw Failure(ExitStatus::Usage, directory, "no such directory");
  if (kind != FileKind::Directory) {
    throw Failure(ExitStatus::Usage, directory, "is not a directory");
  }
  if (!WideFromUtf8(Utf8FromPath(full))) {
    throw Failure(ExitStatus::Usage, directory, "the name is not UTF-8");
  }
  return full;
}

}  // namespace

PrivateFolder::PrivateFolder(const std::optional<std::string>& directory) {
  if (directory) parent_ = NamedDirectory(*directory);
}

const fs::path& PrivateFolder::path(std::error_code& error) {
  if (folder_.path().empty() && !error_) {
    if (parent_.empty()) parent_ = SystemTempDirectory();
    error_ = folder_.make([&](std::error_code& failed) {
      const fs::path full = FullDirectory(parent_, failed);
      return failed ? fs::path() : MakePrivateFolder(full, failed);
    });
  }
  error = error_;
  return folder_.path();
}

const fs::path& PrivateFolder::path() {
  std::error_code error;
  const fs::path& folder = path(error);
  if (error) {
    throw Failure(ExitStatus::Usage, Utf8FromPath(parent_),
                  "no temporary folder can be made there: " + ErrorText(error) +
                      "; --temp names another place");
  }
  return folder;
}

}  // namespace tarn::host
