// StoreSession.h - an open store whose memory does not grow: its context, which keeps the pages
// that it has read, is dropped when it has read much and opened again at the next need.
#ifndef TARN_ARCHIVE_STORE_STORESESSION_H
#define TARN_ARCHIVE_STORE_STORESESSION_H

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include "archive/model/Trouble.h"
#include "pststore/DbContext.h"

namespace tarn::archive::store {

class StoreSession {
 public:
  // Unreadable for a file that does not open, Damaged for one whose header or indexes' roots are
  // damaged, Unsupported for layouts and encryptions that are not read.
  static Outcome<std::unique_ptr<StoreSession>> Open(const std::filesystem::path& path);

  // The store; throws what opening it throws, and database_corrupt when the session has read 1 GiB
  // and 64 times the size of the file: data that is named again and again.
  const std::shared_ptr<pststore::db_context>& context();

  // Whether the context has read so much that it should go.
  bool isFull() const;
  // The context goes as soon as nothing else of the store is left.
  void drop();

  uint64_t fileSize() const { return fileSize_; }
  // How many bytes a full block of data has.
  size_t blockSize() const { return blockSize_; }

 private:
  explicit StoreSession(std::u16string path) : path_(std::move(path)) {}
  Outcome<bool> expectHeader(const std::filesystem::path& path);

  std::u16string path_;
  std::shared_ptr<pststore::db_context> context_;
  size_t blockSize_ = 0;
  uint16_t version_ = 0;
  uint64_t fileSize_ = 0;
  uint64_t taken_ = 0;  // by contexts that are gone
};

}  // namespace tarn::archive::store

#endif
