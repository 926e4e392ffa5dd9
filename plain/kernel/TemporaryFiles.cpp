#include "TemporaryFiles.h"

#include <mutex>
#include <unordered_set>

#include "Lock.h"
#include "PathRules.h"
#include "Paths.h"
#include "Status.h"
#include "SystemFiles.h"
#include "Tarnbase/PlainKernel.h"
#include "Undying.h"

namespace tarn::kernel {
namespace {

struct Notes {
  Lock mutex;
  std::unordered_set<std::string> paths;  // each in its one spelling
  std::string directory;                  // empty: the system's
};

std::string SetTempDirectory() {
  Notes& notes = Undying<Notes>();
  const std::lock_guard lock(notes.mutex);
  return notes.directory;
}

}  // namespace

bool NoteFile(const std::string& path) {
  Notes& notes = Undying<Notes>();
  const std::lock_guard lock(notes.mutex);
  return notes.paths.insert(OneSpelling(path)).second;
}

void ForgetFile(const std::string& path) {
  Notes& notes = Undying<Notes>();
  const std::lock_guard lock(notes.mutex);
  notes.paths.erase(OneSpelling(path));
}

void DeleteNotedFile(const std::string& path) {
  if (!MayNameTemporary(path)) return;
  if (RemoveFile(path)) ForgetFile(path);
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
