// AttemptLog.h - when and where the tasks of an export were done: kept beside it, so that the
// export itself is the same whoever made it.
#ifndef TARN_ARCHIVE_ATTEMPTLOG_H
#define TARN_ARCHIVE_ATTEMPTLOG_H

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "archive/cluster/Part.h"
#include "archive/cluster/PlanFile.h"

namespace tarn::archive {

// DIR.attempts.jsonl
std::filesystem::path LogOfExport(const std::filesystem::path& tree);

// An attempt that has ended without a part.
struct FailedAttempt {
  std::string plan;  // its id
  uint64_t task = 0;
  std::string attempt;  // which of several
  std::string host;
  std::string begun;
  double seconds = 0;
  int status = 0;  // that the program ends with
  std::string reason;
};

// Keeps it beside the export, in a file of its own, until the log is written. Nothing where the
// system does not: the attempt has failed as it is.
void KeepFailedAttempt(const std::filesystem::path& tree, const FailedAttempt& attempt);

// Removes what was kept, which the log tells.
void ForgetFailedAttempts(const std::filesystem::path& tree);

// Of all parts that are there, and the attempts that have failed before. A trouble says that it
// cannot be written.
std::optional<Trouble> WriteLog(const PlanFile& plan, const std::filesystem::path& tree);

// The id of the plan that the export there was made by; empty where nothing tells.
std::string PlanOfLog(const std::filesystem::path& tree);

// Whether the export there is put together: it has its manifest. Throws host::Failure (Usage) where
// it is another than that of the plan.
bool IsMerged(const PlanFile& plan, const std::filesystem::path& tree);

}  // namespace tarn::archive

#endif
