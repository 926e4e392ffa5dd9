// StorageFile.h - a compound file that is read as it is: every entry of its directory by number,
// streams at any position of the file, and what is damaged as a trouble.
//
// Beside CompoundFile's own way, in which a search of names finds an entry, and what is missing of
// a stream is passed over. Storages that share entries in a damaged directory would make trees
// without an end: an entry belongs to the storage that came to it first. What all streams together
// give is no more than twice the file.
#ifndef TARN_ARCHIVE_STORAGEFILE_H
#define TARN_ARCHIVE_STORAGEFILE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "archive/model/ByteSource.h"
#include "compound/CompoundFile.h"

namespace tarn::archive::msg {

// The number of an entry in the directory.
using EntryNumber = uint32_t;
inline constexpr EntryNumber kRootEntry = 0;

using EntryRecord = std::array<unsigned char, 128>;

class StorageFile {
 public:
  static Outcome<std::unique_ptr<StorageFile>> Open(const std::filesystem::path& path);
  // The bytes are copied.
  static Outcome<std::unique_ptr<StorageFile>> OfBytes(std::string_view bytes);

  StorageFile(const StorageFile&) = delete;
  StorageFile& operator=(const StorageFile&) = delete;
  ~StorageFile();

  uint64_t size() const { return file_->size(); }
  // Whether entries of the directory are out of place, so that some may be missing.
  bool isDirectoryDamaged() const { return isDirectoryDamaged_; }

  // The entries below a storage, in the order of their names; none below a stream.
  std::span<const EntryNumber> children(EntryNumber storage) const;
  // Low bytes of the name's units, without a control character at its front.
  std::string_view name(EntryNumber entry) const;
  bool isStorage(EntryNumber entry) const;
  uint64_t sizeOf(EntryNumber entry) const;  // of a stream, as it claims
  std::optional<EntryNumber> find(EntryNumber storage, std::string_view name) const;

  // The record as it is in the file (MS-CFB 2.6.1): name, class id, times.
  Outcome<EntryRecord> record(EntryNumber entry);

  Outcome<std::unique_ptr<ByteSource>> open(EntryNumber stream);
  Outcome<std::string> read(EntryNumber stream, size_t limit);

 private:
  friend class StorageStream;

  // What a handle of the kernel needs to be ended.
  struct Handle {
    uint64_t number = UINT64_MAX;
    void* memory = nullptr;  // of a memory file

    ~Handle();
  };

  static Outcome<std::unique_ptr<StorageFile>> OfHandle(std::unique_ptr<Handle> handle);
  explicit StorageFile(std::unique_ptr<Handle> handle) : handle_(std::move(handle)) {}

  void sortEntries();
  void collectChildren(EntryNumber storage);

  // Bytes of the file; fewer where it ends.
  size_t readAt(uint64_t position, std::span<char> buffer);

  std::unique_ptr<Handle> handle_;
  std::unique_ptr<CompoundFile> file_;
  struct Range {
    uint32_t first = 0;
    uint32_t count = 0;
  };
  std::vector<Range> childrenOf_;  // for each entry, places in `children_`
  std::vector<EntryNumber> children_;
  BlockList directoryBlocks_;  // once a record was asked for
  std::vector<bool> isClaimed_;
  std::vector<bool> isBeyondFile_;  // streams after those that fill the file
  bool isDirectoryDamaged_ = false;
};

}  // namespace tarn::archive::msg

#endif
