// CatalogueItem.h - what an export tells of an item: to its catalogue, and to the page that shows
// it.
#ifndef TARN_ARCHIVE_CATALOGUEITEM_H
#define TARN_ARCHIVE_CATALOGUEITEM_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "archive/model/Item.h"

namespace tarn::archive {

enum class ExportStatus : uint8_t { Exported, Partial, Failed };

// A file of the export that belongs to an item.
struct ExportedFile {
  std::string path;  // below the export's folder, with "/"
  std::string role;  // "html", "text", "eml", "mbox", "pdf", "json", "vcard", "icalendar",
                     // "attachment"
  uint64_t bytes = 0;
  std::string sha256;  // hexadecimal
  std::string name;    // of an attachment: its own
  size_t index = 0;    // of an attachment: its place, from 1
  uint64_t page = 0;   // of a PDF that has the pages of several items: the first of these, from 1
};

// An attachment, with what can be searched in it.
struct AttachmentText {
  size_t index = 0;  // its place, from 1
  std::string name;  // its own, nothing cleaned
  std::string text;  // UTF-8; empty where none can be had
};

// All text is UTF-8.
struct CatalogueItem {
  std::string source;  // the path as found
  std::string id;
  std::optional<std::string> parent;
  std::vector<std::string> folder;
  // The whole envelope; attachments are counted as there.
  ItemFields fields;

  ExportStatus status = ExportStatus::Exported;
  std::string reason;  // unless exported
  std::vector<ExportedFile> files;

  std::string body;  // the best text
  std::vector<AttachmentText> attachments;
};

// "exported", "partial", "failed".
std::string_view NameOf(ExportStatus status);

// One item as bytes, for a process that reads what another one has found and for a journal: the
// same bytes for the same item. An item of bytes that are no such record is Damaged.
std::string PackedItem(const CatalogueItem& item);
Outcome<CatalogueItem> UnpackedItem(std::string_view bytes);

}  // namespace tarn::archive

#endif
