#include "archive/export/ExportReport.h"

#include <algorithm>

#include "archive/catalogue/PdfText.h"
#include "archive/export/Progress.h"
#include "console/Paths.h"
#include "console/StandardStreams.h"
#include "console/Text.h"
#include "siblings/client/InstalledHelpers.h"

namespace tarn::archive {
namespace {

using host::ExitStatus;
using host::Failure;

std::string Number(uint64_t count, const std::string& what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

void Summarise(const ExportCounts& counts, const std::string& folder) {
  std::string line = Number(counts.items() - counts.failed, "item") + " of " +
                     Number(counts.sources, "source") + " exported to " + folder;
  if (counts.partial != 0) line += ", " + std::to_string(counts.partial) + " of them not wholly";
  if (counts.copies != 0) {
    line +=
        "; " + std::to_string(counts.copies) + (counts.copies == 1 ? " is a copy" : " are copies");
    if (counts.areCopiesLeftOut) line += ", and not written again";
  }
  if (counts.failed != 0) line += "; " + Number(counts.failed, "item") + " failed";
  if (counts.failedSources != 0) {
    line += "; " + Number(counts.failedSources, "source") + " could not be read wholly";
  }
  Say(line);
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

void Say(const std::string& line) {
  const std::string clear = host::StandardErrorIsTerminal() ? kClearLine : "";
  host::WriteStandardError(clear + "tarnmail: " + host::Printable(line) + "\n");
}

void SayTrouble(const std::string& source, const std::string& what) { Say(source + ": " + what); }

void PreparePages(ExportOptions& options) {
  PageChoices& choices = options.choices.pages;
  if (choices.helpers.empty()) choices.helpers = host::Utf8FromPath(pages::FolderOfHelpers());
  // An item that takes this for its layout and again for its PDF is not the worker's to lose.
  choices.seconds = std::max<uint64_t>(1, options.seconds * 5 / 12);
  try {
    TryHelpers(HelpersOf(choices));
  } catch (const pages::PageFailure& failure) {
    throw Failure(ExitStatus::Broken, "no pages can be made", failure.what());
  }
}

void SayUnreadPdfs(uint64_t count) {
  if (count == 0 || CanReadPdf()) return;
  Say("pdftotext is not installed: " + Number(count, "PDF") + (count == 1 ? " is" : " are") +
      " found by name alone");
}

void SayMissedFolder(const ExportSources& sources, const FilterOptions& filter) {
  if (!HasMissedFolder(sources)) return;
  Say("no folder matches " + *filter.folder + "; list --folders shows which there are");
}

bool HasNothingToOpen(const ExportSources& sources) {
  return !sources.all.empty() &&
         std::all_of(sources.all.begin(), sources.all.end(),
                     [](const ExportSource& source) { return source.trouble.has_value(); });
}

ExitStatus TellUnopened(const ExportSources& sources) {
  bool isNamed = false;
  for (const ExportSource& source : sources.all) {
    Say(source.name + ": " + source.trouble->reason);
    isNamed = isNamed || source.found.isNamed;
  }
  Say("nothing is exported");
  return isNamed ? ExitStatus::Usage : ExitStatus::Failed;
}

ExitStatus ReportExport(const ExportCounts& counts, uint64_t otherFiles,
                        const std::string& folder) {
  const uint64_t others = otherFiles + counts.otherFiles;
  if (others != 0) {
    Say(Number(others, "file") + (others == 1 ? " is no mail file" : " are no mail files"));
  }
  Summarise(counts, folder);
  if (counts.hasUnopened) return ExitStatus::Usage;
  return counts.failed != 0 || counts.failedSources != 0 ? ExitStatus::Failed : ExitStatus::Done;
}

}  // namespace tarn::archive
