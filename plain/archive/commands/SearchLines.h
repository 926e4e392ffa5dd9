// SearchLines.h - an item that a search has found, as lines.
#ifndef TARN_ARCHIVE_SEARCHLINES_H
#define TARN_ARCHIVE_SEARCHLINES_H

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "archive/catalogue/CatalogueSearch.h"
#include "archive/model/Item.h"

namespace tarn::archive {

struct FoundItem {
  Item& item;  // its envelope and its place
  const CatalogueItem& record;
  const std::optional<std::string>& parentSubject;  // of one that is embedded
  const std::vector<FoundPlace>& places;
  const std::string& directory;  // of the export, as the command line names it
};

class SearchLines {
 public:
  SearchLines() = default;
  SearchLines(const SearchLines&) = delete;
  SearchLines& operator=(const SearchLines&) = delete;
  virtual ~SearchLines() = default;

  virtual std::string linesOf(const FoundItem& found) = 0;
  // The bytes that suit a snippet.
  virtual size_t snippetLength() const = 0;
};

// The keys of the list, the state of the export, the path of the item's file, and an array of the
// places.
std::unique_ptr<SearchLines> JsonSearchLines();

// Id, folder, date, from, subject, where, the snippet and the path, with tabs between them.
std::unique_ptr<SearchLines> TabbedSearchLines();

// A few lines each, with the words in bold, for a terminal of that width.
std::unique_ptr<SearchLines> TerminalSearchLines(size_t width);

}  // namespace tarn::archive

#endif
