// Cluster.h - an export cut into numbered tasks, for machines that share a folder: planned once,
// worked at in any order and more than once, and put together at the end.
#ifndef TARN_ARCHIVE_CLUSTER_H
#define TARN_ARCHIVE_CLUSTER_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "archive/export/Export.h"
#include "console/Failure.h"

namespace tarn::archive {

struct PlanOptions {
  ExportOptions exporting;                  // its folder, batches and steps do not matter
  uint64_t targetCost = uint64_t{1} << 30;  // of a task, in bytes
  uint64_t maxTasks = 1000;
  std::optional<std::string> calibrate;  // a log of attempts, or a manifest that has one beside
  std::string output;
};

// Writes the plan: the same bytes for the same inputs and options. Failed where an input cannot be
// read, and the plan is written even so.
host::ExitStatus Plan(const PlanOptions& options);

struct RunTaskOptions {
  std::string plan;
  std::string folder;
  std::optional<uint64_t> task;  // else an engine's variable tells
  uint64_t taskOffset = 0;       // added to it
  std::optional<std::string> stage;
  size_t workers = 1;
  std::filesystem::path program;       // of the workers; empty: the one that runs
  std::string helpers;                 // the folder of those that make pages; empty: it is found
  std::function<void()> step = [] {};  // called before each change of the folder
};

// Done; Usage (a wrong plan, or an input that has changed: it would be the same again); Broken (the
// machine has not what makes pages, and the plan asks for them); or Temporary. Throws nothing.
host::ExitStatus RunTask(const RunTaskOptions& options);

struct MissingOptions {
  std::string plan;
  std::string folder;
};

// Writes the tasks that are not committed as "3,7-9" to standard output, or nothing.
host::ExitStatus Missing(const MissingOptions& options);

struct MergeOptions {
  std::string plan;
  std::string folder;
  size_t workers = 1;                  // that check files at the same time
  std::function<void()> step = [] {};  // called before each change of the folder
};

// Done or Failed (some items) where the export is whole; Usage where parts are missing or damaged,
// Temporary where the folder cannot be written.
host::ExitStatus Merge(const MergeOptions& options);

}  // namespace tarn::archive

#endif
