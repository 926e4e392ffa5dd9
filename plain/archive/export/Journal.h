// Journal.h - what of an export is finished, as lines of a file: rows of items in batches, each
// ended by a line that says how far the source is.
//
// A line is a JSON object: a row (ManifestRows.h), or one with "journal": "source" (a source
// begins), "batch", "end" (of a source).
#ifndef TARN_ARCHIVE_JOURNAL_H
#define TARN_ARCHIVE_JOURNAL_H

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "archive/export/GrownFiles.h"

namespace tarn::archive {

// Of the files of GrownFiles: what the catalogue is told. Mboxes have their paths as names.
inline constexpr const char* kTextsName = "texts";

struct JournalState {
  struct Source {
    std::string sha256;
    uint64_t entries = 0;  // of its plan, that are finished
    bool isEnded = false;
  };
  std::map<std::string, Source> sources;  // by name
  std::set<std::string> fingerprints;     // of outermost items
  uint64_t goodBytes = 0;                 // of the journal; what is after that is no finished batch
};

std::string SourceLine(const std::string& source, const FileSum& sum);
std::string BatchLine(const std::string& source, uint64_t entries,
                      const std::map<std::string, FileSum>& grown);
// `reason` says what is wrong with the source as a whole; empty: nothing.
std::string EndLine(const std::string& source, const std::string& reason);

// The last line of a batch, with the sum of its lines before: what does not have that sum was not
// written whole, or has changed.
std::string SumLine(std::string_view lines);

// Calls for each line without its end; false from `take` ends it. The number of bytes of the lines
// that were taken. A last line without an end is none.
Outcome<uint64_t> ForEachLine(const std::filesystem::path& path,
                              const std::function<bool(std::string_view)>& take);

// Reads a journal, and checks every file that it names below `tree` by its sum, and those that have
// grown. The first batch of which anything is missing or changed, and all after it, do not count.
Outcome<JournalState> RestoreJournal(const std::filesystem::path& journal,
                                     const std::filesystem::path& tree, GrownFiles& grown);

}  // namespace tarn::archive

#endif
