// CompoundFiles.h - compound files in memory files of the kernel, opened for a test.
#ifndef TARN_TESTS_COMPOUND_COMPOUNDFILES_H
#define TARN_TESTS_COMPOUND_COMPOUNDFILES_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "compound/CompoundOperations.h"
#include "compound/CompoundStream.h"
#include "support/MemoryMail.h"

namespace tarn::test {

// A file of these bytes, loaded.
class LoadedFile {
 public:
  explicit LoadedFile(std::string_view bytes)
      : mail_(bytes), file_(CompoundFile::open(mail_.handle())) {}

  CompoundFile& file() { return file_; }
  CompoundParts& parts() { return PartsOf(file_); }
  const CompoundStorage& storage() const { return storage_; }

  bool has(std::string_view path) { return find(path) != nullptr; }
  const DirectoryEntry* find(std::string_view path);
  // What StreamRead gives of a whole stream; "(none)" for no stream.
  std::string stream(std::string_view path);
  // The names below a storage, joined by blanks.
  std::string names(std::string_view path);

 private:
  MemoryMail mail_;
  CompoundFile file_;
  CompoundStorage storage_{&file_};
};

// An open memory file of the kernel, which grows.
class GrowingFile {
 public:
  GrowingFile();
  GrowingFile(const GrowingFile&) = delete;
  GrowingFile& operator=(const GrowingFile&) = delete;
  ~GrowingFile() { end(); }

  uint64_t handle() const { return handle_; }
  // The file's bytes; nothing can be written afterwards.
  std::string end();

 private:
  uint64_t handle_ = 0;
  void* state_ = nullptr;
};

// A new compound file in one.
class NewFile {
 public:
  CompoundFile& file() { return file_; }
  CompoundParts& parts() { return PartsOf(file_); }
  DirtyMarks& marks() { return WriterOf(file_).marks(); }
  const CompoundStorage& storage() const { return storage_; }
  uint64_t handle() const { return memory_.handle(); }

  // Appends to a stream that is made when it is missing; the bytes that StreamWrite counts.
  uint64_t append(std::string_view path, std::string_view bytes);
  void flush() { FlushCompoundFile(file_); }
  std::string end() { return memory_.end(); }

 private:
  GrowingFile memory_;
  CompoundFile file_ = CompoundFile::create(memory_.handle());
  CompoundStorage storage_{&file_};
};

inline ByteView Bytes(std::string_view text) {
  return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

// The text as room to read into.
inline ByteSpan Room(std::string& text) {
  return {reinterpret_cast<unsigned char*>(text.data()), text.size()};
}

// A text of that length in which each place can be told from others nearby.
std::string Pattern(size_t length, unsigned seed = 0);

std::vector<uint64_t> List(const BlockList& blocks);
BlockList Blocks(const std::vector<uint64_t>& numbers);

}  // namespace tarn::test

#endif
