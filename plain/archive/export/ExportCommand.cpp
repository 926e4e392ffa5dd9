#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>

#include "archive/export/Completion.h"
#include "archive/export/Export.h"
#include "archive/export/ExportReport.h"
#include "archive/export/ExportRun.h"
#include "archive/export/Journal.h"
#include "archive/export/Packing.h"
#include "archive/export/Progress.h"
#include "archive/export/Sources.h"
#include "archive/export/Staging.h"
#include "archive/export/WorkerMessages.h"
#include "console/Paths.h"
#include "console/PrivateFolder.h"
#include "console/StandardStreams.h"
#include "console/SystemFiles.h"
#include "console/Text.h"

namespace tarn::archive {
namespace {

namespace fs = std::filesystem;
using host::ExitStatus;
using host::Failure;

// Where somebody looks on: in place of what was shown there.
void ShowPhase(const std::string& phase) {
  if (host::StandardErrorIsTerminal()) host::WriteStandardError(kClearLine + phase + " ...");
}

struct ClearedLine {
  ~ClearedLine() {
    if (host::StandardErrorIsTerminal()) host::WriteStandardError(kClearLine);
  }
};

// What must be the same for an export that goes on.
std::string SettingsOf(const ExportOptions& options) {
  WorkerRequest request;
  request.choices = options.choices;
  request.filter = options.filter;
  request.recover = options.recover;
  Packer packer;
  packer.put(Packed(request)).put(options.dedupe);
  for (const std::string& path : options.paths) packer.put(path);
  return std::move(packer.bytes());
}

void CheckFolder(const ExportOptions& options, const fs::path& tree) {
  switch (KindOfExportFolder(tree)) {
    case ExportFolder::Free:
      return;
    case ExportFolder::Unfinished:
      if (options.resume) return;
      throw Failure(ExitStatus::Usage, options.folder,
                    "holds an export that was ended early; --resume goes on with it");
    case ExportFolder::Finished:
      throw Failure(ExitStatus::Usage, options.folder,
                    "holds a finished export; name another folder, or remove it first");
    case ExportFolder::NotOurs:
      throw Failure(ExitStatus::Usage, options.folder, "is neither empty nor an export");
  }
}

// The sources that the manifest of a finished export has rows of.
std::set<std::string> SourcesOfManifest(const fs::path& tree) {
  std::set<std::string> names;
  const Outcome<uint64_t> read = ForEachLine(tree / kManifestName, [&](std::string_view line) {
    if (!line.starts_with(R"({"type":"source")")) return true;
    const nlohmann::json row = nlohmann::json::parse(line, nullptr, false);
    if (row.contains("source") && row["source"].is_string()) names.insert(row["source"]);
    return true;
  });
  if (!read) throw Failure(ExitStatus::Usage, read.trouble().reason);
  return names;
}

// Compound files of other programs have no rows.
bool IsExportOf(const ExportSources& sources, const fs::path& tree) {
  std::set<std::string> told = SourcesOfManifest(tree);
  for (const ExportSource& source : sources.all) {
    const bool mayHaveNone = source.found.kind == SourceKind::Compound && !source.found.isNamed;
    if (told.erase(source.name) == 0 && !mayHaveNone) return false;
  }
  return told.empty();
}

// Also of a finished one whose staging could not be removed any more.
bool IsFinished(const ExportOptions& options, const fs::path& tree) {
  if (!options.resume || KindOfExportFolder(tree) != ExportFolder::Finished) return false;
  host::RemoveTree(tree / kStagingName);
  return true;
}

// A folder is asked for, and no source that could be opened has it.
bool HasMissedFolder(const ExportSources& sources) {
  bool isMissed = false;
  for (const ExportSource& source : sources.all) {
    if (source.trouble) continue;
    if (!source.hasMissedFolder) return false;
    isMissed = true;
  }
  return isMissed;
}

}  // namespace

ExitStatus Export(ExportOptions options) {
  if (options.choices.forms.contains(ExportForm::Pdf)) PreparePages(options);
  const fs::path tree = host::PathFromUtf8(options.folder);
  if (options.folder.empty()) throw Failure(ExitStatus::Usage, "empty name of the folder");
  const ClearedLine cleared;
  const bool isFinished = IsFinished(options, tree);
  if (!isFinished) CheckFolder(options, tree);
  host::PrivateFolder temporary(options.temporary);
  ShowPhase("looking for mail files");
  SourceSearch search(options.paths, temporary);
  ExportSources sources = FindSources(search, tree);
  if (isFinished) {
    if (!IsExportOf(sources, tree)) {
      throw Failure(ExitStatus::Usage, options.folder,
                    "holds a finished export of other files; export into a new folder");
    }
    Say(options.folder + ": the export there is finished; its files are checked");
    return Verify({options.folder});
  }
  if (HasNothingToOpen(sources)) return TellUnopened(sources);
  if (options.resume) ShowPhase("checking what is exported already");
  Staging staging(tree, SettingsOf(options), options.resume);
  RunExport(options, sources, staging);
  ShowPhase("writing manifest, catalogue and page");
  const ExportCounts counts = CompleteExport(options, sources, staging, SayTrouble);
  if (HasMissedFolder(sources)) {
    Say("no folder matches " + *options.filter.folder + "; list --folders shows which there are");
  }
  return ReportExport(counts, sources.otherFiles, options.folder);
}

}  // namespace tarn::archive
