// MaildirNames.h - names of files and folders in a Maildir.
#ifndef TARN_ARCHIVE_MAILDIRNAMES_H
#define TARN_ARCHIVE_MAILDIRNAMES_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "archive/model/Trouble.h"

namespace tarn::archive::mail {

// The folder that Maildir++ names so: ".Sent.2024" is "2024" in "Sent". Names are in the UTF-7 of
// IMAP (RFC 3501 5.1.3), else in UTF-8.
std::vector<std::string> FolderOfMaildirName(std::string_view name);

// A file's name without its flags: what comes before ":2,". File systems that have no colon in
// names have ";" or "!" there.
std::string_view UniquePart(std::string_view fileName);

// The names of the files of a folder, in the order of their bytes.
class FileNames {
 public:
  // Of a folder that is not there, none. Names that begin with a dot are no mails.
  static Outcome<FileNames> of(const std::filesystem::path& folder);

  // The folders that are there too and have something in them, in the same order.
  const std::vector<std::string>& folders() const { return folders_; }

  size_t size() const { return starts_.size(); }
  std::string_view at(size_t index) const { return all_.c_str() + starts_[index]; }

  // The first of those with this unique part.
  std::optional<size_t> firstOf(std::string_view uniquePart) const;

 private:
  std::string all_;  // each with a NUL
  std::vector<uint32_t> starts_;
  std::vector<std::string> folders_;
};

}  // namespace tarn::archive::mail

#endif
