// ExportReport.h - what an export says to its user, and what it looks after before it begins.
#ifndef TARN_ARCHIVE_EXPORTREPORT_H
#define TARN_ARCHIVE_EXPORTREPORT_H

#include <cstdint>
#include <string>

#include "archive/export/Completion.h"
#include "archive/export/Export.h"
#include "archive/export/Sources.h"
#include "console/Failure.h"

namespace tarn::archive {

// A line on standard error.
void Say(const std::string& line);
// As TellTrouble.
void SayTrouble(const std::string& source, const std::string& what);

// For pages: finds the helpers, unless their folder is known, and sees that they work. Throws
// host::Failure (Broken).
void PreparePages(ExportOptions& options);

// No source can be opened: nothing is made then, so that the same folder can be used once the paths
// are right.
bool HasNothingToOpen(const ExportSources& sources);
// Says so, and tells the exit status.
host::ExitStatus TellUnopened(const ExportSources& sources);

// Says so where no source that could be opened has the folder that the filter asks for.
void SayMissedFolder(const ExportSources& sources, const FilterOptions& filter);

// Says that so many PDFs are not searched where the program that reads them is not installed.
void SayUnreadPdfs(uint64_t count);

// The summary, and the exit status that follows from it. `otherFiles` are those that were found
// beside the sources.
host::ExitStatus ReportExport(const ExportCounts& counts, uint64_t otherFiles,
                              const std::string& folder);

}  // namespace tarn::archive

#endif
