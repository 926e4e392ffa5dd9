#include "RemovedAtEnd.h"

#include <cstdlib>
#include <exception>
#include <mutex>
#include <set>
#include <utility>

#include "EndAtOnce.h"
#include "EndingSignals.h"
#include "SystemFiles.h"

namespace tarn::host {
namespace {

struct Notes {
  std::mutex mutex;
  std::multiset<std::filesystem::path> paths;
};

// Lives to the very end of the process: the thread of the signals may still come.
Notes& AllNotes() {
  static Notes* const notes = new Notes;
  return *notes;
}

// The lock is kept for good, so that nothing is made after this.
void RemoveAllNoted() {
  AllNotes().mutex.lock();
  EndChildren();
  for (const std::filesystem::path& path : AllNotes().paths) RemoveTree(path);
}

void Forget(const std::filesystem::path& path) {
  const auto note = AllNotes().paths.find(path);
  if (note != AllNotes().paths.end()) AllNotes().paths.erase(note);
}

}  // namespace

RemovedAtEnd::~RemovedAtEnd() {
  if (path_.empty()) return;
  const std::lock_guard lock(AllNotes().mutex);
  RemoveTree(path_);
  Forget(path_);
}

void RemovedAtEnd::watch() {
  static std::once_flag watched;
  std::call_once(watched, [] { WatchEndingSignals(RemoveAllNoted); });
}

std::error_code RemovedAtEnd::make(const Maker& maker) {
  watch();
  std::error_code error;
  const std::lock_guard lock(AllNotes().mutex);
  path_ = maker(error);
  if (error) {
    path_.clear();
  } else {
    AllNotes().paths.insert(path_);
  }
  return error;
}

void RemovedAtEnd::keep() {
  const std::lock_guard lock(AllNotes().mutex);
  Forget(std::exchange(path_, {}));
}

void EndAtOnce(int exitStatus) {
  try {
    RemoveAllNoted();
  } catch (const std::exception&) {
    // Without memory not all can be removed.
  }
  std::_Exit(exitStatus);
}

}  // namespace tarn::host
