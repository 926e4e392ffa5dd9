// ManifestRows.h - what an export tells of an item: a line of its journal first, and a line of its
// manifest at the end.
#ifndef TARN_ARCHIVE_MANIFESTROWS_H
#define TARN_ARCHIVE_MANIFESTROWS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "archive/catalogue/CatalogueItem.h"
#include "archive/export/SourcePlan.h"

namespace tarn::archive {

struct ItemRow {
  CatalogueItem item;                // its reason and its texts are not of the row
  std::vector<std::string> reasons;  // why it is not wholly there

  // Of the journal alone:
  std::string fingerprint;      // of what the item says; empty where no copies are looked for
  std::string mbox;             // the path of the mbox that it goes into; empty: none
  uint64_t mboxBytes = 0;       // its length there
  uint64_t catalogueBytes = 0;  // the length of what the catalogue is told of it
};

// With a line end. Both kinds of lines are JSON objects, always valid UTF-8.
std::string JournalLine(const ItemRow& row);

// The line of an item that cannot be read at all, or of a trouble of the source, which is no item.
std::string RowOfLost(const PlanEntry& entry, const std::string& source, const std::string& reason);

// The reasons in one line, each once; of very many the first.
std::string JoinedReasons(const std::vector<std::string>& reasons);

}  // namespace tarn::archive

#endif
