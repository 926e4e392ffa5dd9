// ReadPdf.h - what a PDF says of itself.
#ifndef TARN_TESTS_SIBLINGS_OFFICE_READPDF_H
#define TARN_TESTS_SIBLINGS_OFFICE_READPDF_H

#include <cstddef>
#include <map>
#include <set>
#include <string>

namespace tarn::test {

struct PdfFacts {
  std::map<std::string, std::string> properties;  // as "/Title", in UTF-8
  std::set<std::string> trailerKeys;
  std::set<std::string> rootKeys;
  bool showsTitle = false;  // in the frame of a reader's window
  std::string id;
  size_t pages = 0;
  std::set<std::string> links;  // the addresses that pages lead to
  std::string objects;          // all of them, but for the data of streams
};

PdfFacts ReadPdf(const std::string& pdf);

}  // namespace tarn::test

#endif
