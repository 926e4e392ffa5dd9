#include "archive/export/ItemFiles.h"

#include <system_error>

namespace tarn::archive {

namespace fs = std::filesystem;

std::unique_ptr<HashedFile> ItemFiles::create(const std::string& path) {
  const fs::path full = folder_ / path;
  if (full.parent_path() != lastFolder_) {
    std::error_code error;
    // Mostly the one above is there.
    fs::create_directory(full.parent_path(), error);
    if (error) fs::create_directories(full.parent_path(), error);
    if (error) throw Full{SystemTrouble(full.parent_path(), error.value())};
    lastFolder_ = full.parent_path();
  }
  Outcome<std::unique_ptr<HashedFile>> file = HashedFile::create(full);
  if (!file) throw Full{file.trouble()};
  return std::move(*file);
}

ExportedFile ItemFiles::finish(HashedFile& file, const std::string& path, const char* role) {
  const Outcome<FileSum> sum = file.finish();
  if (!sum) throw Full{sum.trouble()};
  bytes_ += sum->bytes;
  ExportedFile told;
  told.path = tree_ + "/" + path;
  told.role = role;
  told.bytes = sum->bytes;
  told.sha256 = sum->sha256;
  return told;
}

std::optional<Trouble> CountingSink::write(std::string_view bytes) {
  count_ += bytes.size();
  return sink_.write(bytes);
}

std::optional<Trouble> SummingSink::write(std::string_view bytes) {
  sum_.add(bytes);
  return std::nullopt;
}

std::optional<Trouble> LateFile::write(std::string_view bytes) {
  if (!file_) file_ = make_();
  return file_->write(bytes);
}

}  // namespace tarn::archive
