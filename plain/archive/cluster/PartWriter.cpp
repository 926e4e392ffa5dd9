#include "archive/cluster/PartWriter.h"

#include <algorithm>
#include <cmath>
#include <ctime>
#include <system_error>
#include <utility>

#include "archive/cluster/Machine.h"
#include "archive/common/MomentText.h"
#include "archive/export/Staging.h"
#include "console/Paths.h"
#include "console/SystemErrors.h"
#include "console/SystemFiles.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;
using host::ExitStatus;
using host::Failure;

[[noreturn]] void ThrowTemporary(const fs::path& path, const std::error_code& error) {
  throw Failure(ExitStatus::Temporary, host::Utf8FromPath(path), host::ErrorText(error));
}

// A folder that is no part. Names that a server has told before may be old, and a list is not.
bool HasNoFacts(const fs::path& folder) {
  std::error_code error;
  fs::directory_iterator names(folder, error);
  if (error) return false;
  return std::none_of(begin(names), end(names), [](const fs::directory_entry& entry) {
    return entry.path().filename() == kPartFactsName;
  });
}

// The folder of an attempt is parts/.TASK.PROCESS.ATTEMPT until it is the part.
std::string BeginOfDrafts(const fs::path& place) { return "." + place.filename().string() + "."; }

// What an attempt has left that had no time to. One on another machine may still be at work.
void RemoveEndedDrafts(const fs::path& place) {
  const std::string begin = BeginOfDrafts(place);
  std::error_code error;
  fs::directory_iterator names(place.parent_path(), error);
  for (; !error && names != fs::directory_iterator(); names.increment(error)) {
    const std::string name = names->path().filename().string();
    if (!name.starts_with(begin)) continue;
    const size_t end = std::min(name.find('.', begin.size()), name.size());
    if (HasEnded(name.substr(begin.size(), end - begin.size()))) host::RemoveTree(names->path());
  }
}

void Check(const std::optional<Trouble>& trouble) {
  if (trouble) throw Failure(ExitStatus::Temporary, trouble->reason);
}

}  // namespace

PartWriter::PartWriter(const fs::path& tree, const std::string& plan, uint64_t task,
                       std::function<void()> step)
    : place_(PartFolder(tree, task)),
      step_(std::move(step)),
      begin_(std::chrono::steady_clock::now()) {
  facts_.plan = plan;
  facts_.task = task;
  facts_.attempt = UniqueName();
  facts_.host = HostName();
  facts_.begun = Iso8601(Moment{static_cast<int64_t>(std::time(nullptr)), std::nullopt});
  // Several tasks may make it at the same time.
  std::error_code error;
  fs::create_directories(place_.parent_path(), error);
  std::error_code unknown;
  if (!fs::is_directory(place_.parent_path(), unknown)) ThrowTemporary(place_.parent_path(), error);
  RemoveEndedDrafts(place_);
  error = draft_.make([this](std::error_code& failed) {
    fs::path draft =
        place_.parent_path() / (BeginOfDrafts(place_) + ProcessName() + "." + facts_.attempt);
    fs::create_directory(draft, failed);
    return draft;
  });
  if (error) ThrowTemporary(place_.parent_path(), error);
}

void PartWriter::add(size_t range, const FinishedEntry& entry) {
  if (range >= entries_.size()) entries_.resize(range + 1);
  entries_[range].push_back(entry);
}

// From the staging of the workers into the part.
void PartWriter::gather(size_t ranges) {
  const fs::path staging = folder() / kStagingName;
  std::error_code error;
  for (const char* const name : {"work", "plans"}) {
    fs::rename(staging / name, folder() / name, error);
    if (error) ThrowTemporary(folder() / name, error);
  }
  host::RemoveTree(staging);
  for (const fs::directory_entry& entry : fs::directory_iterator(folder() / "work", error)) {
    if (entry.path().filename().string().starts_with("beat")) host::RemoveFile(entry.path());
  }
  fs::create_directory(folder() / "entries", error);
  if (error) ThrowTemporary(folder() / "entries", error);
  entries_.resize(ranges);
}

void PartWriter::write(const fs::path& path, const std::string& bytes) const {
  const Outcome<std::unique_ptr<HashedFile>> file = HashedFile::create(path);
  if (!file) Check(file.trouble());
  Check((*file)->write(bytes));
  const Outcome<FileSum> sum = (*file)->finish();
  if (!sum) Check(sum.trouble());
}

double PartWriter::seconds() const {
  const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin_;
  return std::round(time.count() * 1000) / 1000;
}

FailedAttempt PartWriter::asFailed(int status, const std::string& reason) const {
  return {facts_.plan,  facts_.task, facts_.attempt, facts_.host,
          facts_.begun, seconds(),   status,         reason};
}

void PartWriter::describe(size_t ranges, const std::function<void()>& beat) {
  PartSum sum;
  for (size_t range = 0; range < ranges; ++range) {
    Check(sum.addPlan(PlanOfRange(folder(), range)));
    for (FinishedEntry& entry : entries_[range]) {
      if (!entry.folder.empty()) entry.folder = folder() / "work" / entry.folder.filename();
      Check(sum.add(entry));
      beat();
    }
    write(EntriesPath(folder(), range), Packed(entries_[range]));
  }
  sum.finish(facts_);
  facts_.seconds = seconds();
  write(folder() / kPartFactsName, TextOfPart(facts_));
}

// Where a name is taken by a folder that is not empty, it cannot be given to another.
void PartWriter::commit(size_t ranges, const std::function<void()>& beat) {
  step_();
  gather(ranges);
  describe(ranges, beat);
  step_();
  Check(SyncFileSystem(folder()));
  beat();
  step_();
  std::error_code error;
  fs::rename(folder(), place_, error);
  if (error) {
    const Outcome<PartFacts> first = PartIn(place_);
    if (first) return compare(*first);
    const bool isDamaged = first.trouble().kind == TroubleKind::Damaged || HasNoFacts(place_);
    if (!isDamaged || !SetPartAside(place_)) ThrowTemporary(place_, error);
    fs::rename(folder(), place_, error);
    if (error) ThrowTemporary(place_, error);
  }
  draft_.keep();
  step_();
  SyncFolder(place_.parent_path());
}

void PartWriter::compare(const PartFacts& first) {
  // A server that was asked twice has done it at the first time.
  if (first.attempt == facts_.attempt) return draft_.keep();
  if (first.sha256 == facts_.sha256) return;
  // Both are kept to be looked at.
  const fs::path other = place_.string() + ".other-" + facts_.attempt;
  std::error_code failed;
  fs::rename(folder(), other, failed);
  if (!failed) draft_.keep();
  throw Failure(ExitStatus::Usage, host::Utf8FromPath(place_),
                "was committed by another attempt with other bytes than " +
                    host::Utf8FromPath(other) + " has");
}

}  // namespace tarn::archive
