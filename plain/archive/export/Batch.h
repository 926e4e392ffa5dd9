// Batch.h - finished entries that are put into their place together: with one sync, and one piece
// of the journal.
#ifndef TARN_ARCHIVE_BATCH_H
#define TARN_ARCHIVE_BATCH_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <future>
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
  // It is large enough to be put away.
  bool isFull() const;
  // What is in it goes to the disk while the next one is gathered; what was put away before is now
  // in its place and in the journal. It is empty again.
  void putAway();
  // All that was added is in its place and in the journal.
  void finish();

 private:
  void addEntries(Piece& piece);
  void addEntry(Piece& piece, const PlanEntry& entry, FinishedEntry& finished, WorkerFiles& files);
  void endSource(size_t source);

  struct Move {
    std::filesystem::path from;
    std::filesystem::path to;
  };

  // What is put into place together.
  struct Content {
    std::string rows;
    std::vector<Move> moves;
    std::vector<std::filesystem::path> workFolders;  // that nothing needs afterwards
    uint64_t bytes = 0;
    uint64_t items = 0;
  };

  void place();
  void moveFolders(const std::vector<Move>& moves);

  const ExportOptions& options_;
  WorkQueue& queue_;
  Staging& staging_;
  Progress& progress_;
  std::set<std::string> fingerprints_;  // of all items so far
  std::unique_ptr<PlanReader> plan_;    // of the source that is being added
  size_t planSource_ = SIZE_MAX;

  Content gathered_;
  Content leaving_;           // put away, and not in its place
  std::future<void> onDisk_;  // of what is leaving; none where there is nothing
};

}  // namespace tarn::archive

#endif
