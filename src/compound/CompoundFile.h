// CompoundFile.h - a compound file over a handle of the kernel (MS-CFB): streams by their paths.
//
// The handle may be a file or a memory file; whoever opened it closes it, after this. All memory is
// the kernel's; std::bad_alloc leaves every function here when it has none. Header, tables and
// directory are in memory while the file is open. All that is read of a file together costs a
// bounded time, and what a file does not give of a stream is zeros or missing, but no failure.
#ifndef TARN_COMPOUND_COMPOUNDFILE_H
#define TARN_COMPOUND_COMPOUNDFILE_H

#include <optional>
#include <string_view>

#include "compound/CompoundParts.h"
#include "compound/CompoundWriter.h"

namespace tarn {

// While it lives it is announced to the kernel, with all that it holds.
class CompoundFile {
 public:
  // A file to read. `result` tells whether it is one:
  //   CompoundOk           it is open;
  //   CompoundOpenFailed   the kernel did not reach it, or a part of it;
  //   CompoundNotCompound  it does not begin like one;
  //   CompoundDamaged      its header or its tables cannot be read.
  static CompoundFile open(uint64_t handle);

  // A new file to write. Its streams reach the handle at once, all else with flush().
  static CompoundFile create(uint64_t handle);

  // Neither opened nor created. CompoundOperations.h does the rest step by step.
  explicit CompoundFile(uint64_t handle);
  CompoundFile(const CompoundFile&) = delete;
  CompoundFile& operator=(const CompoundFile&) = delete;
  ~CompoundFile();  // flushes nothing

  CompoundResult result() const { return parts_.result; }
  bool isOpened() const { return parts_.opened; }  // false for a new file
  bool isWritable() const { return parts_.writable; }
  uint64_t size() const { return parts_.big.fileSize(); }
  uint64_t entryCount() const { return parts_.directory.entries().size(); }

  // Seeks that the kernel failed. What was read meanwhile may be less than the file has.
  uint64_t failedSeeks() const { return parts_.big.failedSeeks(); }

  // Takes from the bytes that reads may still cost; false when that is not enough, and then nothing
  // is left.
  bool spend(uint64_t bytes) { return parts_.big.spend(bytes); }

  // The names below a storage, in the order of its tree. None for a stream or a missing path.
  KernelVector<KernelString> list(std::string_view path) { return parts_.directory.list(path); }

  bool isStorage(std::string_view path);

  // The stream of a path; none when there is no entry or it is a storage.
  std::optional<CompoundStream> open(std::string_view path);

  // The same, but in a file that is writable a missing stream is made first, with all storages that
  // lead to it.
  std::optional<CompoundStream> openOrMake(std::string_view path);

  void flush() { writer_.flush(); }

 private:
  friend CompoundParts& PartsOf(CompoundFile& file);
  friend CompoundWriter& WriterOf(CompoundFile& file);

  CompoundFile(uint64_t handle, bool create);
  std::optional<CompoundStream> streamOf(const DirectoryEntry* entry, std::string_view path);

  CompoundParts parts_;
  CompoundWriter writer_;
};

// What readers pass around.
struct CompoundStorage {
  CompoundFile* file = nullptr;  // not owned
};

// CompoundFile::list.
KernelVector<KernelString> ListEntryNames(const CompoundStorage& storage, std::string_view path);

}  // namespace tarn

#endif
