// ListLines.h - an item as a line of a list.
#ifndef TARN_ARCHIVE_LISTLINES_H
#define TARN_ARCHIVE_LISTLINES_H

#include <cstddef>
#include <memory>
#include <string>

#include "archive/model/Item.h"
#include "archive/sources/SourceSearch.h"

namespace tarn::archive {

// Where the items of a list come from.
struct ListedSource {
  const FoundSource& source;
  bool isOneOfSeveral;  // so that a line has to tell which
};

class ListLines {
 public:
  ListLines() = default;
  ListLines(const ListLines&) = delete;
  ListLines& operator=(const ListLines&) = delete;
  virtual ~ListLines() = default;

  // The line with its end, and whatever belongs before it.
  virtual std::string lineOf(Item& item, const ListedSource& from) = 0;
};

// JSON, with the whole envelope.
std::unique_ptr<ListLines> JsonLines();

// Id, folder, date, from, subject and attachments with tabs between them; of several sources also
// the source. No value has a tab or an end of line in it, or any other control character.
std::unique_ptr<ListLines> TabbedLines();

// Columns for a terminal of that width, below titles.
std::unique_ptr<ListLines> AlignedLines(size_t width);

// The text when it fits, else an ellipsis and the end of it.
std::string EndWithinColumns(const std::string& text, size_t columns);

}  // namespace tarn::archive

#endif
