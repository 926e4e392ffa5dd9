// TaskNumber.h - which task of a plan is to be run.
#ifndef TARN_ARCHIVE_TASKNUMBER_H
#define TARN_ARCHIVE_TASKNUMBER_H

#include <cstdint>

#include "archive/cluster/Cluster.h"

namespace tarn::archive {

// The option's, or what an engine has put into SLURM_ARRAY_TASK_ID, JOB_COMPLETION_INDEX or
// AWS_BATCH_JOB_ARRAY_INDEX; the offset is added. Throws host::Failure (Usage) where there is none.
uint64_t TaskNumber(const RunTaskOptions& options);

}  // namespace tarn::archive

#endif
