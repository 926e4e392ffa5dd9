// ExportRun.h - the sources of an export gone through by workers, and what they make put into its
// place batch by batch, in the order of the sources and their items.
#ifndef TARN_ARCHIVE_EXPORTRUN_H
#define TARN_ARCHIVE_EXPORTRUN_H

#include <chrono>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "archive/export/Export.h"
#include "archive/export/Progress.h"
#include "archive/export/Sources.h"
#include "archive/export/Staging.h"
#include "archive/export/WorkerMessages.h"
#include "archive/export/WorkerProcess.h"

namespace tarn::archive {

class ExportRun {
 public:
  ExportRun(const ExportOptions& options, ExportSources& sources, Staging& staging);
  ExportRun(const ExportRun&) = delete;
  ExportRun& operator=(const ExportRun&) = delete;
  ~ExportRun();

  // To the end. Throws host::Failure where nothing more can be written.
  void run();

 private:
  using Clock = std::chrono::steady_clock;

  // An entry of a plan that a worker is done with.
  struct Finished {
    std::filesystem::path folder;  // of the worker; empty where it could not finish the entry
    std::string reason;            // then
    std::string fingerprint;
    bool hasFolder = false;
    uint64_t number = 0;      // of its files in that folder
    uint64_t begins[3] = {};  // of its parts of rows, mails and texts
    uint64_t ends[3] = {};
    uint64_t bytes = 0;
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
    std::vector<Finished> finished;

    bool isDone() const { return kind != PieceKind::Entries || finished.size() == count; }
  };

  struct Planned {
    enum class State : uint8_t { Waiting, Planning, Ready, Cut, Done } state = State::Waiting;
    FileSum sum;
    uint64_t entries = 0;
    std::string reason;  // of the source as a whole
    std::string stamp;   // before it was read
    int attempts = 0;
    uint64_t mostEntries = UINT64_MAX;
    std::string reasonAfter;
  };

  struct Slot {
    std::unique_ptr<WorkerProcess> process;
    Piece* piece = nullptr;
    bool isPlanning = false;
    size_t source = 0;
    std::filesystem::path folder;
    uint64_t ends[3] = {};
    uint64_t beat = 0;
    Clock::time_point since;

    bool isIdle() const { return piece == nullptr && !isPlanning; }
  };

  void giveWork(Slot& slot);
  void startPlanning(Slot& slot, size_t source);
  void startPiece(Slot& slot, Piece& piece);
  void ask(Slot& slot, const WorkerRequest& request);
  WorkerRequest requestFor(size_t source) const;
  void cutReadySources();
  void cutSource(size_t source);

  void listen();
  void hear(Slot& slot);
  void take(Slot& slot, const WorkerReply& reply);
  void lose(Slot& slot, const std::string& how);
  void lookForHangs();

  void commit();
  void commitEntries(Piece& piece);
  void commitEntry(Piece& piece, const PlanEntry& entry, Finished& finished);
  std::string rowsOf(const Finished& finished, bool isCopy);
  void endSource(size_t source);
  void finishBatch();
  void check(const std::optional<Trouble>& trouble) const;
  std::filesystem::path planPath(size_t source) const;
  bool isDone() const;

  struct Move {
    std::filesystem::path from;
    std::filesystem::path to;
  };

  const ExportOptions& options_;
  ExportSources& sources_;
  Staging& staging_;
  Progress progress_;
  std::vector<Planned> planned_;
  std::vector<Slot> slots_;
  std::deque<std::unique_ptr<Piece>> pieces_;  // cut and not committed
  size_t nextToPlan_ = 0;
  size_t nextToCut_ = 0;
  std::set<std::string> fingerprints_;

  // Of the batch that is being gathered:
  std::string rows_;
  std::vector<Move> moves_;
  std::vector<std::filesystem::path> workFolders_;
  uint64_t batchBytes_ = 0;
  uint64_t batchItems_ = 0;
  std::unique_ptr<PlanReader> plan_;
  size_t planSource_ = SIZE_MAX;
};

}  // namespace tarn::archive

#endif
