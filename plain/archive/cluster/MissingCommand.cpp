#include "archive/cluster/AttemptLog.h"
#include "archive/cluster/Cluster.h"
#include "archive/cluster/NumberList.h"
#include "archive/cluster/Parts.h"
#include "archive/cluster/PlanFile.h"
#include "console/Paths.h"
#include "console/StandardStreams.h"

namespace tarn::archive {

host::ExitStatus Missing(const MissingOptions& options) {
  const PlanFile plan(options.plan);
  const std::filesystem::path tree = host::PathFromUtf8(options.folder);
  const std::string list = IsMerged(plan, tree) ? "" : NumberList(MissingParts(plan, tree));
  if (list.empty()) return host::ExitStatus::Done;
  const std::error_code error = host::WriteStandardOutput(list + "\n");
  if (error) throw host::Failure(host::ExitStatus::Failed, "standard output", error.message());
  return host::ExitStatus::Done;
}

}  // namespace tarn::archive
