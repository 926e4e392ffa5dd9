// Pages.h - what is said of a document's pages, between those who lay it out and those who want
// them.
//
// Pages are numbered from 1. Sizes are in points, 1/72 inch.
#ifndef TARN_SIBLINGS_PAGES_H
#define TARN_SIBLINGS_PAGES_H

#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

namespace tarn::pages {

enum class DocumentKind : uint8_t { Html, Rtf, Text };

enum class Paper : uint8_t { A4, Letter };

struct PageSize {
  double width = 0;
  double height = 0;
};

// Rows from the top down, without gaps, four bytes a pixel: blue, green, red and one of no meaning.
struct Bitmap {
  int32_t width = 0;
  int32_t height = 0;
  std::vector<uint8_t> pixels;
};

// What a PDF says of the mail. Whatever is empty is left out; nothing else in the file depends on
// when or where it was made.
struct PdfProperties {
  std::string title;   // UTF-8
  std::string author;  // UTF-8
  std::string date;    // ISO 8601 with seconds and the offset, as 2024-05-01T12:34:56+02:00
};

// The pages from first to last; last 0: to the end.
struct PageRange {
  int32_t first = 1;
  int32_t last = 0;
};

enum class Trouble : uint8_t {
  BadDocument,   // the engine cannot read it
  NoSuchPage,    // the number is beyond the count
  TooLarge,      // a bitmap beyond what is drawn, or memory beyond the limit
  TooLong,       // beyond the limit of time
  HelperDied,    // the process that lays out ended in the middle
  NoSandbox,     // the machine allows no isolation
  NotInstalled,  // packages or programs are missing
  Stopped        // by the progress callback
};

// Why there are no pages. The text is one line for a person.
class PageFailure : public std::runtime_error {
 public:
  PageFailure(Trouble trouble, const std::string& line)
      : std::runtime_error(line), trouble_(trouble) {}
  Trouble trouble() const { return trouble_; }

 private:
  Trouble trouble_;
};

}  // namespace tarn::pages

#endif
