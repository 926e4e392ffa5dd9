// WorkQueue.h - what of an export is to be done: its sources in order, the plan of each, and the
// pieces that plans are cut into.
#ifndef TARN_ARCHIVE_WORKQUEUE_H
#define TARN_ARCHIVE_WORKQUEUE_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "archive/export/PlanAttempts.h"
#include "archive/export/Progress.h"
#include "archive/export/SourcePlan.h"
#include "archive/export/Sources.h"
#include "archive/export/Staging.h"
#include "archive/export/WorkerMessages.h"

namespace tarn::archive {

// An entry of a plan that a worker is done with.
struct FinishedEntry {
  std::filesystem::path folder;  // of the worker; empty where it could not finish the entry
  std::string reason;            // then
  std::string fingerprint;
  bool hasFolder = false;
  uint64_t number = 0;  // of its files in that folder
  WorkerParts begins;
  WorkerParts ends;
  uint64_t bytes = 0;
};

// Where in a piece a worker ended, and how.
struct WorkerDeath {
  uint64_t entry = 0;  // that it was at, counted from the first of the piece
  std::string how;
};

enum class PieceKind : uint8_t { Begin, Entries, End };

// What is committed in order.
struct Piece {
  PieceKind kind = PieceKind::Entries;
  size_t source = 0;
  uint64_t offset = 0;  // of the first entry in the plan
  uint64_t first = 0;   // its number
  uint64_t count = 0;
  bool isGiven = false;  // to a worker
  std::vector<FinishedEntry> finished;
  std::vector<std::filesystem::path> workFolders;  // that workers have written of it to
  std::optional<WorkerDeath> death;  // of the last worker, where entries before it are to come

  bool isDone() const { return kind != PieceKind::Entries || finished.size() == count; }
};

// A source on its way.
struct SourceWork {
  bool isSummed = false;   // its sum is there, or it is known that there is none
  bool isPlanned = false;  // its plan likewise
  FileSum sum;
  uint64_t entries = 0;
  std::string plan;    // a short one; any other is in the file of the source
  std::string reason;  // of the source as a whole
  std::string stamp;   // before it was read
  bool isStarted = false;
  PlanAttempts attempts;  // at its plan
  PlanAttempts attemptsOfSum;

  bool isReady() const { return isSummed && isPlanned; }
};

// What a worker is to find out of a source: Sum, Plan, or SumAndPlan.
struct Preparation {
  size_t source = 0;
  WorkerTask task = WorkerTask::SumAndPlan;
};

class WorkQueue {
 public:
  WorkQueue(ExportSources& sources, Staging& staging, size_t workers, Progress& progress);

  // Nothing more is to be done, and all is committed.
  bool isDone() const { return nextToCut_ == works_.size() && pieces_.empty(); }

  // Cuts the plans that are ready, as far as workers can use them. Throws host::Failure where a
  // source is another than the one that was begun before.
  void cutReadySources();

  // The same without cutting, for who wants the plans alone: the next source whose plan is ready.
  std::optional<size_t> passReadySource();

  // What a worker is to do: entries first, in their order, then the plan of another source. A
  // source whose bytes are in memory is planned by one worker while another one adds it up. Any
  // other is added up first: the plan, which goes through it to and fro, finds it in memory then.
  Piece* nextPiece();
  std::optional<Preparation> nextPreparation();

  // The first piece that is not committed, or null.
  Piece* front() { return pieces_.empty() ? nullptr : pieces_.front().get(); }
  void pop() { pieces_.pop_front(); }

  SourceWork& work(size_t source) { return works_[source]; }
  ExportSource& source(size_t source) { return sources_.all[source]; }
  std::filesystem::path planPath(size_t source) const;
  // From that offset on. Throws host::Failure where it cannot be read.
  std::unique_ptr<PlanReader> openPlan(size_t source, uint64_t offset) const;
  // It is in its file, however short. Throws host::Failure where it cannot be written.
  void keepPlan(size_t source);
  // Nothing of it is wanted any more.
  void dropPlan(size_t source);

 private:
  bool isForTwo(size_t source) const;
  void cutSource(size_t source);
  void cutEntries(size_t source, uint64_t skipped);
  void add(PieceKind kind, size_t source);

  ExportSources& sources_;
  Staging& staging_;
  const size_t workers_;
  Progress& progress_;
  std::vector<SourceWork> works_;              // of each source
  std::deque<std::unique_ptr<Piece>> pieces_;  // cut and not committed
  size_t nextToPlan_ = 0;
  std::optional<size_t> nextToSum_;  // one that is planned by itself
  size_t nextToCut_ = 0;
};

}  // namespace tarn::archive

#endif
