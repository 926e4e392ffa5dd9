// ManifestRows.h - what an export tells of an item: a line of its journal first, and a line of its
// manifest at the end.
#ifndef TARN_ARCHIVE_MANIFESTROWS_H
#define TARN_ARCHIVE_MANIFESTROWS_H

#include <cstddef>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "archive/catalogue/CatalogueItem.h"
#include "archive/export/SourcePlan.h"

namespace tarn::archive {

// The PDF of an item that is to be joined to others, in the row of the item. That of an outermost
// item is there also where there are no pages.
struct ItemPages {
  std::string path;      // of the first file of the folder
  std::string bookmark;  // date and subject
  size_t depth = 0;      // 1 for an item embedded in an outermost one, and so on
  uint64_t offset = 0;   // after the beginning of what the outermost item adds there
  uint64_t bytes = 0;
  uint64_t pages = 0;
};

struct ItemRow {
  CatalogueItem item;                // its reason and its texts are not of the row
  std::vector<std::string> reasons;  // why it is not wholly there

  // Of the journal alone:
  std::string fingerprint;  // of what the item says; empty where no copies are looked for
  std::string mbox;         // the path of the mbox that it goes into; empty: none
  uint64_t mboxBytes = 0;   // its length there
  std::optional<ItemPages> pages;
  uint64_t catalogueBytes = 0;  // the length of what the catalogue is told of it
};

// With a line end. Both kinds of lines are JSON objects, always valid UTF-8.
std::string JournalLine(const ItemRow& row);

// What a row of the journal, as it is read again, tells of pages.
std::optional<ItemPages> PagesOf(const nlohmann::ordered_json& row);
// Takes out of such a row what tells of files.
void RemoveFiles(nlohmann::ordered_json& row);
// Takes out of it what the manifest does not have.
void RemoveJournalKeys(nlohmann::ordered_json& row);

// The line of an item that cannot be read at all, or of a trouble of the source, which is no item.
std::string RowOfLost(const PlanEntry& entry, const std::string& source, const std::string& reason);

// The reasons in one line, each once; of very many the first.
std::string JoinedReasons(const std::vector<std::string>& reasons);

}  // namespace tarn::archive

#endif
