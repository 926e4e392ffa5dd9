// AttemptLog.h - when and where the tasks of an export were done: kept beside it, so that the
// export itself is the same whoever made it.
#ifndef TARN_ARCHIVE_ATTEMPTLOG_H
#define TARN_ARCHIVE_ATTEMPTLOG_H

#include <filesystem>
#include <optional>
#include <string>

#include "archive/cluster/Part.h"
#include "archive/cluster/PlanFile.h"

namespace tarn::archive {

// DIR.attempts.jsonl
std::filesystem::path LogOfExport(const std::filesystem::path& tree);

// Of all parts that are there. A trouble says that it cannot be written.
std::optional<Trouble> WriteLog(const PlanFile& plan, const std::filesystem::path& tree);

// The id of the plan that the export there was made by; empty where nothing tells.
std::string PlanOfLog(const std::filesystem::path& tree);

// Whether the export there is put together: it has its manifest. Throws host::Failure (Usage) where
// it is another than that of the plan.
bool IsMerged(const PlanFile& plan, const std::filesystem::path& tree);

}  // namespace tarn::archive

#endif
