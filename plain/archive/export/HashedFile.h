// HashedFile.h - files of an export as they are written, and as they are checked. One folder a
// system implements it.
#ifndef TARN_ARCHIVE_HASHEDFILE_H
#define TARN_ARCHIVE_HASHEDFILE_H

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "archive/export/Sha256.h"
#include "archive/model/ByteSink.h"

namespace tarn::archive {

struct FileSum {
  uint64_t bytes = 0;
  std::string sha256;  // 64 digits in lower case

  friend bool operator==(const FileSum&, const FileSum&) = default;
};

// A new file, hashed while it is written. Troubles name the path and what the system says.
class HashedFile final : public ByteSink {
 public:
  // Unreadable where it cannot be made, or is there already.
  static Outcome<std::unique_ptr<HashedFile>> create(const std::filesystem::path& path);
  ~HashedFile() override;

  std::optional<Trouble> write(std::string_view bytes) override;

  // Writes what waits and closes the file. Nothing is written after it.
  Outcome<FileSum> finish();

 private:
  HashedFile(std::filesystem::path path, int file) : path_(std::move(path)), file_(file) {}
  std::optional<Trouble> flush();

  std::filesystem::path path_;
  int file_;
  std::string waiting_;
  uint64_t bytes_ = 0;
  Sha256 sum_;
};

// A file that grows and is read again: the same without a hash. It is made where there is none.
class GrowingFile {
 public:
  static Outcome<std::unique_ptr<GrowingFile>> open(const std::filesystem::path& path);
  GrowingFile(const GrowingFile&) = delete;
  GrowingFile& operator=(const GrowingFile&) = delete;
  ~GrowingFile();

  uint64_t size() const { return size_; }
  std::optional<Trouble> append(std::string_view bytes);
  // What is after that size is gone.
  std::optional<Trouble> cutTo(uint64_t size);
  // On the disk, as far as the system can say.
  std::optional<Trouble> sync();
  // `count` bytes from there; fewer is a trouble.
  Outcome<std::string> read(uint64_t offset, uint64_t count) const;
  // The same as many as there is room for.
  std::optional<Trouble> read(uint64_t offset, std::span<char> room) const;
  // As the first in pieces, however many they are; `take` ends it by a trouble of its own.
  std::optional<Trouble> readInPieces(
      uint64_t offset, uint64_t count,
      const std::function<std::optional<Trouble>(std::string_view)>& take) const;

 private:
  GrowingFile(std::filesystem::path path, int file, uint64_t size)
      : path_(std::move(path)), file_(file), size_(size) {}

  std::filesystem::path path_;
  int file_;
  uint64_t size_;
};

// Goes through a regular file, no link, from the first byte to the last, in pieces; `take` stops by
// false. Missing for a path that leads nowhere.
std::optional<Trouble> ReadInPieces(const std::filesystem::path& path,
                                    const std::function<bool(std::string_view)>& take);

// Whether a file can be read without a wait for a disk, as a few places in it tell. False where the
// system does not.
bool IsInMemory(const std::filesystem::path& path);

// Of a regular file; a link is none.
Outcome<FileSum> SumOfFile(const std::filesystem::path& path);

// "PATH: what the system says".
Trouble SystemTrouble(const std::filesystem::path& path, int error);

}  // namespace tarn::archive

#endif
