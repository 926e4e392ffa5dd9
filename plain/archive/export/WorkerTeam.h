// WorkerTeam.h - the workers of an export: each is given what is to be done next, and one that
// ends or hangs costs the entry that it was at.
#ifndef TARN_ARCHIVE_WORKERTEAM_H
#define TARN_ARCHIVE_WORKERTEAM_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "archive/export/Export.h"
#include "archive/export/Staging.h"
#include "archive/export/StillTime.h"
#include "archive/export/WorkQueue.h"
#include "archive/export/WorkerMessages.h"
#include "archive/export/WorkerProcess.h"

namespace tarn::archive {

class WorkerTeam {
 public:
  WorkerTeam(const ExportOptions& options, WorkQueue& queue, Staging& staging);
  WorkerTeam(const WorkerTeam&) = delete;
  WorkerTeam& operator=(const WorkerTeam&) = delete;
  ~WorkerTeam();

  // Gives work to those that have none, before and after it takes what comes within a moment.
  // Throws host::Failure where nothing more can be written (Failed), and where no worker can be had
  // (Broken).
  void work();

  // Whether a worker may still say something of the piece.
  bool isAt(const Piece& piece) const;

  // Ends all at once, whatever they are at. Nothing is asked of the team after it.
  void stop();

 private:
  struct Slot {
    std::unique_ptr<WorkerProcess> process;
    Piece* piece = nullptr;
    std::optional<WorkerTask> preparing;  // what it finds out of the source
    size_t source = 0;
    std::filesystem::path folder;
    WorkerParts ends;
    uint64_t first = 0;  // entry of the piece that it was asked for
    StillTime still;

    bool isIdle() const { return piece == nullptr && !preparing; }
  };

  void giveWork();
  void giveWork(Slot& slot);
  void startPreparing(Slot& slot, const Preparation& preparation);
  void startPiece(Slot& slot, Piece& piece);
  WorkerRequest requestFor(size_t source) const;
  void ask(Slot& slot, const WorkerRequest& request);

  void listen();
  void hear(Slot& slot);
  void take(Slot& slot, const WorkerReply& reply);
  void takeSum(Slot& slot, const WorkerReply& reply);
  void takePlan(Slot& slot, const WorkerReply& reply);
  void takeUnopened(Slot& slot, const WorkerReply& reply);
  void takeEntry(Slot& slot, const WorkerReply& reply);
  void lose(Slot& slot, const std::string& how);
  void goOn(Slot& slot, Piece& piece);
  void losePreparation(Slot& slot, uint64_t beats, const std::string& how);
  void loseSource(size_t source, const Trouble& trouble);
  void lookForHangs();

  const ExportOptions& options_;
  WorkQueue& queue_;
  Staging& staging_;
  std::vector<Slot> slots_;
};

}  // namespace tarn::archive

#endif
