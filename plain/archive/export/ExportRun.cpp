#include "archive/export/ExportRun.h"

#include <poll.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <system_error>

#include "archive/export/SourceSum.h"
#include "console/Failure.h"
#include "console/Paths.h"
#include "console/StandardStreams.h"
#include "console/SystemFiles.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;

constexpr uint64_t kPieceEntries = 32;
constexpr uint64_t kBatchBytes = uint64_t{64} << 20;
constexpr size_t kPiecesAhead = 16;   // of a worker
constexpr size_t kSourcesAhead = 64;  // planned, and not cut
constexpr const char* kPartNames[3] = {"rows", "mails", "texts"};

}  // namespace

ExportRun::ExportRun(const ExportOptions& options, ExportSources& sources, Staging& staging)
    : options_(options),
      sources_(sources),
      staging_(staging),
      progress_(host::StandardErrorIsTerminal()),
      planned_(sources.all.size()),
      slots_(std::max<size_t>(options.workers, 1)),
      fingerprints_(staging.resumed().fingerprints) {}

ExportRun::~ExportRun() = default;

void ExportRun::run() {
  while (!isDone()) {
    cutReadySources();
    for (Slot& slot : slots_) {
      if (slot.isIdle()) giveWork(slot);
    }
    const bool isWaiting =
        std::any_of(slots_.begin(), slots_.end(), [](const Slot& slot) { return !slot.isIdle(); });
    if (isWaiting) listen();
    commit();
  }
  finishBatch();
}

bool ExportRun::isDone() const { return nextToCut_ == planned_.size() && pieces_.empty(); }

fs::path ExportRun::planPath(size_t source) const {
  return staging_.path("plans") / std::to_string(source);
}

void ExportRun::check(const std::optional<Trouble>& trouble) const {
  if (!trouble) return;
  throw host::Failure(host::ExitStatus::Failed,
                      trouble->reason + "; --resume goes on with what is finished");
}

// What is to be done next: entries first, in their order, then the plan of another source.
void ExportRun::giveWork(Slot& slot) {
  for (const std::unique_ptr<Piece>& piece : pieces_) {
    if (!piece->isGiven && !piece->isDone()) return startPiece(slot, *piece);
  }
  while (nextToPlan_ < planned_.size() && nextToPlan_ < nextToCut_ + kSourcesAhead) {
    const size_t source = nextToPlan_++;
    if (!sources_.all[source].trouble) return startPlanning(slot, source);
    planned_[source].state = Planned::State::Ready;
    planned_[source].reason = sources_.all[source].trouble->reason;
  }
}

WorkerRequest ExportRun::requestFor(size_t source) const {
  const ExportSource& from = sources_.all[source];
  WorkerRequest request;
  request.name = from.found.name;
  request.path = from.found.path.string();
  request.kind = from.found.kind;
  request.recover = options_.recover;
  request.plan = planPath(source).string();
  return request;
}

void ExportRun::startPlanning(Slot& slot, size_t source) {
  Planned& planned = planned_[source];
  planned.state = Planned::State::Planning;
  const FoundSource& found = sources_.all[source].found;
  if (planned.attempts++ == 0) planned.stamp = StampOfSource(found.path, found.kind);
  slot.isPlanning = true;
  slot.source = source;
  WorkerRequest request = requestFor(source);
  request.task = WorkerTask::Plan;
  request.filter = options_.filter;
  request.mostEntries = planned.mostEntries;
  request.reasonAfter = planned.reasonAfter;
  ask(slot, request);
}

// What of the piece is not finished.
void ExportRun::startPiece(Slot& slot, Piece& piece) {
  piece.isGiven = true;
  slot.piece = &piece;
  slot.source = piece.source;
  Outcome<fs::path> folder = staging_.newWorkFolder();
  if (!folder) check(folder.trouble());
  slot.folder = *folder;
  workFolders_.push_back(*folder);
  std::fill(std::begin(slot.ends), std::end(slot.ends), 0);
  WorkerRequest request = requestFor(piece.source);
  request.task = WorkerTask::Export;
  request.choices = options_.choices;
  request.tree = sources_.all[piece.source].tree;
  request.folder = slot.folder.string();
  request.first = piece.first;
  request.count = piece.count;
  request.offset = piece.offset;
  // Of a piece that a worker did not survive the entries are passed over that are finished.
  if (!piece.finished.empty()) {
    Outcome<std::unique_ptr<PlanReader>> plan =
        PlanReader::open(planPath(piece.source), piece.offset);
    if (!plan) check(plan.trouble());
    for (size_t done = 0; done < piece.finished.size(); ++done) (void)(*plan)->next();
    request.offset = (*plan)->offset();
    request.first += piece.finished.size();
    request.count -= piece.finished.size();
  }
  ask(slot, request);
}

void ExportRun::ask(Slot& slot, const WorkerRequest& request) {
  if (!slot.process) {
    const size_t number = static_cast<size_t>(&slot - slots_.data());
    const fs::path program = options_.program.empty() ? OwnProgram() : options_.program;
    slot.process = std::make_unique<WorkerProcess>(WorkerPlan{
        program, staging_.path("work") / ("beat" + std::to_string(number)), options_.memory});
  }
  slot.process->beat().set(0);
  slot.beat = 0;
  slot.since = Clock::now();
  // A worker that is gone is met when its answer is waited for.
  (void)slot.process->channel().send(Packed(request));
}

void ExportRun::cutReadySources() {
  while (nextToCut_ < planned_.size() && planned_[nextToCut_].state == Planned::State::Ready &&
         pieces_.size() < kPiecesAhead * slots_.size()) {
    cutSource(nextToCut_++);
  }
}

// Pieces are small; those of a source that was begun before are left out as far as it is finished.
void ExportRun::cutSource(size_t source) {
  Planned& planned = planned_[source];
  planned.state = Planned::State::Cut;
  const std::string& name = sources_.all[source].found.name;
  const auto before = staging_.resumed().sources.find(name);
  const bool wasBegun = before != staging_.resumed().sources.end();
  if (wasBegun && before->second.sha256 != planned.sum.sha256) {
    throw host::Failure(host::ExitStatus::Failed, name,
                        "has changed since the export was begun; export into a new folder");
  }
  if (wasBegun && before->second.isEnded) return;
  const auto add = [&](Piece piece) {
    piece.source = source;
    pieces_.push_back(std::make_unique<Piece>(std::move(piece)));
  };
  if (!wasBegun) {
    Piece begin;
    begin.kind = PieceKind::Begin;
    add(std::move(begin));
  }
  const uint64_t skipped = wasBegun ? before->second.entries : 0;
  progress_.expect(planned.entries - std::min(skipped, planned.entries));
  Outcome<std::unique_ptr<PlanReader>> plan = planned.entries == 0
                                                  ? Outcome<std::unique_ptr<PlanReader>>(nullptr)
                                                  : PlanReader::open(planPath(source));
  if (!plan) check(plan.trouble());
  for (uint64_t entry = 0; entry < planned.entries;) {
    const uint64_t end =
        std::min(planned.entries, entry < skipped ? skipped : entry + kPieceEntries);
    Piece piece;
    piece.offset = (*plan)->offset();
    piece.first = entry;
    piece.count = end - entry;
    for (; entry < end; ++entry) {
      const Outcome<std::optional<PlanEntry>> passed = (*plan)->next();
      if (!passed) check(passed.trouble());
    }
    if (entry > skipped) add(std::move(piece));
  }
  Piece end;
  end.kind = PieceKind::End;
  add(std::move(end));
}

void ExportRun::listen() {
  std::vector<pollfd> entries;
  std::vector<Slot*> slots;
  for (Slot& slot : slots_) {
    if (slot.isIdle()) continue;
    entries.push_back({slot.process->channel().descriptor(), POLLIN, 0});
    slots.push_back(&slot);
  }
  constexpr int kMilliseconds = 200;
  if (poll(entries.data(), entries.size(), kMilliseconds) > 0) {
    for (size_t index = 0; index < entries.size(); ++index) {
      if (entries[index].revents != 0) hear(*slots[index]);
    }
  }
  lookForHangs();
}

void ExportRun::hear(Slot& slot) {
  // As many as are there, so that the workers do not wait for the commits between.
  do {
    std::string message;
    if (slot.process->channel().receive(message) != pages::Heard::Message) {
      lose(slot, "the process that read it " + slot.process->end());
      return;
    }
    take(slot, UnpackedReply(message));
  } while (!slot.isIdle() && slot.process->channel().waitForMessage(std::chrono::milliseconds(0)));
}

void ExportRun::take(Slot& slot, const WorkerReply& reply) {
  Planned& planned = planned_[slot.source];
  slot.since = Clock::now();
  switch (reply.word) {
    case WorkerWord::Planned:
      planned.sum = {reply.numbers[1], reply.text};
      planned.entries = reply.numbers[0];
      planned.state = Planned::State::Ready;
      slot.isPlanning = false;
      return;
    case WorkerWord::Unopened:
      if (slot.isPlanning) {
        ExportSource& source = sources_.all[slot.source];
        const auto kind = static_cast<TroubleKind>(reply.numbers[0]);
        source.trouble = Trouble{kind, reply.text};
        planned.reason = reply.text;
        planned.state = Planned::State::Ready;
        slot.isPlanning = false;
      } else {
        slot.piece->finished.resize(slot.piece->count, [&] {
          Finished lost;
          lost.reason = reply.text;
          return lost;
        }());
        slot.piece = nullptr;
      }
      return;
    case WorkerWord::Exported: {
      Finished finished;
      finished.folder = slot.folder;
      finished.fingerprint = reply.text;
      finished.hasFolder = reply.numbers[0] != 0;
      finished.number = slot.piece->first + slot.piece->finished.size();
      finished.bytes = reply.numbers[4];
      for (size_t part = 0; part < 3; ++part) {
        finished.begins[part] = slot.ends[part];
        finished.ends[part] = slot.ends[part] = reply.numbers[part + 1];
      }
      slot.piece->finished.push_back(std::move(finished));
      return;
    }
    case WorkerWord::Done:
      slot.piece = nullptr;
      return;
    case WorkerWord::Stopped:
      check(Trouble{TroubleKind::Unreadable, reply.text});
  }
}

// The worker is gone: what it was at is lost, and all else goes on in a new one.
void ExportRun::lose(Slot& slot, const std::string& how) {
  const uint64_t beats = slot.process->beat().count();
  slot.process.reset();
  if (slot.isPlanning) {
    constexpr int kAttempts = 3;
    Planned& planned = planned_[slot.source];
    planned.mostEntries = beats;
    planned.reasonAfter = "what comes after cannot be read: " + how;
    if (planned.attempts < kAttempts) return startPlanning(slot, slot.source);
    slot.isPlanning = false;
    planned.reason = how;
    planned.state = Planned::State::Ready;
    sources_.all[slot.source].trouble = Trouble{TroubleKind::Damaged, how};
    return;
  }
  Piece& piece = *slot.piece;
  slot.piece = nullptr;
  // The last word of a worker may be the one that is lost.
  if (piece.isDone()) return;
  Finished lost;
  lost.reason = how;
  piece.finished.push_back(std::move(lost));
  if (!piece.isDone()) startPiece(slot, piece);
}

void ExportRun::lookForHangs() {
  for (Slot& slot : slots_) {
    if (slot.isIdle()) continue;
    const uint64_t beat = slot.process->beat().count();
    if (beat != slot.beat) {
      slot.beat = beat;
      slot.since = Clock::now();
    } else if (Clock::now() - slot.since > std::chrono::seconds(options_.seconds)) {
      (void)slot.process->end();
      lose(slot, "took longer than " + std::to_string(options_.seconds) + " seconds");
    }
  }
}

void ExportRun::commit() {
  while (!pieces_.empty() && pieces_.front()->isDone()) {
    // A worker may still have to say that it is done with it.
    const Piece* const front = pieces_.front().get();
    const bool isHeld = std::any_of(slots_.begin(), slots_.end(),
                                    [front](const Slot& slot) { return slot.piece == front; });
    if (isHeld) return;
    Piece& piece = *pieces_.front();
    const std::string& name = sources_.all[piece.source].found.name;
    switch (piece.kind) {
      case PieceKind::Begin:
        rows_ += SourceLine(name, planned_[piece.source].sum);
        break;
      case PieceKind::Entries:
        commitEntries(piece);
        break;
      case PieceKind::End:
        endSource(piece.source);
        break;
    }
    pieces_.pop_front();
    if (batchItems_ >= options_.batchItems || batchBytes_ >= kBatchBytes) finishBatch();
  }
}

void ExportRun::commitEntries(Piece& piece) {
  if (planSource_ != piece.source || !plan_ || plan_->offset() != piece.offset) {
    Outcome<std::unique_ptr<PlanReader>> plan =
        PlanReader::open(planPath(piece.source), piece.offset);
    if (!plan) check(plan.trouble());
    plan_ = std::move(*plan);
    planSource_ = piece.source;
  }
  uint64_t bytes = 0;
  for (Finished& finished : piece.finished) {
    const Outcome<std::optional<PlanEntry>> entry = plan_->next();
    if (!entry) check(entry.trouble());
    commitEntry(piece, **entry, finished);
    bytes += finished.bytes;
  }
  batchItems_ += piece.count;
  batchBytes_ += bytes;
  rows_ += BatchLine(sources_.all[piece.source].found.name, piece.first + piece.count,
                     staging_.grown().takeChanges());
  progress_.done(piece.count, bytes);
}

void ExportRun::commitEntry(Piece& piece, const PlanEntry& entry, Finished& finished) {
  const ExportSource& source = sources_.all[piece.source];
  if (finished.folder.empty()) {
    rows_ += RowOfLost(entry, source.found.name, finished.reason);
    return;
  }
  const bool isCopy = !finished.fingerprint.empty() && options_.dedupe &&
                      !fingerprints_.insert(finished.fingerprint).second;
  rows_ += rowsOf(finished, isCopy);
  const std::string folder = source.tree + (entry.folderPath.empty() ? "" : "/" + entry.folderPath);
  const auto part = [&](size_t number) {
    if (finished.begins[number] == finished.ends[number]) return std::string();
    const Outcome<std::unique_ptr<GrowingFile>> file =
        GrowingFile::open(finished.folder / kPartNames[number]);
    if (!file) check(file.trouble());
    Outcome<std::string> bytes =
        (*file)->read(finished.begins[number], finished.ends[number] - finished.begins[number]);
    if (!bytes) check(bytes.trouble());
    return std::move(*bytes);
  };
  options_.step();
  check(staging_.grown().append(kTextsName, part(2)));
  if (isCopy) return;
  if (options_.choices.forms.contains(ExportForm::Mbox) && entry.kind == PlanKind::Item) {
    check(staging_.grown().append(folder + "/" + kMboxName, part(1)));
  }
  if (finished.hasFolder) {
    moves_.push_back({finished.folder / std::to_string(finished.number),
                      staging_.tree() / host::PathFromUtf8(folder + "/" + entry.name)});
  }
}

// A copy has no files of its own.
std::string ExportRun::rowsOf(const Finished& finished, bool isCopy) {
  const Outcome<std::unique_ptr<GrowingFile>> file = GrowingFile::open(finished.folder / "rows");
  if (!file) check(file.trouble());
  const Outcome<std::string> rows =
      (*file)->read(finished.begins[0], finished.ends[0] - finished.begins[0]);
  if (!rows) check(rows.trouble());
  if (!isCopy) return *rows;
  std::string changed;
  for (size_t begin = 0; begin < rows->size();) {
    const size_t end = rows->find('\n', begin);
    auto row = nlohmann::ordered_json::parse(std::string_view(*rows).substr(begin, end - begin));
    row["files"] = nlohmann::ordered_json::array();
    row.erase("mbox");
    row.erase("mboxBytes");
    changed += row.dump() + "\n";
    begin = end + 1;
  }
  return changed;
}

void ExportRun::endSource(size_t source) {
  Planned& planned = planned_[source];
  const FoundSource& found = sources_.all[source].found;
  if (planned.reason.empty() && planned.stamp != StampOfSource(found.path, found.kind)) {
    planned.reason = "has changed while it was exported";
  }
  rows_ += EndLine(found.name, planned.reason);
  ++batchItems_;
  std::error_code ignored;
  fs::remove(planPath(source), ignored);
  planned.state = Planned::State::Done;
  if (planned.reason.empty()) progress_.tell(found.name, planned.entries);
}

// One sync for all of them; then they are put into their places, and then they are finished.
void ExportRun::finishBatch() {
  if (rows_.empty()) return;
  options_.step();
  staging_.sync();
  std::set<fs::path> made;
  for (const Move& move : moves_) {
    options_.step();
    std::error_code error;
    if (made.insert(move.to.parent_path()).second) {
      fs::create_directories(move.to.parent_path(), error);
    }
    // What is there is of a batch that was not finished.
    if (!error && fs::exists(fs::symlink_status(move.to, error))) host::RemoveTree(move.to);
    error.clear();
    fs::rename(move.from, move.to, error);
    if (error) check(SystemTrouble(move.to, error.value()));
  }
  options_.step();
  check(staging_.journal().append(rows_));
  check(staging_.journal().sync());
  options_.step();
  // Folders that a worker still writes to are not among those whose entries are all committed.
  std::vector<fs::path> kept;
  for (const fs::path& folder : workFolders_) {
    const bool isUsed =
        std::any_of(slots_.begin(), slots_.end(),
                    [&](const Slot& slot) { return !slot.isIdle() && slot.folder == folder; }) ||
        std::any_of(pieces_.begin(), pieces_.end(), [&](const std::unique_ptr<Piece>& piece) {
          return std::any_of(piece->finished.begin(), piece->finished.end(),
                             [&](const Finished& finished) { return finished.folder == folder; });
        });
    if (isUsed) {
      kept.push_back(folder);
    } else {
      host::RemoveTree(folder);
    }
  }
  workFolders_ = std::move(kept);
  rows_.clear();
  moves_.clear();
  batchItems_ = 0;
  batchBytes_ = 0;
}

}  // namespace tarn::archive
