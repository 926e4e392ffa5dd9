// CompoundFiles.h - compound files in memory files of the kernel, opened for a test.
#ifndef TARN_TESTS_COMPOUND_COMPOUNDFILES_H
#define TARN_TESTS_COMPOUND_COMPOUNDFILES_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "compound/CompoundStream.h"
#include "support/MemoryMail.h"

namespace tarn::test {

// A file of these bytes, loaded.
class LoadedFile {
 public:
  explicit LoadedFile(std::string_view bytes) : mail_(bytes), file_(storage_, mail_.handle()) {
    LoadCompoundFile(file_);
  }

  CompoundFile& file() { return file_; }
  CompoundStorage& storage() { return storage_; }

  bool has(std::string_view path) { return find(path) != nullptr; }
  DirectoryEntry* find(std::string_view path);
  // What StreamRead gives of a whole stream; "(none)" for no stream.
  std::string stream(std::string_view path);
  // The names below a storage, joined by blanks.
  std::string names(std::string_view path);

 private:
  MemoryMail mail_;
  CompoundStorage storage_;
  CompoundFile file_;
};

// A new file in a growing memory file.
class NewFile {
 public:
  NewFile();
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;
  ~NewFile() { end(); }

  CompoundFile& file() { return file_; }
  CompoundStorage& storage() { return storage_; }
  bool opened() const { return opened_; }

  // Appends to a stream that is made when it is missing; the bytes that StreamWrite counts.
  uint64_t append(std::string_view path, std::string_view bytes);
  void flush() { FlushCompoundFile(file_); }
  // The file's bytes; nothing can be written afterwards.
  std::string end();

 private:
  uint64_t handle_ = 0;
  void* state_ = nullptr;
  CompoundStorage storage_;
  CompoundFile file_;
  bool opened_ = false;
};

inline const unsigned char* Bytes(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

// A text of that length in which each place can be told from others nearby.
std::string Pattern(size_t length, unsigned seed = 0);

std::vector<uint64_t> List(const BlockList& blocks);
BlockList Blocks(const std::vector<uint64_t>& numbers);

}  // namespace tarn::test

#endif
