// MemoryFile.h - files without a name, in memory, by which large things go from process to process.
#ifndef TARN_SIBLINGS_CLIENT_MEMORYFILE_H
#define TARN_SIBLINGS_CLIENT_MEMORYFILE_H

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

#include "Descriptor.h"

namespace tarn::pages {

// Empty, for somebody else to write to. Throws std::system_error, as does the next.
Descriptor MakeMemoryFile();

// With these bytes, which nobody can change or cut any more.
Descriptor SealedCopy(std::string_view bytes);

// The same of what is left of an open file. None when that is more than `most`, or cannot be read.
struct CopiedFile {
  Descriptor file;
  uint64_t size = 0;
};
std::optional<CopiedFile> SealedCopyOf(int file, uint64_t most);

// Fills the room from the file's start; false when the file has less. The file's own position
// stays.
bool ReadAll(int file, std::span<uint8_t> room);

bool WriteAll(int file, std::string_view bytes);

std::optional<uint64_t> SizeOf(int file);

// A memory file that takes one answer after the other: pages of memory are dear to get and to give
// back.
class AnswerRoom {
 public:
  // For the next answer, to be written from the start. What it holds may be of answers before.
  int ready();

  uint64_t size() const { return SizeOf(file_.get()).value_or(0); }

  // Fills `bytes` from its start; false when it has less. Gives memory back that is more than
  // answers commonly need.
  bool take(std::span<uint8_t> bytes);

 private:
  Descriptor file_;
};

}  // namespace tarn::pages

#endif
