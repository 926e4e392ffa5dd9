#include "archive/export/WorkerTeam.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "archive/export/SourceSum.h"
#include "console/Failure.h"
#include "console/SystemFiles.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;

}  // namespace

WorkerTeam::WorkerTeam(const ExportOptions& options, WorkQueue& queue, Staging& staging)
    : options_(options),
      queue_(queue),
      staging_(staging),
      slots_(std::max<size_t>(options.workers, 1)) {}

WorkerTeam::~WorkerTeam() = default;

// Those that are done have something to do while what they did is committed.
void WorkerTeam::work() {
  giveWork();
  listen();
  giveWork();
}

void WorkerTeam::giveWork() {
  for (Slot& slot : slots_) {
    if (slot.isIdle()) giveWork(slot);
  }
}

void WorkerTeam::giveWork(Slot& slot) {
  if (Piece* const piece = queue_.nextPiece()) return startPiece(slot, *piece);
  if (const std::optional<Preparation> next = queue_.nextPreparation()) startPreparing(slot, *next);
}

WorkerRequest WorkerTeam::requestFor(size_t source) const {
  const FoundSource& found = queue_.source(source).found;
  WorkerRequest request;
  request.name = queue_.source(source).name;
  request.path = found.path.string();
  request.kind = found.kind;
  request.recover = options_.recover;
  request.plan = {queue_.planPath(source), queue_.work(source).plan};
  return request;
}

void WorkerTeam::startPreparing(Slot& slot, const Preparation& preparation) {
  const size_t source = preparation.source;
  SourceWork& work = queue_.work(source);
  const FoundSource& found = queue_.source(source).found;
  if (!std::exchange(work.isStarted, true)) work.stamp = StampOfSource(found.path, found.kind);
  slot.preparing = preparation.task;
  slot.source = source;
  WorkerRequest request = requestFor(source);
  request.task = preparation.task;
  request.filter = options_.filter;
  request.limits = work.attempts.limits();
  request.range = queue_.source(source).range.string();
  ask(slot, request);
}

// What of the piece is not finished, up to where a worker ended before.
void WorkerTeam::startPiece(Slot& slot, Piece& piece) {
  piece.isGiven = true;
  slot.piece = &piece;
  slot.source = piece.source;
  Outcome<fs::path> folder = staging_.newWorkFolder();
  if (!folder) CheckStaged(folder.trouble());
  slot.folder = *folder;
  piece.workFolders.push_back(*folder);
  slot.ends = {};
  WorkerRequest request = requestFor(piece.source);
  request.task = WorkerTask::Export;
  request.choices = options_.choices;
  // The files of the item come first, and may take as long as all of it.
  request.textSeconds = std::max<uint64_t>(1, options_.seconds / 2);
  request.tree = queue_.source(piece.source).tree;
  request.folder = slot.folder.string();
  request.first = piece.first;
  request.count = piece.count;
  request.offset = piece.offset;
  slot.first = piece.finished.size();
  // Of a piece that a worker did not survive the entries are passed over that are finished.
  if (!piece.finished.empty()) {
    const std::unique_ptr<PlanReader> plan = queue_.openPlan(piece.source, piece.offset);
    for (size_t done = 0; done < piece.finished.size(); ++done) (void)plan->next();
    request.offset = plan->offset();
    request.first += piece.finished.size();
    request.count -= piece.finished.size();
  }
  if (piece.death) request.count = std::min(request.count, piece.death->entry - slot.first);
  ask(slot, request);
}

void WorkerTeam::ask(Slot& slot, const WorkerRequest& request) {
  if (!slot.process) {
    const size_t number = static_cast<size_t>(&slot - slots_.data());
    const fs::path program = options_.program.empty() ? OwnProgram() : options_.program;
    const WorkerPlan plan = {program, staging_.path("work") / ("beat" + std::to_string(number)),
                             options_.memory};
    try {
      slot.process = std::make_unique<WorkerProcess>(plan);
    } catch (const std::system_error& error) {
      throw host::Failure(host::ExitStatus::Broken, "no worker can be started", error.what());
    }
  }
  slot.process->beat().set(0);
  slot.still.begin(StillTime::Clock::now());
  // A worker that is gone is met when its answer is waited for.
  (void)slot.process->channel().send(Packed(request));
}

void WorkerTeam::listen() {
  std::vector<Slot*> busy;
  std::vector<WorkerProcess*> processes;
  for (Slot& slot : slots_) {
    if (slot.isIdle()) continue;
    busy.push_back(&slot);
    processes.push_back(slot.process.get());
  }
  if (busy.empty()) return;
  constexpr std::chrono::milliseconds kMoment(200);
  for (const size_t index : WaitForWorkers(processes, kMoment)) hear(*busy[index]);
  lookForHangs();
}

void WorkerTeam::hear(Slot& slot) {
  // As many as are there, so that the workers do not wait for the commits between.
  do {
    std::string message;
    if (slot.process->channel().receive(message) != pages::Heard::Message) {
      lose(slot, "the process that read it " + slot.process->end());
      return;
    }
    for (const WorkerReply& reply : UnpackedReplies(message)) take(slot, reply);
  } while (!slot.isIdle() && slot.process->channel().waitForMessage(std::chrono::milliseconds(0)));
}

void WorkerTeam::take(Slot& slot, const WorkerReply& reply) {
  slot.still.begin(StillTime::Clock::now(), slot.process->beat().count());
  switch (reply.word) {
    case WorkerWord::Summed:
      return takeSum(slot, reply);
    case WorkerWord::Planned:
      return takePlan(slot, reply);
    case WorkerWord::Unopened:
      return takeUnopened(slot, reply);
    case WorkerWord::Exported:
      return takeEntry(slot, reply);
    case WorkerWord::Done:
      return goOn(slot, *std::exchange(slot.piece, nullptr));
    case WorkerWord::Stopped:
      CheckStaged(Trouble{TroubleKind::Unreadable, reply.text});
  }
}

// Of a source that is lost already nothing is kept, whichever came first.
void WorkerTeam::takeSum(Slot& slot, const WorkerReply& reply) {
  SourceWork& work = queue_.work(slot.source);
  if (!queue_.source(slot.source).trouble) {
    work.sum = {reply.bytes, reply.text};
    work.reason = reply.reason;
  }
  work.isSummed = true;
  if (slot.preparing == WorkerTask::Sum) slot.preparing.reset();
}

void WorkerTeam::takePlan(Slot& slot, const WorkerReply& reply) {
  SourceWork& work = queue_.work(slot.source);
  if (!queue_.source(slot.source).trouble) {
    work.entries = reply.entries;
    work.plan = reply.plan;
    queue_.source(slot.source).hasMissedFolder = reply.hasMissedFolder;
  }
  work.isPlanned = true;
  slot.preparing.reset();
}

void WorkerTeam::takeUnopened(Slot& slot, const WorkerReply& reply) {
  if (slot.preparing) {
    // That it could not be added up tells more.
    if (!queue_.source(slot.source).trouble) loseSource(slot.source, {reply.kind, reply.text});
    queue_.work(slot.source).isPlanned = true;
    slot.preparing.reset();
    return;
  }
  FinishedEntry lost;
  lost.reason = reply.text;
  slot.piece->finished.resize(slot.piece->count, lost);
  slot.piece = nullptr;
}

void WorkerTeam::takeEntry(Slot& slot, const WorkerReply& reply) {
  FinishedEntry finished;
  finished.folder = slot.folder;
  finished.fingerprint = reply.text;
  finished.hasFolder = reply.hasFolder;
  finished.number = slot.piece->first + slot.piece->finished.size();
  finished.bytes = reply.bytes;
  finished.begins = slot.ends;
  finished.ends = slot.ends = reply.ends;
  slot.piece->finished.push_back(std::move(finished));
}

// The worker is gone: what it was at is lost, and all else goes on in a new one. What it had
// finished and not told is done again first.
void WorkerTeam::lose(Slot& slot, const std::string& how) {
  const uint64_t beats = slot.process->beat().count();
  slot.process.reset();
  if (slot.preparing) return losePreparation(slot, beats, how);
  Piece& piece = *slot.piece;
  slot.piece = nullptr;
  // The last word of a worker may be the one that is lost.
  if (piece.isDone()) return;
  uint64_t entry = slot.first + beats / kBeatsOfEntry;
  // Each death is before the last one, or costs an entry.
  if (piece.death && piece.death->entry <= entry) entry = piece.finished.size();
  piece.death = WorkerDeath{entry, how};
  goOn(slot, piece);
}

void WorkerTeam::goOn(Slot& slot, Piece& piece) {
  if (piece.death && piece.death->entry == piece.finished.size()) {
    FinishedEntry lost;
    lost.reason = std::exchange(piece.death, std::nullopt)->how;
    if (!piece.isDone()) piece.finished.push_back(std::move(lost));
  }
  if (!piece.isDone()) startPiece(slot, piece);
}

void WorkerTeam::losePreparation(Slot& slot, uint64_t beats, const std::string& how) {
  SourceWork& work = queue_.work(slot.source);
  const WorkerTask task = *slot.preparing;
  const bool isInSum = task == WorkerTask::Sum || beats >= kBeatsOfSum;
  const bool goesOn =
      isInSum ? work.attemptsOfSum.died(std::nullopt, how) : work.attempts.died(beats, how);
  if (goesOn) return startPreparing(slot, {slot.source, task});
  const bool isLost = queue_.source(slot.source).trouble.has_value();
  if (isInSum || !isLost) loseSource(slot.source, {TroubleKind::Damaged, how});
  if (task != WorkerTask::Plan) work.isSummed = true;
  if (task != WorkerTask::Sum) work.isPlanned = true;
  slot.preparing.reset();
}

void WorkerTeam::loseSource(size_t source, const Trouble& trouble) {
  queue_.source(source).trouble = trouble;
  queue_.source(source).hasMissedFolder = false;
  SourceWork& work = queue_.work(source);
  work.sum = {};
  work.entries = 0;
  work.plan = {};
  work.reason = trouble.reason;
}

void WorkerTeam::lookForHangs() {
  for (Slot& slot : slots_) {
    if (slot.isIdle()) continue;
    slot.still.look(StillTime::Clock::now(), slot.process->beat().count());
    if (slot.still.time() > std::chrono::seconds(options_.seconds)) {
      (void)slot.process->end();
      lose(slot, "took longer than " + std::to_string(options_.seconds) + " seconds");
    }
  }
}

bool WorkerTeam::isAt(const Piece& piece) const {
  return std::any_of(slots_.begin(), slots_.end(),
                     [&](const Slot& slot) { return slot.piece == &piece; });
}

void WorkerTeam::stop() {
  for (const Slot& slot : slots_) {
    if (slot.process) (void)slot.process->end();
  }
}

}  // namespace tarn::archive
