#include <system_error>

#include "archive/cluster/AttemptLog.h"
#include "archive/cluster/Cluster.h"
#include "archive/cluster/MergeRun.h"
#include "archive/cluster/NumberList.h"
#include "archive/cluster/Parts.h"
#include "archive/export/Completion.h"
#include "archive/export/ExportReport.h"
#include "archive/export/Staging.h"
#include "console/Json.h"
#include "console/Paths.h"
#include "console/SystemFiles.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;
using host::ExitStatus;
using host::Failure;

class Merging {
 public:
  explicit Merging(const MergeOptions& options)
      : options_(options), plan_(options.plan), tree_(host::PathFromUtf8(options.folder)) {
    if (options.folder.empty()) throw Failure(ExitStatus::Usage, "empty name of the folder");
  }

  ExitStatus run() {
    if (IsMerged(plan_, tree_)) {
      clear();
      Say(options_.folder + ": is put together");
      return statusOfManifest();
    }
    // Nothing is changed before all is known to be there.
    checkMissing();
    const ExitStatus status = putTogether();
    clear();
    return status;
  }

 private:
  void checkMissing() const {
    const std::vector<uint64_t> missing = MissingParts(plan_, tree_);
    // They may be gone because another merge has just ended.
    if (missing.empty() || IsMerged(plan_, tree_)) return;
    throw Failure(ExitStatus::Usage, options_.folder,
                  "these tasks are missing: " + NumberList(missing));
  }

  void checkParts() const {
    const std::vector<DamagedPart> damaged = DamagedParts(plan_, tree_, options_.workers);
    if (damaged.empty()) return;
    std::vector<uint64_t> tasks;
    for (const DamagedPart& part : damaged) {
      Say(part.trouble.reason);
      setAside(part.task);
      tasks.push_back(part.task);
    }
    throw Failure(
        ExitStatus::Usage, options_.folder,
        "the parts of these tasks are damaged, and are to be made again: " + NumberList(tasks));
  }

  void setAside(uint64_t task) const {
    const fs::path part = PartFolder(tree_, task);
    if (SetPartAside(part)) return;
    throw Failure(ExitStatus::Temporary, host::Utf8FromPath(part), "cannot be set aside");
  }

  ExitStatus putTogether() {
    ExportOptions exporting = plan_.facts().options;
    exporting.folder = options_.folder;
    exporting.step = options_.step;
    ExportSources sources;
    for (const PlannedInput& input : plan_.inputs()) sources.all.push_back(input.source);
    // Another merge would move what is being checked.
    Staging staging(tree_, plan_.id(), true);
    if (IsMerged(plan_, tree_)) return statusOfManifest();
    checkParts();
    MergeRun(plan_, exporting, sources, staging).run();
    options_.step();
    if (const std::optional<Trouble> trouble = WriteLog(plan_, tree_)) {
      throw Failure(ExitStatus::Temporary, trouble->reason);
    }
    const ExportCounts counts = CompleteExport(exporting, sources, staging, SayTrouble);
    SayMissedFolder(sources, exporting.filter);
    const ExitStatus status = ReportExport(counts, plan_.facts().otherFiles, options_.folder);
    // An input that cannot be opened was so when it was planned.
    return status == ExitStatus::Done ? status : ExitStatus::Failed;
  }

  // What is left when there is a manifest. An attempt that comes too late finds no folder for its
  // part, or removes it itself.
  void clear() const {
    const fs::path parts = tree_ / kPartsName;
    std::error_code error;
    if (fs::exists(parts, error) && PlanOfLog(tree_).empty()) (void)WriteLog(plan_, tree_);
    options_.step();
    fs::create_directory(tree_ / kStagingName, error);
    fs::rename(parts, tree_ / kStagingName / kPartsName, error);
    options_.step();
    host::RemoveTree(tree_ / kStagingName);
    host::RemoveTree(parts);
    ForgetFailedAttempts(tree_);
  }

  // As an export ends that has such a manifest.
  ExitStatus statusOfManifest() const {
    bool isWhole = true;
    (void)ForEachLine(tree_ / kManifestName, [&](std::string_view text) {
      const auto row = host::JsonOrDiscarded<nlohmann::json>(text);
      if (!row.is_object() || !row.contains("type") || row["type"] != "source") return true;
      const bool hasFailed = row.contains("failed") && row["failed"] != 0;
      if (hasFailed || row.contains("reason") || row.contains("troubles")) isWhole = false;
      return isWhole;
    });
    return isWhole ? ExitStatus::Done : ExitStatus::Failed;
  }

  const MergeOptions& options_;
  const PlanFile plan_;
  const fs::path tree_;
};

}  // namespace

ExitStatus Merge(const MergeOptions& options) {
  try {
    return Merging(options).run();
  } catch (const StagingTaken& failure) {
    throw Failure(ExitStatus::Temporary, failure.what());
  } catch (const Failure& failure) {
    if (failure.status() != ExitStatus::Failed) throw;
    throw Failure(ExitStatus::Temporary, failure.what());
  }
}

}  // namespace tarn::archive
