// ExportRun.h - the sources of an export gone through by workers, and what they make put into its
// place batch by batch, in the order of the sources and their items.
#ifndef TARN_ARCHIVE_EXPORTRUN_H
#define TARN_ARCHIVE_EXPORTRUN_H

#include "archive/export/Export.h"
#include "archive/export/Sources.h"
#include "archive/export/Staging.h"

namespace tarn::archive {

// To the end. Throws host::Failure where nothing more can be written, std::system_error where no
// worker can be had. What is wrong with a source is told in `sources`.
void RunExport(const ExportOptions& options, ExportSources& sources, Staging& staging);

}  // namespace tarn::archive

#endif
