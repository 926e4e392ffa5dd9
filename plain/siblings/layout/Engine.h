// Engine.h - one way to make pages of documents: of text, of HTML or of RTF.
//
// Engines run in helper processes, for one document at a time. They take whatever bytes there are:
// a document that is damaged or hostile ends in a PageFailure or in pages, and nothing but its own
// folder is ever opened for it.
#ifndef TARN_SIBLINGS_LAYOUT_ENGINE_H
#define TARN_SIBLINGS_LAYOUT_ENGINE_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "siblings/Pages.h"

namespace tarn::pages {

// The files beside a document.
class DocumentFolder {
 public:
  virtual ~DocumentFolder() = default;
  // The file of that plain name, without a folder in it; nothing when there is none.
  virtual std::optional<std::string> read(std::string_view name) = 0;
};

// Hears of progress in per cent; false asks to stop.
class Progress {
 public:
  virtual ~Progress() = default;
  virtual bool at(int percent) = 0;
};

// A document that was laid out.
class Layout {
 public:
  virtual ~Layout() = default;
  virtual int32_t pageCount() const = 0;
  // Of a page from 1 to the count.
  virtual PageSize pageSize(int32_t page) const = 0;
  // White where nothing is drawn; of pageSize at that resolution, rounded to whole pixels.
  virtual Bitmap draw(int32_t page, int32_t dotsPerInch, Progress& progress) = 0;
  // Text is text in it, and links are links. The same document gives the same bytes.
  virtual std::string pdf(PageRange range, const PdfProperties& properties, Progress& progress) = 0;
};

class Engine {
 public:
  virtual ~Engine() = default;
  // The folder is used during this call only.
  virtual std::unique_ptr<Layout> layOut(DocumentKind kind, std::string document, Paper paper,
                                         DocumentFolder& folder) = 0;
};

}  // namespace tarn::pages

#endif
