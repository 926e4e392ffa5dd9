// PdfLinks.h - the links of a PDF: where they lie, and the words that lie there.
#ifndef TARN_TESTS_SIBLINGS_PDFLINKS_H
#define TARN_TESTS_SIBLINGS_PDFLINKS_H

#include <cstddef>
#include <string>
#include <vector>

namespace tarn::test {

struct PdfLink {
  std::size_t page = 0;  // from 1
  std::string to;        // empty: a place of the PDF
  // Points from the top left corner of the page.
  double left = 0;
  double top = 0;
  double width = 0;
  double height = 0;
  std::string words;  // within it, as pdftotext of poppler-utils finds them, parted by blanks
};

// In the order of the pages, and on a page in that of the file.
std::vector<PdfLink> PdfLinks(const std::string& pdf);

// All links, each as "words > address".
std::vector<std::string> WordsOfLinks(const std::string& pdf);

}  // namespace tarn::test

#endif
