#include "archive/commands/ClusterArguments.h"

#include <algorithm>
#include <cstdint>
#include <string>

#include "archive/commands/ExportArguments.h"
#include "console/Usage.h"

namespace tarn::archive {
namespace {

void AddFolders(CLI::App& command, std::string& plan, std::string& folder, bool isOption) {
  command.add_option("PLAN", plan, "The file that plan has written")->required()->type_name("");
  CLI::Option* const option =
      isOption ? command.add_option("-o,--output", folder,
                                    "Folder of the export, the same for all tasks")
               : command.add_option("DIR", folder, "Folder of the export");
  option->required()->type_name(isOption ? "DIR" : "");
}

void AddJobs(CLI::App& command, size_t& workers, const std::string& help) {
  command.add_option("-j,--jobs", workers, help)
      ->check(CLI::Range(1, 64).description(""))
      ->type_name("N");
}

bool IsDigit(char sign) { return sign >= '0' && sign <= '9'; }

// The parser makes the largest number of -1.
CLI::Validator NumberFromZero() {
  return CLI::Validator(
      [](std::string& text) {
        const bool isNumber = !text.empty() && std::all_of(text.begin(), text.end(), IsDigit);
        return isNumber ? "" : host::Named(text) + " is no number from 0";
      },
      "");
}

// Puts the number of bytes in place of the size.
bool MakeBytes(std::string& size) {
  if (size.empty() || !IsDigit(size.front())) return false;
  try {
    return CLI::AsSizeValue(false)(size).empty() && size != "0";
  } catch (const CLI::ValidationError&) {
    return false;  // it has more bytes than 64 bits count
  }
}

CLI::Validator BytesOfSize() {
  return CLI::Validator(
      [](std::string& text) {
        const std::string given = text;
        return MakeBytes(text) ? "" : host::Named(given) + " is no size as 300M or 16G";
      },
      "");
}

void AddPlan(CLI::App& app, PlanOptions& options, std::function<host::ExitStatus()>& chosen) {
  CLI::App* const plan =
      app.add_subcommand("plan", "Cut an export into numbered tasks for many machines");
  plan->add_option("PATH", options.exporting.paths,
                   "Stores, MSG files, mails, mboxes, Maildirs, or folders to search, where all "
                   "machines find them")
      ->required()
      ->type_name("");
  plan->add_option("-o,--output", options.output, "File for the plan")
      ->required()
      ->type_name("PLAN");
  plan->add_option("--target-cost", options.targetCost,
                   "Cost of a task: bytes of its messages, and what each costs by itself; 1G "
                   "unless said otherwise")
      ->transform(BytesOfSize())
      ->type_name("BYTES");
  plan->add_option("--max-tasks", options.maxTasks,
                   "At most so many tasks, which are larger then; 1000 unless said otherwise")
      ->check(CLI::Range(1, 10'000'000).description(""))
      ->type_name("N");
  plan->add_option("--calibrate", options.calibrate,
                   "What a message costs by itself is taken from the times of an export before: "
                   "its manifest, or DIR.attempts.jsonl")
      ->type_name("MANIFEST");
  AddExportChoices(*plan, options.exporting);
  AddJobs(*plan, options.exporting.workers, "Processes that read at the same time");
  AddWorkerLimits(*plan, options.exporting);
  AddTemporary(*plan, options.exporting.temporary);
  plan->callback([&options, &chosen, plan] {
    CombineExportChoices(*plan, options.exporting);
    chosen = [&options] { return Plan(options); };
  });
}

void AddRunTask(CLI::App& app, RunTaskOptions& options, std::function<host::ExitStatus()>& chosen) {
  CLI::App* const run = app.add_subcommand("run-task", "Do one task of a plan");
  AddFolders(*run, options.plan, options.folder, true);
  run->add_option("--task", options.task,
                  "Number of the task, from 0; else SLURM_ARRAY_TASK_ID, JOB_COMPLETION_INDEX or "
                  "AWS_BATCH_JOB_ARRAY_INDEX tells it")
      ->check(NumberFromZero())
      ->type_name("K");
  run->add_option("--task-offset", options.taskOffset,
                  "Added to the number, for arrays larger than an engine allows")
      ->check(NumberFromZero())
      ->type_name("N");
  run->add_option("--stage", options.stage, "Copy each input into this directory first")
      ->type_name("DIR");
  AddJobs(*run, options.workers, "Processes that read at the same time");
  run->callback([&options, &chosen] { chosen = [&options] { return RunTask(options); }; });
}

void AddMissing(CLI::App& app, MissingOptions& options, std::function<host::ExitStatus()>& chosen) {
  CLI::App* const missing =
      app.add_subcommand("missing", "Tell the tasks of a plan that are not done, as 3,7-9");
  AddFolders(*missing, options.plan, options.folder, false);
  missing->callback([&options, &chosen] { chosen = [&options] { return Missing(options); }; });
}

void AddMerge(CLI::App& app, MergeOptions& options, std::function<host::ExitStatus()>& chosen) {
  CLI::App* const merge =
      app.add_subcommand("merge", "Put the tasks of a plan together: an export as of one machine");
  AddFolders(*merge, options.plan, options.folder, false);
  AddJobs(*merge, options.workers, "Files that are checked at the same time");
  merge->callback([&options, &chosen] { chosen = [&options] { return Merge(options); }; });
}

}  // namespace

void AddCluster(CLI::App& app, ClusterCommands& commands,
                std::function<host::ExitStatus()>& chosen) {
  AddPlan(app, commands.planning, chosen);
  AddRunTask(app, commands.task, chosen);
  AddMissing(app, commands.missing, chosen);
  AddMerge(app, commands.merge, chosen);
}

}  // namespace tarn::archive
