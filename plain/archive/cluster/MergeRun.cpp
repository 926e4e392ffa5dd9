#include "archive/cluster/MergeRun.h"

#include <algorithm>
#include <utility>

#include "archive/cluster/Part.h"
#include "archive/export/SourceSum.h"
#include "console/Failure.h"
#include "console/StandardStreams.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;

void Append(const fs::path& from, GrowingFile& to) {
  std::optional<Trouble> full;
  const std::optional<Trouble> unread = ReadInPieces(from, [&](std::string_view piece) {
    full = to.append(piece);
    return !full;
  });
  CheckStaged(unread);
  CheckStaged(full);
}

}  // namespace

MergeRun::MergeRun(const PlanFile& plan, const ExportOptions& options, ExportSources& sources,
                   Staging& staging)
    : plan_(plan),
      staging_(staging),
      progress_(host::StandardErrorIsTerminal()),
      queue_(sources, staging, 1, progress_),
      batch_(options, queue_, staging, progress_),
      places_(plan.inputs().size()) {
  findPlaces();
}

void MergeRun::findPlaces() {
  plan_.forEachTask([this](uint64_t number, const PlannedTask& task) {
    for (size_t range = 0; range < task.ranges.size(); ++range) {
      const PlannedRange& planned = task.ranges[range];
      places_.at(planned.input).push_back({planned.first, planned.entries, number, range});
    }
  });
  for (size_t input = 0; input < places_.size(); ++input) {
    std::vector<Place>& places = places_[input];
    std::sort(places.begin(), places.end(),
              [](const Place& one, const Place& other) { return one.first < other.first; });
    uint64_t next = 0;
    bool isWhole = true;
    for (const Place& place : places) {
      isWhole = isWhole && place.first == next;
      next = place.first + place.entries;
    }
    if (isWhole && next == plan_.inputs()[input].entries) continue;
    throw host::Failure(host::ExitStatus::Usage, plan_.inputs()[input].source.found.name,
                        "is not planned once from its first to its last item");
  }
}

void MergeRun::run() {
  size_t next = 0;
  while (!queue_.isDone()) {
    if (queue_.front() == nullptr) prepare(next++);
    queue_.cutReadySources();
    while (Piece* const piece = queue_.front()) {
      if (piece->kind == PieceKind::Entries) fill(*piece);
      batch_.add(*piece);
      queue_.pop();
      if (batch_.isFull()) batch_.putAway();
    }
  }
  batch_.finish();
}

// The plan of an input is those of its ranges, one after the other.
void MergeRun::prepare(size_t number) {
  const PlannedInput& input = plan_.inputs()[number];
  SourceWork& work = queue_.work(number);
  work.sum = input.sum;
  work.entries = input.entries;
  work.reason = input.reason;
  // Nothing of the input itself is looked at any more.
  work.stamp = StampOfSource({}, input.source.found.kind);
  if (!places_[number].empty()) {
    const Outcome<std::unique_ptr<GrowingFile>> plan = GrowingFile::open(queue_.planPath(number));
    if (!plan) CheckStaged(plan.trouble());
    CheckStaged((*plan)->cutTo(0));
    for (const Place& place : places_[number]) {
      Append(PlanOfRange(PartFolder(staging_.tree(), place.task), place.range), **plan);
    }
  }
  work.isSummed = work.isPlanned = true;
}

void MergeRun::fill(Piece& piece) {
  for (uint64_t entry = 0; entry < piece.count; ++entry) {
    piece.finished.push_back(entryOf(piece.source, piece.first + entry));
  }
}

const FinishedEntry& MergeRun::entryOf(size_t input, uint64_t number) {
  const std::vector<Place>& places = places_[input];
  const auto after =
      std::upper_bound(places.begin(), places.end(), number,
                       [](uint64_t wanted, const Place& place) { return wanted < place.first; });
  const Place& place = *(after - 1);
  if (loaded_ != &place) {
    Outcome<std::vector<FinishedEntry>> entries =
        EntriesOfRange(PartFolder(staging_.tree(), place.task), place.range);
    if (!entries) CheckStaged(entries.trouble());
    entries_ = std::move(*entries);
    loaded_ = &place;
  }
  return entries_.at(number - place.first);
}

}  // namespace tarn::archive
