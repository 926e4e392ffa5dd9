// OfficeLibrary.h - the office library, started, and one document in it.
#ifndef TARN_SIBLINGS_OFFICE_OFFICELIBRARY_H
#define TARN_SIBLINGS_OFFICE_OFFICELIBRARY_H

// Pages and their pictures are the part of the interface that its authors may still change.
#define LOK_USE_UNSTABLE_API
#include <LibreOfficeKit/LibreOfficeKit.hxx>
#undef LOK_USE_UNSTABLE_API

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "siblings/Pages.h"
#include "siblings/office/PageRectangles.h"

namespace tarn::pages {

// Calls throw PageFailure with Trouble::BadDocument when the library says no.
class OfficeDocument {
 public:
  OfficeDocument(std::unique_ptr<lok::Document> document, std::filesystem::path folder);

  const std::vector<PageRectangle>& pages() const { return pages_; }
  // Paints a part of the sheet that the pages are on, over what is in the rows: width by rows
  // pixels, blue first.
  void paint(uint8_t* pixels, int32_t width, int32_t rows, const PageRectangle& part);
  // The pages from first to last as a PDF.
  std::string pdf(int32_t first, int32_t last);

 private:
  std::unique_ptr<lok::Document> document_;
  std::filesystem::path folder_;
  std::vector<PageRectangle> pages_;
};

class OfficeLibrary {
 public:
  // The one of this process, started when it is first asked for, in that folder.
  static OfficeLibrary& start(const std::filesystem::path& folder);

  // Loads RTF and nothing else.
  std::unique_ptr<OfficeDocument> load(const std::string& rtf);

 private:
  explicit OfficeLibrary(const std::filesystem::path& folder);
  std::string error();

  std::filesystem::path folder_;
  lok::Office* office_ = nullptr;  // never ended: its threads outlive what it would need for that
};

}  // namespace tarn::pages

#endif
