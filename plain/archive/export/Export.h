// Export.h - whole mailboxes as a tree of files.
#ifndef TARN_ARCHIVE_EXPORT_H
#define TARN_ARCHIVE_EXPORT_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "archive/common/ItemFilter.h"
#include "archive/export/ItemExport.h"
#include "console/Failure.h"

namespace tarn::archive {

struct ExportOptions {
  std::vector<std::string> paths;
  std::string folder;  // where the tree is made
  ExportChoices choices;
  FilterOptions filter;
  bool recover = false;
  bool dedupe = false;  // of items with the same content the first alone
  bool resume = false;  // goes on with what an ended run has left

  size_t workers = 1;
  uint64_t memory = uint64_t{1} << 30;   // of a worker
  uint64_t seconds = 120;                // for an item
  uint64_t batchItems = 512;             // put into place together
  std::optional<std::string> temporary;  // where streams are copied to
  std::filesystem::path program;         // of the workers; empty: the one that runs
  std::function<void()> step = [] {};    // called before each change that a run makes
};

// Writes the tree, its manifest, and what shows it. Failed where something could not be exported;
// throws host::Failure where nothing more can be done.
host::ExitStatus Export(ExportOptions options);

struct VerifyOptions {
  std::string folder;
};

// Compares the files of an export with its manifest. Tells each that is missing, changed or extra;
// Failed where there is one.
host::ExitStatus Verify(const VerifyOptions& options);

}  // namespace tarn::archive

#endif
