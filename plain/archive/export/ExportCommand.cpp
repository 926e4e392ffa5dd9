#include <algorithm>
#include <optional>

#include "archive/export/Completion.h"
#include "archive/export/Export.h"
#include "archive/export/ExportReport.h"
#include "archive/export/ExportRun.h"
#include "archive/export/FinishedExport.h"
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

bool IsFinished(const ExportOptions& options, const fs::path& tree) {
  return options.resume && KindOfExportFolder(tree) == ExportFolder::Finished;
}

ExitStatus GoOnWithFinished(const ExportOptions& options, const ExportSources& sources,
                            const fs::path& tree) {
  ShowPhase("comparing the mail files with the export");
  const FinishedExport finished = LookAtFinished(options, sources, tree);
  if (finished.difference) throw Failure(ExitStatus::Usage, options.folder, *finished.difference);
  // Where it could not be removed any more.
  host::RemoveTree(tree / kStagingName);
  Say(options.folder + ": the export there is finished; its files are checked");
  const ExitStatus status = Verify({options.folder});
  if (status != ExitStatus::Done || !finished.hasFailures) return status;
  Say("not all of it could be read; manifest.jsonl tells what");
  return ExitStatus::Failed;
}

ExportCounts MakeExport(const ExportOptions& options, ExportSources& sources, Staging& staging) {
  try {
    RunExport(options, sources, staging);
    ShowPhase("writing manifest, catalogue and page");
    return CompleteExport(options, sources, staging, SayTrouble);
  } catch (const StagedFailure& failure) {
    throw Failure(failure.status(),
                  std::string(failure.what()) + "; --resume goes on with what is finished");
  }
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
  if (isFinished) return GoOnWithFinished(options, sources, tree);
  if (HasNothingToOpen(sources)) return TellUnopened(sources);
  if (options.resume) ShowPhase("checking what is exported already");
  Staging staging(tree, SettingsOf(options), options.resume);
  const ExportCounts counts = MakeExport(options, sources, staging);
  SayMissedFolder(sources, options.filter);
  SayUnreadPdfs(counts.pdfs);
  return ReportExport(counts, sources.otherFiles, options.folder);
}

}  // namespace tarn::archive
