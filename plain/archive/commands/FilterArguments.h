// FilterArguments.h - the options that choose among items.
#ifndef TARN_ARCHIVE_FILTERARGUMENTS_H
#define TARN_ARCHIVE_FILTERARGUMENTS_H

#include <CLI/CLI.hpp>

#include "archive/common/ItemFilter.h"

namespace tarn::archive {

// Where --to has another meaning, recipients go by another name.
void AddFilter(CLI::App& command, FilterOptions& filter, const char* recipients = "--to");

}  // namespace tarn::archive

#endif
