// TaskInputs.h - the inputs of a task: looked at whether they are those that were planned, and
// copied where that is wanted.
#ifndef TARN_ARCHIVE_TASKINPUTS_H
#define TARN_ARCHIVE_TASKINPUTS_H

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "archive/cluster/PlanFile.h"
#include "archive/export/Sources.h"
#include "console/PrivateFolder.h"

namespace tarn::archive {

class TaskInputs {
 public:
  // Throws host::Failure (Usage) for a folder to copy to that cannot be used. `beat` is called from
  // time to time and may throw.
  TaskInputs(const PlanFile& plan, const std::optional<std::string>& stage,
             std::function<void()> beat);

  // A source for each range of the task, in that order; ranges are written into the folder. Throws
  // host::Failure: Usage for an input that has changed, Temporary where the system does not give
  // it.
  ExportSources of(const PlannedTask& task, const std::filesystem::path& folder);

 private:
  std::filesystem::path pathOf(const PlannedInput& input) const;
  std::filesystem::path staged(size_t number);
  // With the sum of what was copied.
  Outcome<FileSum> copyMaildir(const std::filesystem::path& from,
                               const std::filesystem::path& to) const;
  Outcome<FileSum> copy(const std::filesystem::path& from, const std::filesystem::path& to) const;
  void check(const std::filesystem::path& path, const PlannedInput& input) const;

  const PlanFile& plan_;
  std::function<void()> beat_;
  std::unique_ptr<host::PrivateFolder> stage_;
  std::map<size_t, std::filesystem::path> staged_;  // by input
};

// That an input is another than the planned one; it would be so again.
[[noreturn]] void ThrowChanged(const PlannedInput& input);

}  // namespace tarn::archive

#endif
