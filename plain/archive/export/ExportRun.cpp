#include "archive/export/ExportRun.h"

#include <algorithm>

#include "archive/export/Batch.h"
#include "archive/export/Progress.h"
#include "archive/export/WorkQueue.h"
#include "archive/export/WorkerTeam.h"
#include "console/StandardStreams.h"

namespace tarn::archive {
namespace {

// What is done at the front of the queue.
void Commit(WorkQueue& queue, WorkerTeam& team, Batch& batch) {
  for (Piece* piece = queue.front(); piece != nullptr && piece->isDone(); piece = queue.front()) {
    if (team.isAt(*piece)) return;
    batch.add(*piece);
    queue.pop();
    if (batch.isFull()) batch.putAway();
  }
}

}  // namespace

void RunExport(const ExportOptions& options, ExportSources& sources, Staging& staging) {
  Progress progress(host::StandardErrorIsTerminal());
  WorkQueue queue(sources, staging, std::max<size_t>(options.workers, 1), progress);
  WorkerTeam team(options, queue, staging);
  Batch batch(options, queue, staging, progress);
  while (!queue.isDone()) {
    queue.cutReadySources();
    team.work();
    Commit(queue, team, batch);
  }
  batch.finish();
}

}  // namespace tarn::archive
