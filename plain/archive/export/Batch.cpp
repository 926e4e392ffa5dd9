#include "archive/export/Batch.h"

#include <algorithm>
#include <map>
#include <memory>
#include <span>
#include <system_error>
#include <utility>

#include "archive/export/ManifestRows.h"
#include "archive/export/OnePdf.h"
#include "archive/export/SourceSum.h"
#include "console/Json.h"
#include "console/Paths.h"
#include "console/SystemFiles.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;

constexpr uint64_t kBatchBytes = uint64_t{64} << 20;

}  // namespace

// The files that workers have written, each open while one entry after the other is read from it.
// What comes from one place and goes to one place goes in one piece.
class WorkerFiles {
 public:
  explicit WorkerFiles(GrownFiles& grown) : grown_(grown) {}

  // What the worker has written of the entry into one of its parts.
  std::string read(const FinishedEntry& finished, WorkerPart part) {
    const uint64_t begin = finished.begins.of(part);
    std::string bytes(finished.ends.of(part) - begin, '\0');
    if (!bytes.empty()) read(finished.folder, part, begin, bytes);
    return bytes;
  }

  // The same into a file that grows, at the latest when this is flushed.
  void append(const FinishedEntry& finished, WorkerPart part, const std::string& name) {
    const uint64_t begin = finished.begins.of(part);
    if (begin == finished.ends.of(part)) return;
    Copy& copy = copies_[part];
    const bool goesOn = copy.name == name && copy.folder == finished.folder && copy.end == begin;
    if (!goesOn) {
      flush(part, copy);
      copy = {finished.folder, name, begin, begin};
    }
    copy.end = finished.ends.of(part);
  }

  void flush() {
    for (auto& [part, copy] : copies_) flush(part, copy);
  }

 private:
  struct Copy {
    fs::path folder;
    std::string name;
    uint64_t begin = 0;
    uint64_t end = 0;
  };

  // In pieces: a mail may be larger than memory.
  void flush(WorkerPart part, Copy& copy) {
    constexpr uint64_t kPiece = uint64_t{256} << 10;
    while (copy.begin < copy.end) {
      piece_.resize(std::min(kPiece, copy.end - copy.begin));
      read(copy.folder, part, copy.begin, piece_);
      CheckStaged(grown_.append(copy.name, piece_));
      copy.begin += piece_.size();
    }
  }

  void read(const fs::path& folder, WorkerPart part, uint64_t at, std::span<char> room) {
    if (folder != folder_) {
      files_.clear();
      folder_ = folder;
    }
    std::unique_ptr<GrowingFile>& file = files_[part];
    if (!file) {
      Outcome<std::unique_ptr<GrowingFile>> opened = GrowingFile::open(folder / NameOf(part));
      if (!opened) CheckStaged(opened.trouble());
      file = std::move(*opened);
    }
    CheckStaged(file->read(at, room));
  }

  GrownFiles& grown_;
  fs::path folder_;
  std::map<WorkerPart, std::unique_ptr<GrowingFile>> files_;
  std::map<WorkerPart, Copy> copies_;
  std::string piece_;
};

namespace {

// All of it is elsewhere; what is gone before a sync need not go to the disk.
void RemoveParts(const fs::path& folder) {
  std::error_code ignored;
  for (size_t part = 0; part < kWorkerParts; ++part) {
    fs::remove(folder / NameOf(static_cast<WorkerPart>(part)), ignored);
  }
}

// The rows of a copy, which has no files of its own.
std::string WithoutFiles(const std::string& rows) {
  std::string changed;
  for (size_t begin = 0; begin < rows.size();) {
    const size_t end = rows.find('\n', begin);
    auto row =
        host::ParsedJson<nlohmann::ordered_json>(std::string_view(rows).substr(begin, end - begin));
    RemoveFiles(row);
    changed += host::JsonLine(row) + "\n";
    begin = end + 1;
  }
  return changed;
}

}  // namespace

Batch::Batch(const ExportOptions& options, WorkQueue& queue, Staging& staging, Progress& progress)
    : options_(options),
      queue_(queue),
      staging_(staging),
      progress_(progress),
      fingerprints_(staging.resumed().fingerprints) {}

bool Batch::isFull() const {
  return gathered_.items >= options_.batchItems || gathered_.bytes >= kBatchBytes;
}

void Batch::add(Piece& piece) {
  switch (piece.kind) {
    case PieceKind::Begin:
      gathered_.rows += SourceLine(queue_.source(piece.source).name, queue_.work(piece.source).sum);
      return;
    case PieceKind::Entries:
      return addEntries(piece);
    case PieceKind::End:
      return endSource(piece.source);
  }
}

void Batch::addEntries(Piece& piece) {
  if (planSource_ != piece.source || !plan_ || plan_->offset() != piece.offset) {
    plan_ = queue_.openPlan(piece.source, piece.offset);
    planSource_ = piece.source;
  }
  uint64_t bytes = 0;
  WorkerFiles files(staging_.grown());
  for (FinishedEntry& finished : piece.finished) {
    const Outcome<std::optional<PlanEntry>> entry = plan_->next();
    if (!entry) CheckStaged(entry.trouble());
    addEntry(piece, **entry, finished, files);
    bytes += finished.bytes;
  }
  files.flush();
  gathered_.items += piece.count;
  gathered_.bytes += bytes;
  gathered_.rows += BatchLine(queue_.source(piece.source).name, piece.first + piece.count,
                              staging_.grown().takeChanges());
  for (fs::path& folder : piece.workFolders) {
    RemoveParts(folder);
    gathered_.workFolders.push_back(std::move(folder));
  }
  progress_.done(piece.count, bytes);
}

void Batch::addEntry(Piece& piece, const PlanEntry& entry, FinishedEntry& finished,
                     WorkerFiles& files) {
  const ExportSource& source = queue_.source(piece.source);
  if (finished.folder.empty()) {
    gathered_.rows += RowOfLost(entry, source.name, finished.reason);
    return;
  }
  const bool isCopy = !finished.fingerprint.empty() && options_.dedupe &&
                      !fingerprints_.insert(finished.fingerprint).second;
  const std::string rows = files.read(finished, WorkerPart::Rows);
  gathered_.rows += isCopy ? WithoutFiles(rows) : rows;
  const std::string folder = source.tree + (entry.folderPath.empty() ? "" : "/" + entry.folderPath);
  options_.step();
  files.append(finished, WorkerPart::Texts, kTextsName);
  if (isCopy) return;
  if (options_.choices.forms.contains(ExportForm::Mbox) && entry.kind == PlanKind::Item) {
    files.append(finished, WorkerPart::Mails, folder + "/" + kMboxName);
  }
  if (options_.choices.onePdf && entry.kind == PlanKind::Item) {
    files.append(finished, WorkerPart::Pages, folder + "/" + OnePdfName(1));
  }
  if (finished.hasFolder) {
    gathered_.moves.push_back({finished.folder / std::to_string(finished.number),
                               staging_.tree() / host::PathFromUtf8(folder + "/" + entry.name)});
  }
}

void Batch::endSource(size_t source) {
  SourceWork& work = queue_.work(source);
  const FoundSource& found = queue_.source(source).found;
  if (work.reason.empty() && work.stamp != StampOfSource(found.path, found.kind)) {
    work.reason = "has changed while it was exported";
  }
  gathered_.rows += EndLine(queue_.source(source).name, work.reason);
  ++gathered_.items;
  queue_.dropPlan(source);
  if (work.reason.empty()) progress_.tell(queue_.source(source).name, work.entries);
}

// One sync for all of it, which nobody waits for as long as there is something else to do.
void Batch::putAway() {
  place();
  if (gathered_.rows.empty()) return;
  options_.step();
  leaving_ = std::exchange(gathered_, {});
  // Where there can be no thread it is done when it is asked for.
  onDisk_ = std::async(std::launch::async | std::launch::deferred, [this] { staging_.sync(); });
}

void Batch::finish() {
  putAway();
  place();
}

// When it is on the disk it is put into its places, and then it is finished.
void Batch::place() {
  if (!onDisk_.valid()) return;
  onDisk_.get();
  moveFolders(leaving_.moves);
  options_.step();
  CheckStaged(staging_.journal().append(leaving_.rows + SumLine(leaving_.rows)));
  CheckStaged(staging_.journal().sync());
  options_.step();
  for (const fs::path& folder : leaving_.workFolders) host::RemoveTree(folder);
}

void Batch::moveFolders(const std::vector<Move>& moves) {
  std::set<fs::path> made;
  for (const Move& move : moves) {
    options_.step();
    std::error_code error;
    std::error_code ignored;
    if (made.insert(move.to.parent_path()).second) {
      fs::create_directories(move.to.parent_path(), error);
      if (error) CheckStaged(SystemTrouble(move.to.parent_path(), error.value()));
    }
    fs::rename(move.from, move.to, error);
    // One that is made once, as by a part, may be in its place since a run that was ended early.
    if (error == std::errc::no_such_file_or_directory &&
        !fs::exists(fs::symlink_status(move.from, ignored)) &&
        fs::is_directory(fs::symlink_status(move.to, ignored))) {
      continue;
    }
    if (error) {
      // What may be there is of a batch that was not finished.
      host::RemoveTree(move.to);
      fs::rename(move.from, move.to, error);
    }
    if (error) CheckStaged(SystemTrouble(move.to, error.value()));
  }
}

}  // namespace tarn::archive
