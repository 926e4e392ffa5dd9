#include "archive/cluster/TaskInputs.h"

#include <fstream>
#include <system_error>
#include <utility>

#include "archive/cluster/InputPrint.h"
#include "archive/export/SourceSum.h"
#include "console/Failure.h"
#include "console/SystemErrors.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;
using host::ExitStatus;
using host::Failure;

[[noreturn]] void ThrowTemporary(const std::string& reason) {
  throw Failure(ExitStatus::Temporary, reason);
}

}  // namespace

void ThrowChanged(const PlannedInput& input) {
  throw Failure(ExitStatus::Usage, input.source.found.name, "has changed since it was planned");
}

TaskInputs::TaskInputs(const PlanFile& plan, const std::optional<std::string>& stage,
                       std::function<void()> beat)
    : plan_(plan), beat_(std::move(beat)) {
  if (stage) stage_ = std::make_unique<host::PrivateFolder>(stage);
}

fs::path TaskInputs::pathOf(const PlannedInput& input) const {
  const fs::path name = input.source.found.name;
  return name.is_relative() ? fs::path(plan_.facts().directory) / name : name;
}

ExportSources TaskInputs::of(const PlannedTask& task, const fs::path& folder) {
  ExportSources sources;
  for (const PlannedRange& range : task.ranges) {
    const PlannedInput& input = plan_.inputs().at(range.input);
    ExportSource source = input.source;
    source.found.path = stage_ ? staged(range.input) : pathOf(input);
    // Of whole inputs the worker takes the sum, and of copies it is known.
    if (range.range && !stage_) check(source.found.path, input);
    if (range.range) {
      source.range = folder / ("range" + std::to_string(sources.all.size()));
      const Outcome<std::unique_ptr<GrowingFile>> file = GrowingFile::open(source.range);
      if (!file) ThrowTemporary(file.trouble().reason);
      const std::optional<Trouble> full = (*file)->append(Packed(*range.range));
      if (full) ThrowTemporary(full->reason);
    }
    sources.all.push_back(std::move(source));
  }
  return sources;
}

void TaskInputs::check(const fs::path& path, const PlannedInput& input) const {
  const Outcome<bool> isSame = IsSameInput(path, input, beat_);
  if (!isSame) ThrowTemporary(isSame.trouble().reason);
  if (!*isSame) ThrowChanged(input);
}

fs::path TaskInputs::staged(size_t number) {
  const auto known = staged_.find(number);
  if (known != staged_.end()) return known->second;
  const PlannedInput& input = plan_.inputs().at(number);
  const fs::path from = pathOf(input);
  // Readers look at the content alone, but the names of a Maildir's folders matter.
  const fs::path to = stage_->path() / std::to_string(number);
  if (input.source.found.kind == SourceKind::Maildir) {
    std::error_code error;
    const Outcome<std::vector<std::string>> names = FilesOfMaildir(from);
    if (!names) ThrowTemporary(names.trouble().reason);
    for (const char* const own : {"cur", "new"}) fs::create_directories(to / own, error);
    for (const std::string& name : *names) {
      fs::create_directories((to / name).parent_path(), error);
      copy(from / name, to / name);
    }
    // Folders without mails are folders too.
    for (const fs::directory_entry& entry : fs::directory_iterator(from, error)) {
      for (const char* const own : {"cur", "new"}) {
        std::error_code ignored;
        if (!fs::is_directory(entry.path() / own, ignored)) continue;
        fs::create_directories(to / entry.path().filename() / own, ignored);
      }
    }
  } else {
    copy(from, to);
  }
  const Outcome<FileSum> sum = SumOfSource(to, input.source.found.kind, beat_);
  if (!sum) ThrowTemporary(sum.trouble().reason);
  if (*sum != input.sum) ThrowChanged(input);
  return staged_[number] = to;
}

void TaskInputs::copy(const fs::path& from, const fs::path& to) const {
  const Outcome<std::unique_ptr<HashedFile>> file = HashedFile::create(to);
  if (!file) ThrowTemporary(file.trouble().reason);
  std::error_code error;
  const fs::path target = fs::canonical(from, error);
  std::optional<Trouble> full;
  const std::optional<Trouble> unread =
      ReadInPieces(error ? from : target, [&](std::string_view piece) {
        beat_();
        full = (*file)->write(piece);
        return !full;
      });
  if (unread) ThrowTemporary(unread->reason);
  if (full) ThrowTemporary(full->reason);
  const Outcome<FileSum> sum = (*file)->finish();
  if (!sum) ThrowTemporary(sum.trouble().reason);
}

}  // namespace tarn::archive
