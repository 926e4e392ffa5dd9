// Batch.h - finished entries that are put into their place together: with one sync, and one piece
// of the journal.
#ifndef TARN_ARCHIVE_BATCH_H
#define TARN_ARCHIVE_BATCH_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "archive/export/Export.h"
#include "archive/export/Progress.h"
#include "archive/export/Staging.h"
#include "archive/export/WorkQueue.h"

namespace tarn::archive {

class WorkerFiles;

class Batch {
 public:
  Batch(const ExportOptions& options, WorkQueue& queue, Staging& staging, Progress& progress);

  // All pieces in their order. Everything here throws host::Failure where nothing more can be
  // written.
  void add(Piece& piece);
  // It is large enough to be finished.
  bool isFull() const;
  // What is in it is in its place and in the journal, and it is empty again.
  void finish();

 private:
  void addEntries(Piece& piece);
  void addEntry(Piece& piece, const PlanEntry& entry, FinishedEntry& finished, WorkerFiles& files);
  void endSource(size_t source);
  void placeFolders();

  struct Move {
    std::filesystem::path from;
    std::filesystem::path to;
  };

  const ExportOptions& options_;
  WorkQueue& queue_;
  Staging& staging_;
  Progress& progress_;
  std::set<std::string> fingerprints_;  // of all items so far
  std::unique_ptr<PlanReader> plan_;    // of the source that is being added
  size_t planSource_ = SIZE_MAX;

  std::string rows_;
  std::vector<Move> moves_;
  uint64_t bytes_ = 0;
  uint64_t items_ = 0;
};

}  // namespace tarn::archive

#endif
