// ReadMailPdf.h - what a PDF of mails has: pages, files, bookmarks, metadata.
#ifndef TARN_TESTS_ARCHIVE_PDF_READMAILPDF_H
#define TARN_TESTS_ARCHIVE_PDF_READMAILPDF_H

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tarn::test {

struct PdfFile {
  std::string name;
  std::string mediaType;
  std::string relation;  // as "/Source"
  std::string description;
  std::string bytes;
  std::optional<size_t> page;  // from 0, the first that it is associated with
};

struct PdfMark {
  std::string title;
  size_t page = 0;
  size_t depth = 0;
};

struct MailPdfFacts {
  std::vector<std::string> contents;             // of the pages' streams
  std::vector<std::pair<size_t, size_t>> links;  // from page to page
  std::vector<PdfFile> files;                    // in the order of their keys
  size_t associated = 0;                         // files of the document itself
  std::vector<PdfMark> marks;                    // each before those below it
  std::string metadata;
  std::string pageMode;
  std::string title;
};

// Throws what qpdf throws.
MailPdfFacts ReadMailPdf(const std::string& pdf);

}  // namespace tarn::test

#endif
