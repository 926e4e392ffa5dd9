// NewFiles.h - new files in one folder. One folder a system implements it.
#ifndef TARN_ARCHIVE_NEWFILES_H
#define TARN_ARCHIVE_NEWFILES_H

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

#include "archive/common/SafeName.h"

namespace tarn::archive {

// Nothing outside the folder is written to, and nothing in it is replaced. A file appears under its
// name when it is whole.
class NewFiles {
 public:
  // Makes the folder where there is none. Throws host::Failure (Usage) where that cannot be, or
  // where it is no folder.
  explicit NewFiles(const std::string& folder);
  NewFiles(const NewFiles&) = delete;
  NewFiles& operator=(const NewFiles&) = delete;
  ~NewFiles();

  using Write = std::function<void(std::string_view)>;

  // Makes a file of what `fill` writes, and gives its name: the safe name, or one like it that
  // nothing in the folder has. No file is made where `fill` is false or throws, and the name is
  // empty. Throws host::Failure (Failed) where the bytes cannot be written.
  std::string add(const std::string& safeName, const std::function<bool(const Write&)>& fill);

 private:
  std::filesystem::path path_;
  int folder_ = -1;
  UniqueNames names_;
};

}  // namespace tarn::archive

#endif
