// MergeRun.h - parts put into their places, in the order of the inputs and their items, as an
// export does with what its workers make.
#ifndef TARN_ARCHIVE_MERGERUN_H
#define TARN_ARCHIVE_MERGERUN_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <vector>

#include "archive/cluster/PlanFile.h"
#include "archive/export/Batch.h"
#include "archive/export/Export.h"
#include "archive/export/Progress.h"
#include "archive/export/Sources.h"
#include "archive/export/Staging.h"
#include "archive/export/WorkQueue.h"

namespace tarn::archive {

class MergeRun {
 public:
  // Throws host::Failure (Usage) for a plan whose tasks do not have every entry of the inputs once.
  MergeRun(const PlanFile& plan, const ExportOptions& options, ExportSources& sources,
           Staging& staging);

  // To the end; goes on where a run before was ended. Throws host::Failure where nothing more can
  // be written.
  void run();

 private:
  // Where the entries of an input are, from that one on.
  struct Place {
    uint64_t first = 0;
    uint64_t entries = 0;
    uint64_t task = 0;
    size_t range = 0;  // of the task
  };

  void findPlaces();
  void prepare(size_t input);
  void fill(Piece& piece);
  const FinishedEntry& entryOf(size_t input, uint64_t number);

  const PlanFile& plan_;
  Staging& staging_;
  Progress progress_;
  WorkQueue queue_;
  Batch batch_;
  std::vector<std::vector<Place>> places_;  // of each input

  // The entries that were read last.
  const Place* loaded_ = nullptr;
  std::vector<FinishedEntry> entries_;
};

}  // namespace tarn::archive

#endif
