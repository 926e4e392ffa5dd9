// PageLayout.h - what makes pages of an HTML document.
#ifndef TARN_ARCHIVE_PAGELAYOUT_H
#define TARN_ARCHIVE_PAGELAYOUT_H

#include <memory>
#include <string>
#include <string_view>

#include "archive/model/Trouble.h"
#include "siblings/Pages.h"
#include "siblings/client/PageHelper.h"

namespace tarn::archive {

class PageLayout {
 public:
  PageLayout() = default;
  PageLayout(const PageLayout&) = delete;
  PageLayout& operator=(const PageLayout&) = delete;
  virtual ~PageLayout() = default;

  // All pages as a PDF. After a trouble the next document has pages again.
  virtual Outcome<std::string> pdf(std::string_view html,
                                   const pages::PdfProperties& properties) = 0;
};

// By the helper programs. Starts none before the first document. A document that takes longer or
// more memory than the limits of the helpers is TooLarge.
std::unique_ptr<PageLayout> HelperLayout(const pages::HelperOptions& options, pages::Paper paper);

// Lays a small document out, so that what is missing is known before anything is exported. Throws
// pages::PageFailure.
void TryHelpers(const pages::HelperOptions& options);

}  // namespace tarn::archive

#endif
