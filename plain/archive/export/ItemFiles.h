// ItemFiles.h - the files that an item becomes, below a folder of their own.
#ifndef TARN_ARCHIVE_ITEMFILES_H
#define TARN_ARCHIVE_ITEMFILES_H

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "archive/catalogue/CatalogueItem.h"
#include "archive/export/HashedFile.h"

namespace tarn::archive {

// Thrown where a place takes no more, which ends everything.
struct Full {
  Trouble trouble;
};

class ItemFiles {
 public:
  // `tree` is the path of `folder` within the export.
  ItemFiles(std::filesystem::path folder, std::string tree)
      : folder_(std::move(folder)), tree_(std::move(tree)) {}

  // A path within the folder, which is made with the first file. Throws Full.
  std::unique_ptr<HashedFile> create(const std::string& path);
  // The file of that path is wholly written: what the manifest tells of it. Throws Full.
  ExportedFile finish(HashedFile& file, const std::string& path, const char* role);

  bool hasFolder() const { return !lastFolder_.empty(); }
  uint64_t bytes() const { return bytes_; }  // of all files

 private:
  const std::filesystem::path folder_;
  const std::string tree_;
  std::filesystem::path lastFolder_;
  uint64_t bytes_ = 0;
};

// Adds up what goes into another.
class CountingSink final : public ByteSink {
 public:
  explicit CountingSink(ByteSink& sink) : sink_(sink) {}
  std::optional<Trouble> write(std::string_view bytes) override;
  uint64_t count() const { return count_; }

 private:
  ByteSink& sink_;
  uint64_t count_ = 0;
};

// Keeps the sum alone.
class SummingSink final : public ByteSink {
 public:
  std::optional<Trouble> write(std::string_view bytes) override;
  std::string digest() const { return sum_.digest(); }

 private:
  Sha256 sum_;
};

// A file that is made when the first bytes come.
class LateFile final : public ByteSink {
 public:
  using Make = std::function<std::unique_ptr<HashedFile>()>;
  explicit LateFile(Make make) : make_(std::move(make)) {}
  std::optional<Trouble> write(std::string_view bytes) override;
  const std::unique_ptr<HashedFile>& file() const { return file_; }

 private:
  Make make_;
  std::unique_ptr<HashedFile> file_;
};

}  // namespace tarn::archive

#endif
