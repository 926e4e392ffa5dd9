// FinishedExport.h - what the manifest of a finished export tells of how it was made.
#ifndef TARN_ARCHIVE_FINISHEDEXPORT_H
#define TARN_ARCHIVE_FINISHEDEXPORT_H

#include <filesystem>
#include <optional>
#include <string>

#include "archive/export/Export.h"
#include "archive/export/Sources.h"

namespace tarn::archive {

struct FinishedExport {
  // Why it is no answer to the options, as words that follow its name: it is of other sources, of
  // sources that have changed since, or has forms, attachments, copies, PDFs of folders or a
  // catalogue where none are asked for, or the other way round. None where nothing speaks against
  // it. Filters leave no trace but the items that are there, and are not compared.
  std::optional<std::string> difference;
  bool hasFailures = false;  // items or sources that could not be read
};

// The export in that folder. Reads the sources that are there. Throws host::Failure (Usage) where
// the manifest cannot be read.
FinishedExport LookAtFinished(const ExportOptions& options, const ExportSources& sources,
                              const std::filesystem::path& tree);

}  // namespace tarn::archive

#endif
