#include "archive/export/Staging.h"

#include <system_error>

#include "console/Paths.h"
#include "console/SystemErrors.h"
#include "console/SystemFiles.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;
using host::ExitStatus;
using host::Failure;

void Check(const std::optional<Trouble>& trouble) {
  if (trouble) throw Failure(ExitStatus::Failed, trouble->reason);
}

std::string TextOfFile(const fs::path& path) {
  std::string text;
  (void)ReadInPieces(path, [&](std::string_view piece) {
    text += piece;
    return true;
  });
  return text;
}

}  // namespace

void CheckStaged(const std::optional<Trouble>& trouble) {
  if (!trouble) return;
  throw StagedFailure(trouble->reason);
}

ExportFolder KindOfExportFolder(const fs::path& folder) {
  std::error_code ignored;
  if (fs::exists(folder / kManifestName, ignored)) return ExportFolder::Finished;
  if (fs::exists(folder / kStagingName, ignored)) return ExportFolder::Unfinished;
  const bool isThere = fs::exists(folder, ignored);
  if (!isThere || (fs::is_directory(folder, ignored) && fs::is_empty(folder, ignored))) {
    return ExportFolder::Free;
  }
  return ExportFolder::NotOurs;
}

Staging::Staging(const fs::path& tree, const std::string& settings, bool resume)
    : tree_(tree), folder_(tree / kStagingName), grown_(folder_ / "grown") {
  std::error_code error;
  fs::create_directories(folder_ / "grown", error);
  if (error) {
    throw StagingTaken(ExitStatus::Usage, host::Utf8FromPath(tree_),
                       "nothing can be written there: " + host::ErrorText(error));
  }
  const Outcome<std::optional<int>> lock = LockFile(path("lock"));
  if (!lock) Check(lock.trouble());
  if (!*lock) {
    throw StagingTaken(ExitStatus::Usage, host::Utf8FromPath(tree_),
                       "another program exports into it at this moment");
  }
  lock_ = **lock;
  try {
    prepare(settings, resume);
  } catch (...) {
    UnlockFile(lock_);
    throw;
  }
}

Staging::~Staging() { UnlockFile(lock_); }

void Staging::prepare(const std::string& settings, bool resume) {
  const std::string before = TextOfFile(path("settings"));
  // A run that was ended before it had written them has done nothing.
  if (resume && !before.empty() && before != settings) {
    throw Failure(ExitStatus::Usage, host::Utf8FromPath(tree_),
                  "the export there was begun with other files or options: --resume goes on with "
                  "the same");
  }
  for (const char* const name : {"work", "plans"}) {
    host::RemoveTree(path(name));
    std::error_code error;
    fs::create_directories(path(name), error);
    if (error) Check(SystemTrouble(path(name), error.value()));
  }
  if (before.empty()) {
    Outcome<std::unique_ptr<GrowingFile>> file = GrowingFile::open(path("settings.new"));
    if (!file) Check(file.trouble());
    Check((*file)->cutTo(0));
    Check((*file)->append(settings));
    Check((*file)->sync());
    std::error_code error;
    fs::rename(path("settings.new"), path("settings"), error);
    if (error) Check(SystemTrouble(path("settings"), error.value()));
  }
  Outcome<std::unique_ptr<GrowingFile>> journal = GrowingFile::open(journalPath());
  if (!journal) Check(journal.trouble());
  journal_ = std::move(*journal);
  Outcome<JournalState> state = RestoreJournal(journalPath(), tree_, grown_);
  if (!state) Check(state.trouble());
  resumed_ = std::move(*state);
  Check(journal_->cutTo(resumed_.goodBytes));
}

Outcome<fs::path> Staging::newWorkFolder() {
  const fs::path folder = path("work") / std::to_string(workFolders_++);
  std::error_code error;
  fs::create_directory(folder, error);
  if (error) return SystemTrouble(folder, error.value());
  return folder;
}

void Staging::sync() const { CheckStaged(SyncFileSystem(folder_)); }

void Staging::remove() { host::RemoveTree(folder_); }

}  // namespace tarn::archive
