// TemporaryFiles.h - the temporary files that the kernel made and that nobody has deleted yet, by
// path; and the directory where new ones go.
#ifndef TARN_KERNEL_TEMPORARYFILES_H
#define TARN_KERNEL_TEMPORARYFILES_H

#include <cstdint>
#include <mutex>
#include <string>
#include <unordered_set>

#include "Lock.h"

namespace tarn::kernel {

// Notes the file and makes it with `make`, which tells whether it succeeded; on failure the note is
// taken back unless it was there before. The result is that of `make`. May throw std::bad_alloc,
// and then nothing was made, as long as `make` makes nothing when it throws. One thread at a time
// makes or deletes such files, so that a note always goes with its file.
template <typename Make>
bool MakeNotedFile(const std::string& path, Make make);

// Deletes the file; its note goes when no such file exists afterwards. Nothing happens to what may
// not name a temporary file. May throw std::bad_alloc, and then nothing was deleted.
void DeleteNotedFile(const std::string& path);

uint64_t NotedFiles();

// The directory set by PlainKernelSetTempDirectory, else the system's, as it is spelled there; it
// need not exist. One that climbs is resolved first, since no temporary file may be named so, and
// is empty when it does not exist. Empty too when the system names none.
std::string DefaultTempDirectory();

// The note of a file to be made: taken back by the destructor unless it is kept or was there
// before. Nobody else makes or deletes temporary files meanwhile.
class FileNote {
 public:
  explicit FileNote(const std::string& path);
  FileNote(const FileNote&) = delete;
  FileNote& operator=(const FileNote&) = delete;
  ~FileNote();

  void Keep() { isNew_ = false; }

 private:
  std::unique_lock<Lock> lock_;
  std::unordered_set<std::string>::iterator note_;
  bool isNew_ = false;
};

template <typename Make>
bool MakeNotedFile(const std::string& path, Make make) {
  FileNote note(path);
  const bool made = make();
  if (made) note.Keep();
  return made;
}

}  // namespace tarn::kernel

#endif
