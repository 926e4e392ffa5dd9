// WritePdf.h - an item as a PDF: its pages, and inside the file the mail and its attachments.
#ifndef TARN_ARCHIVE_WRITEPDF_H
#define TARN_ARCHIVE_WRITEPDF_H

#include <cstddef>
#include <string>

#include "archive/model/ByteSink.h"
#include "archive/model/Item.h"
#include "archive/pdf/PageLayout.h"
#include "archive/writers/Writers.h"

namespace tarn::archive {

struct PdfLimits {
  size_t html = size_t{64} << 20;     // of the document that is laid out
  size_t inside = size_t{192} << 20;  // of all files inside together, in bytes
};

// A file that does not fit is left out, and told in `lost`. An item whose pages cannot be made has
// no PDF: that is told in `noPages`, and nothing is written.
struct WrittenPdf : Written {
  std::optional<Trouble> noPages;
  size_t pages = 0;
};

// Where PDFs are to be joined, `name` tells the item's files inside from those of others: the mail
// is "NAME.eml" then, an attachment "NAME - a.png".
WrittenPdf WritePdf(Item& item, PageLayout& layout, ByteSink& sink, const PdfLimits& limits = {},
                    const std::string& name = {});

}  // namespace tarn::archive

#endif
