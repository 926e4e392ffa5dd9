// FolderFiles.h - the files of one folder, by plain names, for a helper that may be hostile.
#ifndef TARN_SIBLINGS_CLIENT_FOLDERFILES_H
#define TARN_SIBLINGS_CLIENT_FOLDERFILES_H

#include <filesystem>
#include <optional>
#include <string>

#include "Descriptor.h"
#include "MemoryFile.h"

namespace tarn::pages {

class FolderFiles {
 public:
  // An empty path, or a folder that cannot be opened, has no files.
  explicit FolderFiles(const std::filesystem::path& folder);

  bool isOpen() const { return static_cast<bool>(folder_); }

  // A copy of the file of that name. None for names with a folder in them, "." and "..", names with
  // a NUL, links, whatever is no regular file, and files beyond kMaxFolderFile. The copy has no way
  // back to the file: whoever gets it cannot open the file itself through it.
  std::optional<CopiedFile> copyOf(const std::string& name) const;

 private:
  Descriptor folder_;
};

}  // namespace tarn::pages

#endif
