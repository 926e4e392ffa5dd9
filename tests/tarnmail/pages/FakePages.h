// FakePages.h - a page maker that lays nothing out: each document has three pages of A4 or Letter,
// in whose first pixels the page's number is, and it remembers what it was asked.
#ifndef TARN_TESTS_TARNMAIL_PAGES_FAKEPAGES_H
#define TARN_TESTS_TARNMAIL_PAGES_FAKEPAGES_H

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "support/TempDirectory.h"
#include "tarnmail/pages/PageMaker.h"

namespace tarn::test {

class FakePages : public host::PageMaker {
 public:
  struct Document {
    pages::DocumentKind kind;
    std::string bytes;
    std::filesystem::path folder;
    pages::Paper paper;
  };

  std::vector<Document> documents;  // laid out so far
  std::vector<int32_t> drawnPages;
  std::optional<pages::PageFailure> failure;  // of the next calls
  bool forgets = false;                       // holds no document
  std::function<void(const Document&)> atLayOut;

  pages::LaidOut layOut(const pages::DocumentOnPaper& document) override {
    fail();
    documents.push_back(
        {document.kind, std::string(document.bytes), document.folder, document.paper});
    if (atLayOut) atLayOut(documents.back());
    pages::LaidOut laidOut;
    laidOut.id = documents.size();
    laidOut.pageCount = 3;
    laidOut.firstPage = size(document.paper);
    return laidOut;
  }

  bool holds(const pages::LaidOut& laidOut) const override {
    return !forgets && laidOut.id == documents.size();
  }

  pages::PageSize pageSize(const pages::LaidOut& laidOut, int32_t) override {
    return laidOut.firstPage;
  }

  // Blue, green and red of the first pixel: 1, 2 and the number of the page.
  pages::Bitmap draw(const pages::LaidOut& laidOut, int32_t page, int32_t dotsPerInch,
                     const pages::ProgressCall& progress) override {
    fail();
    if (progress && !progress(50)) {
      throw pages::PageFailure(pages::Trouble::Stopped, "stopped");
    }
    drawnPages.push_back(page);
    pages::Bitmap bitmap;
    bitmap.width = static_cast<int32_t>(laidOut.firstPage.width) * dotsPerInch / 72;
    bitmap.height = static_cast<int32_t>(laidOut.firstPage.height) * dotsPerInch / 72;
    bitmap.pixels.assign(
        size_t{4} * static_cast<size_t>(bitmap.width) * static_cast<size_t>(bitmap.height), 0xFF);
    bitmap.pixels[0] = 1;
    bitmap.pixels[1] = 2;
    bitmap.pixels[2] = static_cast<uint8_t>(page);
    return bitmap;
  }

  std::string pdf(const pages::LaidOut&, pages::PageRange, const pages::PdfProperties&,
                  const pages::ProgressCall&) override {
    fail();
    return "%PDF";
  }

 private:
  static pages::PageSize size(pages::Paper paper) {
    return paper == pages::Paper::A4 ? pages::PageSize{594, 846} : pages::PageSize{612, 792};
  }

  void fail() const {
    if (failure) throw *failure;
  }
};

}  // namespace tarn::test

#endif
