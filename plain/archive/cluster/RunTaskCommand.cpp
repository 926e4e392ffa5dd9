#include <algorithm>
#include <memory>
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

// What cannot be made now may be made later.
std::unique_ptr<Staging> OpenStaging(const fs::path& folder) {
  try {
    return std::make_unique<Staging>(folder, "", false);
  } catch (const Failure& failure) {
    throw Failure(ExitStatus::Temporary, failure.what());
  }
}

// The workers of a task, and what comes of it.
class TaskRun {
 public:
  TaskRun(const RunTaskOptions& options, const PlanFile& plan, uint64_t number)
      : options_(options), plan_(plan), task_(plan.task(number)), exporting_(plan.facts().options) {
    exporting_.workers = std::max<size_t>(options.workers, 1);
    exporting_.program = options.program;
  }

  void run(PartWriter& part) {
    if (exporting_.choices.forms.contains(ExportForm::Pdf)) PreparePages(exporting_);
    TaskInputs inputs(plan_, options_.stage, StopIfAsked);
    const std::unique_ptr<Staging> opened = OpenStaging(part.folder());
    Staging& staging = *opened;
    ExportSources sources = inputs.of(task_, staging.path(""));
    Progress progress(false);
    WorkQueue queue(sources, staging, exporting_.workers, progress);
    WorkerTeam team(exporting_, queue, staging);
    while (!queue.isDone()) {
      StopIfAsked();
      queue.cutReadySources();
      team.work();
      for (Piece* piece = queue.front(); piece != nullptr && piece->isDone() && !team.isAt(*piece);
           piece = queue.front()) {
        take(*piece, queue, part);
        queue.pop();
      }
    }
    StopIfAsked();
  }

  size_t ranges() const { return task_.ranges.size(); }

 private:
  void take(const Piece& piece, WorkQueue& queue, PartWriter& part) {
    const PlannedRange& range = task_.ranges[piece.source];
    const PlannedInput& input = plan_.inputs()[range.input];
    const FoundSource& found = queue.source(piece.source).found;
    const SourceWork& work = queue.work(piece.source);
    if (piece.kind == PieceKind::Begin) {
      checkPlan(range, input, work, queue.source(piece.source).trouble);
    } else if (piece.kind == PieceKind::End) {
      if (work.stamp != StampOfSource(found.path, found.kind)) ThrowChanged(input);
    }
    for (const FinishedEntry& entry : piece.finished) {
      checkLost(entry);
      part.add(piece.source, entry);
    }
  }

  static void checkPlan(const PlannedRange& range, const PlannedInput& input,
                        const SourceWork& work, const std::optional<Trouble>& trouble) {
    if (trouble && trouble->kind == TroubleKind::Damaged) ThrowChanged(input);
    if (trouble) {
      throw Failure(ExitStatus::Temporary, input.source.found.name, trouble->reason);
    }
    if (!range.range && work.sum != input.sum) ThrowChanged(input);
    if (work.entries != range.entries) {
      throw Failure(ExitStatus::Temporary, input.source.found.name,
                    "not all of it could be read this time");
    }
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

ExitStatus RunOnce(const RunTaskOptions& options) {
  StopSignals signals;
  const PlanFile plan(options.plan);
  const uint64_t number = TaskNumber(options);
  if (number >= plan.tasks()) {
    throw Failure(ExitStatus::Usage, options.plan,
                  "has " + std::to_string(plan.tasks()) + " tasks, from 0, and no task " +
                      std::to_string(number));
  }
  if (options.folder.empty()) throw Failure(ExitStatus::Usage, "empty name of the folder");
  const fs::path tree = host::PathFromUtf8(options.folder);
  if (IsCommitted(plan, tree, number)) return ExitStatus::Done;
  PartWriter part(tree, plan.id(), number, options.step);
  signals.take();
  TaskRun run(options, plan, number);
  run.run(part);
  part.commit(run.ranges());
  return ExitStatus::Done;
}

ExitStatus Told(const std::string& reason, ExitStatus status) {
  Say(reason);
  return status == ExitStatus::Usage ? ExitStatus::Usage : ExitStatus::Temporary;
}

}  // namespace

ExitStatus RunTask(const RunTaskOptions& options) {
  try {
    return RunOnce(options);
  } catch (const Failure& failure) {
    return Told(failure.what(), failure.status());
  } catch (const std::bad_alloc&) {
    return Told("out of memory", ExitStatus::Temporary);
  } catch (const std::exception& error) {
    return Told(error.what(), ExitStatus::Temporary);
  }
}

}  // namespace tarn::archive
