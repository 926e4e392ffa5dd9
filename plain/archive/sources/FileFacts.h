// FileFacts.h - what the system tells of a file. One folder a system implements it.
#ifndef TARN_ARCHIVE_FILEFACTS_H
#define TARN_ARCHIVE_FILEFACTS_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <utility>

#include "archive/model/Trouble.h"

namespace tarn::archive {

enum class FileForm : uint8_t { Regular, Folder, Pipe, Other };

struct FileFacts {
  FileForm form = FileForm::Other;           // of what a link leads to
  bool isLink = false;                       // by this path
  std::pair<uint64_t, uint64_t> identity{};  // device and number, of what a link leads to
};

// Missing for a path that leads nowhere, Unreadable where the system does not tell.
Outcome<FileFacts> FactsOfFile(const std::filesystem::path& path);

// The first bytes of a regular file, at most `count`.
Outcome<std::string> BeginningOfFile(const std::filesystem::path& path, size_t count);

}  // namespace tarn::archive

#endif
