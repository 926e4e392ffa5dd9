#include "archive/export/WorkQueue.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "console/Failure.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;

constexpr uint64_t kPieceEntries = 32;
constexpr size_t kPiecesAhead = 16;   // of a worker
constexpr size_t kSourcesAhead = 64;  // planned, and not cut
constexpr uint64_t kLargeSource = uint64_t{1} << 20;

}  // namespace

WorkQueue::WorkQueue(ExportSources& sources, Staging& staging, size_t workers, Progress& progress)
    : sources_(sources),
      staging_(staging),
      workers_(workers),
      progress_(progress),
      works_(sources.all.size()) {}

fs::path WorkQueue::planPath(size_t source) const {
  return staging_.path("plans") / std::to_string(source);
}

std::unique_ptr<PlanReader> WorkQueue::openPlan(size_t source, uint64_t offset) const {
  Outcome<std::unique_ptr<PlanReader>> plan =
      PlanReader::open({planPath(source), works_[source].plan}, offset);
  if (!plan) CheckStaged(plan.trouble());
  return std::move(*plan);
}

void WorkQueue::keepPlan(size_t source) {
  std::string& bytes = works_[source].plan;
  if (bytes.empty()) return;
  const Outcome<std::unique_ptr<GrowingFile>> file = GrowingFile::open(planPath(source));
  if (!file) CheckStaged(file.trouble());
  CheckStaged((*file)->cutTo(0));
  CheckStaged((*file)->append(bytes));
  bytes = {};
}

void WorkQueue::dropPlan(size_t source) {
  std::error_code ignored;
  if (works_[source].plan.empty()) fs::remove(planPath(source), ignored);
  works_[source].plan = {};
}

void WorkQueue::cutReadySources() {
  while (nextToCut_ < works_.size() && works_[nextToCut_].isReady() &&
         pieces_.size() < kPiecesAhead * workers_) {
    cutSource(nextToCut_++);
  }
}

std::optional<size_t> WorkQueue::passReadySource() {
  if (nextToCut_ == works_.size() || !works_[nextToCut_].isReady()) return std::nullopt;
  return nextToCut_++;
}

// What of a source was finished before is left out.
void WorkQueue::cutSource(size_t source) {
  const SourceWork& work = works_[source];
  const std::string& name = sources_.all[source].name;
  const auto before = staging_.resumed().sources.find(name);
  const bool wasBegun = before != staging_.resumed().sources.end();
  if (wasBegun && before->second.sha256 != work.sum.sha256) {
    throw host::Failure(host::ExitStatus::Failed, name,
                        "has changed since the export was begun; export into a new folder");
  }
  if (wasBegun && before->second.isEnded) return dropPlan(source);
  if (!wasBegun) add(PieceKind::Begin, source);
  const uint64_t skipped = wasBegun ? before->second.entries : 0;
  progress_.expect(work.entries - std::min(skipped, work.entries));
  if (work.entries != 0) cutEntries(source, skipped);
  add(PieceKind::End, source);
}

void WorkQueue::add(PieceKind kind, size_t source) {
  auto piece = std::make_unique<Piece>();
  piece->kind = kind;
  piece->source = source;
  pieces_.push_back(std::move(piece));
}

void WorkQueue::cutEntries(size_t source, uint64_t skipped) {
  const uint64_t entries = works_[source].entries;
  const std::unique_ptr<PlanReader> plan = openPlan(source, 0);
  for (uint64_t entry = 0; entry < entries;) {
    const uint64_t end = std::min(entries, entry < skipped ? skipped : entry + kPieceEntries);
    auto piece = std::make_unique<Piece>();
    piece->source = source;
    piece->offset = plan->offset();
    piece->first = entry;
    piece->count = end - entry;
    for (; entry < end; ++entry) {
      const Outcome<std::optional<PlanEntry>> passed = plan->next();
      if (!passed) CheckStaged(passed.trouble());
    }
    if (entry > skipped) pieces_.push_back(std::move(piece));
  }
}

Piece* WorkQueue::nextPiece() {
  for (const std::unique_ptr<Piece>& piece : pieces_) {
    if (!piece->isGiven && !piece->isDone()) return piece.get();
  }
  return nullptr;
}

std::optional<Preparation> WorkQueue::nextPreparation() {
  if (nextToSum_) return Preparation{*std::exchange(nextToSum_, std::nullopt), WorkerTask::Sum};
  while (nextToPlan_ < works_.size() && nextToPlan_ < nextToCut_ + kSourcesAhead) {
    const size_t source = nextToPlan_++;
    SourceWork& work = works_[source];
    if (const std::optional<Trouble>& trouble = sources_.all[source].trouble) {
      work.isSummed = work.isPlanned = true;
      work.reason = trouble->reason;
      continue;
    }
    // Of a range there is no sum.
    work.isSummed = !sources_.all[source].range.empty();
    if (!work.isSummed && !isForTwo(source)) return Preparation{source, WorkerTask::SumAndPlan};
    if (!work.isSummed) nextToSum_ = source;
    return Preparation{source, WorkerTask::Plan};
  }
  return std::nullopt;
}

// Small ones are not worth two messages more.
bool WorkQueue::isForTwo(size_t source) const {
  const FoundSource& found = sources_.all[source].found;
  const bool hasMany = found.kind == SourceKind::Store || found.kind == SourceKind::Mbox;
  std::error_code error;
  return workers_ > 1 && hasMany && fs::file_size(found.path, error) >= kLargeSource && !error &&
         IsInMemory(found.path);
}

}  // namespace tarn::archive
