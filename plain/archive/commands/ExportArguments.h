// ExportArguments.h - arguments that several commands have in common.
#ifndef TARN_ARCHIVE_COMMANDS_EXPORTARGUMENTS_H
#define TARN_ARCHIVE_COMMANDS_EXPORTARGUMENTS_H

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

#include "archive/commands/FilterArguments.h"
#include "archive/export/Export.h"

namespace tarn::archive {

void AddTemporary(CLI::App& command, std::optional<std::string>& temporary);

// What shapes the result of an export.
void AddExportChoices(CLI::App& command, ExportOptions& options);
// What follows from several of them, once all are read. Throws CLI::ValidationError where they do
// not go together.
void CombineExportChoices(const CLI::App& command, ExportOptions& options);

// What an item may take.
void AddWorkerLimits(CLI::App& command, ExportOptions& options);

}  // namespace tarn::archive

#endif
