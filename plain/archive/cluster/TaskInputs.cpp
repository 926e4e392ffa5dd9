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

void MakeFolders(const fs::path& path) {
  std::error_code error;
  fs::create_directories(path, error);
  if (error) ThrowTemporary(SystemTrouble(path, error.value()).reason);
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
    // One that could not be read wholly cannot be copied either.
    const bool isCopied = stage_ && !input.sum.sha256.empty();
    source.found.path = isCopied ? staged(range.input) : pathOf(input);
    // Of whole inputs the worker takes the sum, and of copies it is known.
    if (range.range && !isCopied) check(source.found.path, input);
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
  std::error_code error;
  const fs::path& stage = stage_->path(error);
  if (error) ThrowTemporary("no folder can be made for copies: " + host::ErrorText(error));
  // Readers look at the content alone, but the names of a Maildir's folders matter.
  const fs::path to = stage / std::to_string(number);
  const bool isMaildir = input.source.found.kind == SourceKind::Maildir;
  const Outcome<FileSum> sum = isMaildir ? copyMaildir(from, to) : copy(from, to);
  if (!sum) ThrowTemporary(sum.trouble().reason);
  if (*sum != input.sum) ThrowChanged(input);
  return staged_[number] = to;
}

Outcome<FileSum> TaskInputs::copyMaildir(const fs::path& from, const fs::path& to) const {
  const Outcome<std::vector<std::string>> names = FilesOfMaildir(from);
  if (!names) return names.trouble();
  for (const char* const own : {"cur", "new"}) MakeFolders(to / own);
  for (const std::string& name : *names) {
    MakeFolders((to / name).parent_path());
    const Outcome<FileSum> copied = copy(from / name, to / name);
    if (!copied) return copied.trouble();
  }
  // Folders without mails are folders too.
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(from, error)) {
    for (const char* const own : {"cur", "new"}) {
      std::error_code ignored;
      if (fs::is_directory(entry.path() / own, ignored)) {
        MakeFolders(to / entry.path().filename() / own);
      }
    }
  }
  if (error) return SystemTrouble(from, error.value());
  return SumOfSource(to, SourceKind::Maildir, beat_);
}

Outcome<FileSum> TaskInputs::copy(const fs::path& from, const fs::path& to) const {
  const Outcome<std::unique_ptr<HashedFile>> file = HashedFile::create(to);
  if (!file) return file.trouble();
  std::error_code error;
  const fs::path target = fs::canonical(from, error);
  std::optional<Trouble> full;
  const std::optional<Trouble> unread =
      ReadInPieces(error ? from : target, [&](std::string_view piece) {
        beat_();
        full = (*file)->write(piece);
        return !full;
      });
  if (unread) return *unread;
  if (full) return *full;
  return (*file)->finish();
}

}  // namespace tarn::archive
