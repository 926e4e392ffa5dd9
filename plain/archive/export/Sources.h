// Sources.h - what an export is of: every mail file that its paths name.
#ifndef TARN_ARCHIVE_EXPORT_SOURCES_H
#define TARN_ARCHIVE_EXPORT_SOURCES_H

#include <filesystem>
#include <string>
#include <vector>

#include "archive/model/Trouble.h"
#include "archive/sources/SourceSearch.h"

namespace tarn::archive {

struct ExportSource {
  FoundSource found;
  std::string name;  // TellableName of its path: what the export calls it everywhere
  std::string tree;  // its folder within the export
  std::optional<Trouble> trouble;
  bool hasMissedFolder = false;  // a folder is asked for, and it has none that is the one
  std::filesystem::path range;   // the file of a PlanRange where not the whole source is wanted
};

struct ExportSources {
  std::vector<ExportSource> all;  // by name, each once
  uint64_t otherFiles = 0;
};

// What is below `tree`, where the export itself is, is not among them.
ExportSources FindSources(SourceSearch& search, const std::filesystem::path& tree);

}  // namespace tarn::archive

#endif
