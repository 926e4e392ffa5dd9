#include "TemporaryFiles.h"

#include "Fence.h"
#include "PathRules.h"
#include "Paths.h"
#include "SystemFiles.h"
#include "Tarnbase/PlainKernel.h"
#include "Undying.h"

namespace tarn::kernel {
namespace {

struct Notes {
  Lock mutex;                             // held while a temporary file is made or deleted
  std::unordered_set<std::string> paths;  // each in its one spelling
  std::string directory;                  // empty: the system's
};

std::string SetTempDirectory() {
  Notes& notes = Undying<Notes>();
  const std::lock_guard lock(notes.mutex);
  return notes.directory;
}

}  // namespace

FileNote::FileNote(const std::string& path) : lock_(Undying<Notes>().mutex) {
  const auto [note, isNew] = Undying<Notes>().paths.insert(OneSpelling(path));
  note_ = note;
  isNew_ = isNew;
}

FileNote::~FileNote() {
  if (isNew_) Undying<Notes>().paths.erase(note_);
}

void DeleteNotedFile(const std::string& path) {
  if (!MayNameTemporary(path)) return;
  const std::string spelling = OneSpelling(path);
  const TemporaryPlace place = {path, DefaultTempDirectory()};
  Notes& notes = Undying<Notes>();
  const std::lock_guard lock(notes.mutex);
  if (RemoveFile(place)) notes.paths.erase(spelling);
}

uint64_t NotedFiles() {
  Notes& notes = Undying<Notes>();
  const std::lock_guard lock(notes.mutex);
  return notes.paths.size();
}

std::string DefaultTempDirectory() {
  std::string directory = SetTempDirectory();
  if (directory.empty()) directory = SystemTempDirectory();
  return ClimbsUp(directory) ? ResolveDirectory(directory) : directory;
}

}  // namespace tarn::kernel

void PlainKernelSetTempDirectory(const char16_t* path) {
  using namespace tarn::kernel;
  Fenced(false, [&] {
    std::string directory = PathFromWide(path);
    Notes& notes = Undying<Notes>();
    const std::lock_guard lock(notes.mutex);
    notes.directory.swap(directory);
    return true;
  });
}
