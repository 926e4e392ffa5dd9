// TextTable.h - tables as text: rows of short cells side by side, others one cell after the other.
#ifndef TARN_ARCHIVE_TEXTTABLE_H
#define TARN_ARCHIVE_TEXTTABLE_H

#include <cstddef>
#include <string>
#include <vector>

#include "archive/text/TextLines.h"

namespace tarn::archive {

using TextCell = std::vector<TextParagraph>;

struct TextRow {
  std::vector<TextCell> cells;
  bool hasWideCells = false;  // of several columns
};

// The paragraphs of a table whose paragraphs have this prefix. `width` is that of the whole text, 0
// for no limit. Where every row has its cells in one line and they fit, the cells are aligned.
std::vector<TextParagraph> ParagraphsOfTable(std::vector<TextRow> rows, const std::string& prefix,
                                             size_t width);

}  // namespace tarn::archive

#endif
