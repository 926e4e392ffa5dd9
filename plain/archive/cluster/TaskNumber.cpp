#include "archive/cluster/TaskNumber.h"

#include <charconv>
#include <cstdlib>
#include <string>

#include "console/Usage.h"

namespace tarn::archive {

namespace {

using host::ExitStatus;
using host::Failure;

uint64_t WithOffset(uint64_t number, uint64_t offset) {
  if (number <= UINT64_MAX - offset) return number + offset;
  throw Failure(ExitStatus::Usage, "no plan has so many tasks");
}

}  // namespace

uint64_t TaskNumber(const RunTaskOptions& options) {
  if (options.task) return WithOffset(*options.task, options.taskOffset);
  for (const char* const name :
       {"SLURM_ARRAY_TASK_ID", "JOB_COMPLETION_INDEX", "AWS_BATCH_JOB_ARRAY_INDEX"}) {
    const char* const value = std::getenv(name);
    if (value == nullptr) continue;
    const std::string text = value;
    uint64_t number = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
    if (read.ec == std::errc() && read.ptr == text.data() + text.size()) {
      return WithOffset(number, options.taskOffset);
    }
    throw Failure(ExitStatus::Usage, name, host::Named(text) + " is no number of a task");
  }
  throw Failure(ExitStatus::Usage,
                "which task? --task names it, or an engine's SLURM_ARRAY_TASK_ID, "
                "JOB_COMPLETION_INDEX or AWS_BATCH_JOB_ARRAY_INDEX");
}

}  // namespace tarn::archive
