#include <algorithm>
#include <new>
#include <system_error>

#include "archive/cluster/AttemptLog.h"
#include "archive/cluster/Cluster.h"
#include "archive/cluster/Machine.h"
#include "archive/cluster/PartWriter.h"
#include "archive/cluster/PlanFile.h"
#include "archive/cluster/TaskInputs.h"
#include "archive/cluster/TaskNumber.h"
#include "archive/export/ExportReport.h"
#include "archive/export/Progress.h"
#include "archive/export/SourceSum.h"
#include "archive/export/Staging.h"
#include "archive/export/WorkQueue.h"
#include "archive/export/WorkerTeam.h"
#include "console/Paths.h"
#include "console/RemovedAtEnd.h"
#include "console/SystemFiles.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;
using host::ExitStatus;
using host::Failure;

void StopIfAsked() {
  if (StopSignals::isAsked()) throw Failure(ExitStatus::Temporary, "was asked to end");
}

// A part of this plan that is there already.
bool IsCommitted(const PlanFile& plan, const fs::path& tree, uint64_t task) {
  if (IsMerged(plan, tree)) return true;
  const Outcome<PartFacts> part = PartIn(PartFolder(tree, task));
  if (!part) return false;
  if (part->plan == plan.id()) return true;
  throw Failure(ExitStatus::Usage, host::Utf8FromPath(tree), "holds parts of another plan");
}

// New, empty, of this plan's tasks, or put together: what else is there would be mixed up with it.
void CheckFolder(const fs::path& tree) {
  std::error_code error;
  bool isEmpty = true;
  for (const fs::directory_entry& entry : fs::directory_iterator(tree, error)) {
    const fs::path name = entry.path().filename();
    if (name == kPartsName || name == kStagingName || name == kManifestName) return;
    isEmpty = false;
  }
  if (isEmpty) return;
  throw Failure(ExitStatus::Usage, host::Utf8FromPath(tree),
                "is neither empty nor the folder of an export by tasks");
}

// The merge was done without this attempt, which was late: its part is not wanted any more.
void RemoveLatePart(const PlanFile& plan, const fs::path& tree, uint64_t task) {
  if (!IsMerged(plan, tree)) return;
  host::RemoveTree(PartFolder(tree, task));
  std::error_code ignored;
  fs::remove(tree / kPartsName, ignored);
}

// The workers of a task, and what comes of it.
class TaskRun {
 public:
  TaskRun(const RunTaskOptions& options, const PlanFile& plan, uint64_t number)
      : options_(options), plan_(plan), task_(plan.task(number)), exporting_(plan.facts().options) {
    exporting_.workers = std::max<size_t>(options.workers, 1);
    exporting_.program = options.program;
    exporting_.choices.pages.helpers = options.helpers;
  }

  // Throws host::Failure (Broken) where the machine has not what the plan's forms need.
  void prepare() {
    if (exporting_.choices.forms.contains(ExportForm::Pdf)) PreparePages(exporting_);
  }

  void run(PartWriter& part) {
    TaskInputs inputs(plan_, options_.stage, StopIfAsked);
    Staging staging(part.folder(), "", false);
    ExportSources sources = inputs.of(task_, staging.path(""));
    Progress progress(false);
    WorkQueue queue(sources, staging, exporting_.workers, progress);
    WorkerTeam team(exporting_, queue, staging);
    try {
      while (!queue.isDone()) work(queue, team, part);
    } catch (...) {
      // Nothing that they may still write is of use.
      team.stop();
      throw;
    }
  }

  size_t ranges() const { return task_.ranges.size(); }

 private:
  void work(WorkQueue& queue, WorkerTeam& team, PartWriter& part) {
    StopIfAsked();
    queue.cutReadySources();
    team.work();
    for (Piece* piece = queue.front(); piece != nullptr && piece->isDone() && !team.isAt(*piece);
         piece = queue.front()) {
      take(*piece, queue, part);
      queue.pop();
    }
  }

  void take(const Piece& piece, WorkQueue& queue, PartWriter& part) {
    const PlannedRange& range = task_.ranges[piece.source];
    const PlannedInput& input = plan_.inputs()[range.input];
    const FoundSource& found = queue.source(piece.source).found;
    const SourceWork& work = queue.work(piece.source);
    if (piece.kind == PieceKind::Begin) {
      checkPlan(range, input, queue.source(piece.source), work);
      // The part has it.
      queue.keepPlan(piece.source);
    } else if (piece.kind == PieceKind::End) {
      if (work.stamp != StampOfSource(found.path, found.kind)) ThrowChanged(input);
    }
    for (const FinishedEntry& entry : piece.finished) {
      checkLost(entry);
      part.add(piece.source, entry);
    }
  }

  static void checkPlan(const PlannedRange& range, const PlannedInput& input,
                        const ExportSource& source, const SourceWork& work) {
    if (source.trouble) throwUnread(input, source, source.trouble->reason);
    // Of a range there is none; it was looked after before.
    if (!range.range && work.sum != input.sum) {
      if (work.sum.sha256.empty()) throwUnread(input, source, work.reason);
      ThrowChanged(input);
    }
    if (work.entries == range.entries) return;
    throwUnread(input, source, "not all of it could be read this time");
  }

  // An input that was read when it was planned has changed, or the system did not give it.
  [[noreturn]] static void throwUnread(const PlannedInput& input, const ExportSource& source,
                                       const std::string& reason) {
    const Outcome<FileSum> sum = SumOfSource(source.found.path, source.found.kind, StopIfAsked);
    if (sum && *sum != input.sum) ThrowChanged(input);
    throw Failure(ExitStatus::Temporary, input.source.found.name, reason);
  }

  // A worker that somebody has killed, as a machine without memory does, says nothing of the item.
  static void checkLost(const FinishedEntry& entry) {
    for (const char* const signal : {"was killed by signal 9", "was killed by signal 15"}) {
      if (entry.folder.empty() && entry.reason.ends_with(signal)) {
        throw Failure(ExitStatus::Temporary, entry.reason);
      }
    }
  }

  const RunTaskOptions& options_;
  const PlanFile& plan_;
  const PlannedTask task_;
  ExportOptions exporting_;
};

// What the system did not give may be there the next time.
ExitStatus StatusOf(const std::exception& error) {
  const auto* const failure = dynamic_cast<const Failure*>(&error);
  const bool isForGood = failure != nullptr && failure->status() == ExitStatus::Usage &&
                         dynamic_cast<const StagingTaken*>(&error) == nullptr;
  return isForGood ? ExitStatus::Usage : ExitStatus::Temporary;
}

std::string ReasonOf(const std::exception& error) {
  const bool isMemory = dynamic_cast<const std::bad_alloc*>(&error) != nullptr;
  return isMemory ? "out of memory" : error.what();
}

ExitStatus Told(const std::string& reason, ExitStatus status) {
  Say(reason);
  return status;
}

ExitStatus RunOnce(const RunTaskOptions& options) {
  // Before those of this one, which are to hold.
  host::RemovedAtEnd::watch();
  const StopSignals signals;
  const PlanFile plan(options.plan);
  const uint64_t number = TaskNumber(options);
  if (number >= plan.tasks()) {
    throw Failure(ExitStatus::Usage, options.plan,
                  "has " + std::to_string(plan.tasks()) + (plan.tasks() == 1 ? " task" : " tasks") +
                      ", from 0, and no task " + std::to_string(number));
  }
  if (options.folder.empty()) throw Failure(ExitStatus::Usage, "empty name of the folder");
  const fs::path tree = host::PathFromUtf8(options.folder);
  if (IsCommitted(plan, tree, number)) return ExitStatus::Done;
  CheckFolder(tree);
  TaskRun run(options, plan, number);
  try {
    run.prepare();
  } catch (const Failure& failure) {
    return Told(failure.what(), failure.status());
  }
  PartWriter part(tree, plan.id(), number, options.step);
  try {
    run.run(part);
    part.commit(run.ranges(), StopIfAsked);
  } catch (const std::exception& error) {
    // Of one that comes after the merge nobody asks.
    if (KindOfExportFolder(tree) != ExportFolder::Finished) {
      KeepFailedAttempt(tree, part.asFailed(static_cast<int>(StatusOf(error)), ReasonOf(error)));
    }
    throw;
  }
  RemoveLatePart(plan, tree, number);
  return ExitStatus::Done;
}

}  // namespace

ExitStatus RunTask(const RunTaskOptions& options) {
  try {
    return RunOnce(options);
  } catch (const std::exception& error) {
    return Told(ReasonOf(error), StatusOf(error));
  }
}

}  // namespace tarn::archive
