// Completion.h - the end of an export: its journal becomes the manifest, the catalogue and the
// page.
#ifndef TARN_ARCHIVE_COMPLETION_H
#define TARN_ARCHIVE_COMPLETION_H

#include <cstdint>
#include <functional>
#include <string>

#include "archive/export/Export.h"
#include "archive/export/Sources.h"
#include "archive/export/Staging.h"

namespace tarn::archive {

struct ExportCounts {
  uint64_t exported = 0;
  uint64_t partial = 0;
  uint64_t failed = 0;
  uint64_t copies = 0;
  bool areCopiesLeftOut = false;  // they have rows and no files
  uint64_t sources = 0;
  uint64_t failedSources = 0;
  uint64_t pdfs = 0;         // attachments of that name which the catalogue was told of
  uint64_t otherFiles = 0;   // that turned out to be no mail files when they were opened
  bool hasUnopened = false;  // one that the command line names

  uint64_t items() const { return exported + partial + failed; }
};

// Called with what went wrong of a source: "Inbox: item 200024: the recipients cannot be read".
using TellTrouble = std::function<void(const std::string& source, const std::string& what)>;

// Puts everything into its place; the manifest comes last. Throws host::Failure (Failed) where that
// cannot be.
ExportCounts CompleteExport(const ExportOptions& options, const ExportSources& sources,
                            Staging& staging, const TellTrouble& tell);

}  // namespace tarn::archive

#endif
