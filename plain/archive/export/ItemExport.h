// ItemExport.h - an item with all that is embedded in it as files, and as lines of the journal.
#ifndef TARN_ARCHIVE_ITEMEXPORT_H
#define TARN_ARCHIVE_ITEMEXPORT_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>

#include "archive/catalogue/ItemTexts.h"
#include "archive/export/ExportForms.h"
#include "archive/model/ByteSink.h"
#include "archive/model/Item.h"
#include "archive/pdf/PageLayout.h"

namespace tarn::archive {

// Of all attachments of an item, those of embedded ones among them, no more become files.
inline constexpr size_t kMostAttachmentFiles = 10'000;

// Where the parts of an item go.
struct ItemTarget {
  std::string source;            // as the manifest names it
  std::string tree;              // the path of the item's own folder within the export
  std::string mbox;              // that of the mbox of its folder
  std::filesystem::path folder;  // to be made for its files, if there are any
  ByteSink& mails;               // what is added to the mbox
  ByteSink& texts;               // what the catalogue is told: packed items
  ByteSink& pages;               // PDFs that are to be one file, one after the other
  std::string name;              // of the item's own folder, for the files inside those
  std::string onePdf;            // the path of that file
  PageLayout* layout = nullptr;  // of Pdf
  TextTime textTime = {};        // for what the catalogue is told
};

struct ItemResult {
  std::string rows;         // lines of the journal, the item's own first
  std::string fingerprint;  // of the item: the same for another with the same content
  bool hasFolder = false;
  uint64_t bytes = 0;  // of all files
};

// Writes everything; what of the item cannot be read is told in its rows. A trouble says that a
// place takes no more.
Outcome<ItemResult> ExportItem(Item& item, const ExportChoices& choices, const ItemTarget& target);

}  // namespace tarn::archive

#endif
