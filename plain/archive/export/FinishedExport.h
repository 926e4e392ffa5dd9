// FinishedExport.h - what the manifest of a finished export tells of how it was made.
#ifndef TARN_ARCHIVE_FINISHEDEXPORT_H
#define TARN_ARCHIVE_FINISHEDEXPORT_H

#include <filesystem>
#include <optional>
#include <string>

#include "archive/export/Export.h"
#include "archive/export/Sources.h"

namespace tarn::archive {

// Why the export in that folder is no answer to these options, as words that follow its name: it is
// of other sources, or has forms, attachments, copies, PDFs of folders or a catalogue where none
// are asked for, or the other way round. None where nothing speaks against it. Filters leave no
// trace but the items that are there, and are not compared. Throws host::Failure (Usage) where the
// manifest cannot be read.
std::optional<std::string> DifferenceFrom(const ExportOptions& options,
                                          const ExportSources& sources,
                                          const std::filesystem::path& tree);

}  // namespace tarn::archive

#endif
