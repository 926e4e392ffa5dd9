// JoinedPdf.h - several PDFs as one, with a bookmark for each.
#ifndef TARN_ARCHIVE_JOINEDPDF_H
#define TARN_ARCHIVE_JOINEDPDF_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "archive/model/Trouble.h"

namespace tarn::archive {

struct PdfPart {
  std::string path;
  std::string bookmark;  // UTF-8
  size_t depth = 0;      // of the bookmark: below the last one before it that has a smaller one
};

// Writes the pages of all parts, in their order, to a new file at `path`, with the files that they
// have inside; links within a part lead to its pages. `title` is the document's. The same parts
// give the same bytes. Nothing is left at `path` when there is a trouble, which names the part that
// it concerns, if any.
//
// Memory grows with the number of pages, not with their content.
std::optional<Trouble> JoinPdfs(const std::vector<PdfPart>& parts, const std::string& title,
                                const std::string& path);

}  // namespace tarn::archive

#endif
