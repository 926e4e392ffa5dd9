// SmallPdf.h - PDFs made by hand.
#ifndef TARN_TESTS_ARCHIVE_PDF_SMALLPDF_H
#define TARN_TESTS_ARCHIVE_PDF_SMALLPDF_H

#include <cstddef>
#include <string>
#include <vector>

namespace tarn::test {

enum class InnerLinks {
  None,
  Arrays,   // the first page leads to the last, by a destination of its own
  Names,    // by a name in the tree of names, called "end"
  Actions,  // by an action with that name
  OldNames  // by a name in the dictionary of names
};

// One page for each text, which is its content.
std::string SmallPdf(const std::vector<std::string>& contents, InnerLinks links = InnerLinks::None);

}  // namespace tarn::test

#endif
