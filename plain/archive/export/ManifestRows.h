// ManifestRows.h - what an export tells of an item: a line of its journal first, and a line of its
// manifest at the end.
#ifndef TARN_ARCHIVE_MANIFESTROWS_H
#define TARN_ARCHIVE_MANIFESTROWS_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "archive/export/HashedFile.h"

namespace tarn::archive {

enum class RowStatus : uint8_t { Exported, Partial, Failed };

struct FileRow {
  std::string path;  // below the folder of the export, with "/"
  std::string role;
  FileSum sum;
  std::optional<std::string> name;  // of an attachment: its own
  size_t index = 0;                 // of an attachment: its place, from 1
};

struct ItemRow {
  std::string source;
  std::string id;
  std::optional<std::string> parent;
  std::shared_ptr<const std::vector<std::string>> folder;
  std::string messageClass;
  std::string subject;
  RowStatus status = RowStatus::Exported;
  std::vector<std::string> reasons;
  std::vector<FileRow> files;

  // Of the journal alone:
  std::string fingerprint;      // of what the item says; empty where it could not be read
  std::string mbox;             // the path of the mbox that it goes into; empty: none
  uint64_t mboxBytes = 0;       // its length there
  uint64_t catalogueBytes = 0;  // the length of what the catalogue is told of it
};

// With a line end. Both kinds of lines are JSON objects, always valid UTF-8.
std::string JournalLine(const ItemRow& row);

// The reasons in one line, each once; of very many the first.
std::string JoinedReasons(const std::vector<std::string>& reasons);

}  // namespace tarn::archive

#endif
