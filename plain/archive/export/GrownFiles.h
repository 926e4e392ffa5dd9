// GrownFiles.h - files that an export adds to from batch to batch, each with the sum of what is in
// it: the mboxes of folders, and what the catalogue is to be told.
#ifndef TARN_ARCHIVE_GROWNFILES_H
#define TARN_ARCHIVE_GROWNFILES_H

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "archive/export/HashedFile.h"

namespace tarn::archive {

class GrownFiles {
 public:
  // They are kept in that folder, under names of their own.
  explicit GrownFiles(std::filesystem::path folder) : folder_(std::move(folder)) {}

  std::optional<Trouble> append(const std::string& name, std::string_view bytes);

  // A file as it was: what is after that is cut off. False where it does not have that sum.
  bool restore(const std::string& name, const FileSum& sum);

  // All are empty again.
  void forget() {
    files_.clear();
    open_.clear();
  }

  // Each with its sum so far, by name.
  std::map<std::string, FileSum> sums() const;
  // Of those alone that have grown since the last call.
  std::map<std::string, FileSum> takeChanges();
  std::filesystem::path pathOf(const std::string& name) const;

 private:
  struct Grown {
    uint64_t bytes = 0;
    Sha256 sum;
  };

  // Open until some others were asked for.
  Outcome<GrowingFile*> open(const std::string& name);

  std::filesystem::path folder_;
  std::map<std::string, Grown> files_;
  std::set<std::string> changed_;
  std::map<std::string, std::unique_ptr<GrowingFile>> open_;
};

}  // namespace tarn::archive

#endif
