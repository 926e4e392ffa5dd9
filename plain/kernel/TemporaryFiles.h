// TemporaryFiles.h - the temporary files that the kernel made and that nobody has deleted yet, by
// path; and the directory where new ones go.
#ifndef TARN_KERNEL_TEMPORARYFILES_H
#define TARN_KERNEL_TEMPORARYFILES_H

#include <cstdint>
#include <string>

namespace tarn::kernel {

// Notes the file and makes it with `make`, which tells whether it succeeded; on failure the note is
// taken back unless it was there before. The result is that of `make`. May throw std::bad_alloc,
// and then nothing was made.
template <typename Make>
bool MakeNotedFile(const std::string& path, Make make);

// Deletes the file; its note goes when no such file exists afterwards.
void DeleteNotedFile(const std::string& path);

uint64_t NotedFiles();

// The directory set by PlainKernelSetTempDirectory, else the system's; without ".." components, and
// empty when that directory does not exist.
std::string DefaultTempDirectory();

// The two halves of MakeNotedFile: whether the note is new, and taking it back.
bool NoteFile(const std::string& path);
void ForgetFile(const std::string& path);

template <typename Make>
bool MakeNotedFile(const std::string& path, Make make) {
  const bool isNew = NoteFile(path);
  bool made = false;
  try {
    made = make();
  } catch (...) {
    if (isNew) ForgetFile(path);
    throw;
  }
  if (!made && isNew) ForgetFile(path);
  return made;
}

}  // namespace tarn::kernel

#endif
