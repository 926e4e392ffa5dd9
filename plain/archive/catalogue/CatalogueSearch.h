// CatalogueSearch.h - finds items of a catalogue.
#ifndef TARN_ARCHIVE_CATALOGUESEARCH_H
#define TARN_ARCHIVE_CATALOGUESEARCH_H

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "archive/catalogue/CatalogueItem.h"
#include "archive/catalogue/Snippet.h"
#include "archive/catalogue/WordRank.h"
#include "archive/model/Trouble.h"

namespace tarn::archive {

struct SearchedSpan {
  std::optional<int64_t> since;  // seconds since 1970-01-01T00:00:00Z
  std::optional<int64_t> until;  // the last of them
  bool hasAttachment = false;

  bool isAnything() const { return !since && !until && !hasAttachment; }
};

// What a search has found.
class RankedItems {
 public:
  explicit RankedItems(std::vector<RankedItem> items);

  // The best of those that are left; of equals the first one of the export. Those that nobody asks
  // for are never put in order.
  std::optional<RankedItem> next();

 private:
  std::vector<RankedItem> items_;
};

enum class FoundField : uint8_t { Subject, Sender, Recipients, Body, Attachment };

// Where in an item something was found.
struct FoundPlace {
  FoundField field = FoundField::Subject;
  size_t attachment = 0;  // of an attachment: its place, from 1
  std::string name;       // of an attachment: its own
  Snippet snippet;        // of an attachment whose name alone has it: of the name
};

// One thread.
class CatalogueSearch {
 public:
  // Missing without the file, Unsupported for one that is no catalogue of this version, Damaged.
  static Outcome<std::unique_ptr<CatalogueSearch>> open(const std::filesystem::path& path);

  CatalogueSearch(const CatalogueSearch&) = delete;
  CatalogueSearch& operator=(const CatalogueSearch&) = delete;
  ~CatalogueSearch();

  // What an expression of QueryOf() finds.
  Outcome<RankedItems> find(const std::string& query, const SearchedSpan& span);

  // Without its texts. Its folder is one name.
  Outcome<CatalogueItem> item(int64_t number);

  // The subject of the item that it is embedded in; none where that is not in the catalogue.
  Outcome<std::optional<std::string>> parentSubject(const CatalogueItem& item);

  // Where the expression of the last find() is in an item that it has found.
  Outcome<std::vector<FoundPlace>> places(int64_t number, size_t snippetLength);

 private:
  class Reading;

  explicit CatalogueSearch(std::unique_ptr<Reading> reading);

  std::unique_ptr<Reading> reading_;
};

}  // namespace tarn::archive

#endif
