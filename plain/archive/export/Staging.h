// Staging.h - the folder of an export while it is being made: DIR/.tarn-staging.
#ifndef TARN_ARCHIVE_STAGING_H
#define TARN_ARCHIVE_STAGING_H

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "archive/export/GrownFiles.h"
#include "archive/export/Journal.h"
#include "console/Failure.h"

namespace tarn::archive {

inline constexpr const char* kStagingName = ".tarn-staging";
inline constexpr const char* kManifestName = "manifest.jsonl";

// Whether a folder can be exported into, and what is there of an export.
enum class ExportFolder : uint8_t { Free, Unfinished, Finished, NotOurs };
ExportFolder KindOfExportFolder(const std::filesystem::path& folder);

// Nothing can be written there, or another program is at work: it may be otherwise the next time.
class StagingTaken : public host::Failure {
 public:
  using Failure::Failure;
};

class Staging {
 public:
  // Makes the folder, or goes on with what it holds where `resume`: everything that is not of a
  // finished batch is removed. Throws host::Failure (Usage) where that cannot be: it was begun with
  // other `settings`, or StagingTaken.
  Staging(const std::filesystem::path& tree, const std::string& settings, bool resume);
  Staging(const Staging&) = delete;
  Staging& operator=(const Staging&) = delete;
  // Leaves what is there.
  ~Staging();

  const std::filesystem::path& tree() const { return tree_; }
  std::filesystem::path path(const std::string& name) const { return folder_ / name; }
  std::filesystem::path journalPath() const { return path("journal"); }
  GrowingFile& journal() { return *journal_; }
  GrownFiles& grown() { return grown_; }
  const JournalState& resumed() const { return resumed_; }

  // A new folder for what a worker writes.
  Outcome<std::filesystem::path> newWorkFolder();

  // The whole file system that it is in, as far as the system can say.
  void sync() const;

  // The export is finished.
  void remove();

 private:
  void prepare(const std::string& settings, bool resume);

  std::filesystem::path tree_;
  std::filesystem::path folder_;
  GrownFiles grown_;
  JournalState resumed_;
  std::unique_ptr<GrowingFile> journal_;
  size_t workFolders_ = 0;
  int lock_ = -1;
};

// Nothing more can be written or read; what is finished is in the staging.
class StagedFailure : public host::Failure {
 public:
  explicit StagedFailure(const std::string& reason) : Failure(host::ExitStatus::Failed, reason) {}
};
// Throws StagedFailure for a trouble.
void CheckStaged(const std::optional<Trouble>& trouble);

// What else is to know of the system; one folder a system implements it. The number of the open
// file, none where another program has it. A file system without locks keeps nobody out.
Outcome<std::optional<int>> LockFile(const std::filesystem::path& path);
void UnlockFile(int file);
// With what could not be written since, where the system tells.
std::optional<Trouble> SyncFileSystem(const std::filesystem::path& path);

}  // namespace tarn::archive

#endif
