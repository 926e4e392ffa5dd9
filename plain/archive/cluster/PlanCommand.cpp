#include <algorithm>
#include <system_error>

#include "archive/cluster/Calibration.h"
#include "archive/cluster/Cluster.h"
#include "archive/cluster/InputPrint.h"
#include "archive/cluster/PlanFile.h"
#include "archive/cluster/TaskCuts.h"
#include "archive/export/ExportReport.h"
#include "archive/export/Progress.h"
#include "archive/export/SourceSum.h"
#include "archive/export/Staging.h"
#include "archive/export/WorkQueue.h"
#include "archive/export/WorkerTeam.h"
#include "console/Paths.h"
#include "console/PrivateFolder.h"
#include "console/StandardStreams.h"
#include "console/SystemErrors.h"
#include "console/SystemFiles.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;
using host::ExitStatus;
using host::Failure;

// All of the source could be planned.
bool IsUntouched(const PlanLimits& limits) {
  return limits.entries == UINT64_MAX && limits.passedOver.empty();
}

class Planning {
 public:
  Planning(const PlanOptions& options, uint64_t messageCost)
      : options_(options),
        limits_{options.targetCost, options.maxTasks, messageCost},
        temporary_(options.exporting.temporary),
        search_(options.exporting.paths, temporary_),
        sources_(FindSources(search_, temporary_.path())),
        staging_(temporary_.path() / "plan", "", false),
        progress_(host::StandardErrorIsTerminal()),
        queue_(sources_, staging_, std::max<size_t>(options.exporting.workers, 1), progress_) {}

  ExitStatus run() {
    checkSources();
    if (HasNothingToOpen(sources_)) return TellUnopened(sources_);
    WorkerTeam team(options_.exporting, queue_, staging_);
    while (!queue_.isDone()) {
      team.work();
      while (const std::optional<size_t> source = queue_.passReadySource()) take(*source);
    }
    const std::vector<PlannedTask> tasks = CutTasks(costs_, limits_);
    write(PlanText(facts(), inputs_, tasks));
    SayMissedFolder(sources_, options_.exporting.filter);
    tell(tasks);
    return ExitStatus::Done;
  }

 private:
  // What is wrong with the command line is said before any work is done.
  void checkSources() const {
    for (const ExportSource& source : sources_.all) {
      const FoundSource& found = source.found;
      if (source.trouble && found.isNamed && source.trouble->kind == TroubleKind::Missing) {
        throw Failure(ExitStatus::Usage, found.name, source.trouble->reason);
      }
      if (!source.trouble && found.path != fs::path(found.name)) {
        throw Failure(ExitStatus::Usage, found.name,
                      "is a stream, which other machines cannot read");
      }
    }
  }

  // A source whose plan is ready.
  void take(size_t source) {
    SourceWork& work = queue_.work(source);
    PlannedInput input;
    input.source = sources_.all[source];
    input.sum = work.sum;
    input.reason = work.reason;
    input.entries = input.source.trouble ? 0 : work.entries;
    const FoundSource& found = input.source.found;
    if (input.source.trouble) {
      if (!IsOtherFile(found, *input.source.trouble)) {
        SayTrouble(input.source.name, input.source.trouble->reason);
      }
    } else {
      if (work.stamp != StampOfSource(found.path, found.kind)) {
        throw Failure(ExitStatus::Failed, found.name, "has changed while it was planned");
      }
      if (work.sum.bytes > kLargestSummed) {
        if (found.kind == SourceKind::Store) {
          input.print = printOf(found);
        } else {
          input.stamp = work.stamp;
        }
      }
      if (input.entries != 0) {
        const bool isOne = found.kind == SourceKind::Mail || found.kind == SourceKind::Compound ||
                           found.kind == SourceKind::Tnef;
        // Ranges of others could not be told from those of an input that has changed.
        const bool mayBeCut =
            !isOne && !work.sum.sha256.empty() && IsUntouched(work.attempts.limits());
        costs_.push_back(CostOfInput(source, {queue_.planPath(source), std::move(work.plan)},
                                     work.sum.bytes, mayBeCut, limits_.messageCost));
      }
    }
    inputs_.push_back(std::move(input));
  }

  static std::string printOf(const FoundSource& found) {
    const Outcome<std::string> print = PrintOfStore(found.path);
    if (!print) throw Failure(ExitStatus::Failed, print.trouble().reason);
    return *print;
  }

  PlanFacts facts() const {
    PlanFacts facts;
    facts.options = options_.exporting;
    facts.otherFiles = sources_.otherFiles;
    facts.messageCost = limits_.messageCost;
    facts.targetCost = limits_.targetCost;
    const bool hasRelative = std::any_of(
        sources_.all.begin(), sources_.all.end(),
        [](const ExportSource& source) { return fs::path(source.found.name).is_relative(); });
    if (hasRelative) facts.directory = fs::current_path().string();
    return facts;
  }

  // Whole or not at all.
  void write(const std::string& text) const {
    const fs::path path = host::PathFromUtf8(options_.output);
    const fs::path draft = path.string() + ".new";
    host::RemoveFile(draft);
    host::WritableFile file;
    std::error_code error = file.create(draft);
    if (!error) error = file.writeAndClose(text);
    if (!error) error = host::MoveIntoPlace(draft, path);
    if (!error) return;
    host::RemoveFile(draft);
    throw Failure(ExitStatus::Usage, options_.output, host::ErrorText(error));
  }

  void tell(const std::vector<PlannedTask>& tasks) const {
    uint64_t messages = 0;
    uint64_t bytes = 0;
    for (const PlannedTask& task : tasks) {
      messages += task.messages;
      bytes += task.bytes;
    }
    Say(std::to_string(tasks.size()) + (tasks.size() == 1 ? " task" : " tasks") + " for " +
        std::to_string(messages) + " items of " + std::to_string(bytes / 1'000'000) +
        " MB; a message costs as much as " + std::to_string(limits_.messageCost) + " bytes");
  }

  const PlanOptions& options_;
  const CutLimits limits_;
  host::PrivateFolder temporary_;
  SourceSearch search_;
  ExportSources sources_;
  Staging staging_;
  Progress progress_;
  WorkQueue queue_;
  std::vector<PlannedInput> inputs_;
  std::vector<InputCost> costs_;
};

}  // namespace

ExitStatus Plan(const PlanOptions& options) {
  const uint64_t messageCost =
      options.calibrate ? CalibratedCost(*options.calibrate) : kUsualMessageCost;
  return Planning(options, messageCost).run();
}

}  // namespace tarn::archive
