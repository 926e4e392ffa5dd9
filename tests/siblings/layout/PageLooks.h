// PageLooks.h - what is on pages: their text, their ink and their colours.
#ifndef TARN_TESTS_SIBLINGS_LAYOUT_PAGELOOKS_H
#define TARN_TESTS_SIBLINGS_LAYOUT_PAGELOOKS_H

#include <cstdint>
#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "siblings/layout/Engine.h"

namespace tarn::test {

// A folder in memory, which takes note of what is asked for.
class MemoryFolder : public pages::DocumentFolder {
 public:
  std::map<std::string, std::string, std::less<>> files;
  std::vector<std::string> asked;

  std::optional<std::string> read(std::string_view name) override;
};

// Says yes, so many times.
class CountingProgress : public pages::Progress {
 public:
  explicit CountingProgress(int most = 1'000'000) : most_(most) {}
  bool at(int percent) override;

  std::vector<int> heard;

 private:
  int most_;
};

struct PixelBox {
  int32_t left = 0;
  int32_t top = 0;
  int32_t right = 0;   // past the last
  int32_t bottom = 0;  // past the last

  int32_t width() const { return right - left; }
  int32_t height() const { return bottom - top; }
};

struct Rgb {
  uint8_t red = 0;
  uint8_t green = 0;
  uint8_t blue = 0;
};

Rgb PixelAt(const pages::Bitmap& bitmap, int32_t x, int32_t y);

// Around all pixels that differ from that colour by no more than the tolerance in each part.
PixelBox BoxOfColour(const pages::Bitmap& bitmap, const Rgb& colour, int tolerance = 8);
int64_t CountColour(const pages::Bitmap& bitmap, const Rgb& colour, int tolerance = 8);
// Around all that is not white.
PixelBox BoxOfInk(const pages::Bitmap& bitmap);

pages::Bitmap DrawPage(pages::Layout& layout, int32_t page, int32_t dotsPerInch = 96);
std::string PdfOf(pages::Layout& layout, pages::PageRange range = {},
                  const pages::PdfProperties& properties = {});

// The text of a PDF as pdftotext of poppler-utils finds it, each page ended by a form feed.
std::string TextOfPdf(const std::string& pdf);
// The words of it, parted by single blanks.
std::string WordsOfPdf(const std::string& pdf);
// What pdfinfo says of it after that name, as "Title"; empty when it says nothing.
std::string PdfInfo(const std::string& pdf, const std::string& name);
// The addresses of a PDF's links, in the order of their places.
std::vector<std::string> LinksOfPdf(const std::string& pdf);

// The links of a PDF that are on words, and those words.
struct LinkOnWords {
  std::string to;  // an address, or "#3" for page 3
  std::string words;

  friend bool operator==(const LinkOnWords&, const LinkOnWords&) = default;
};
std::ostream& operator<<(std::ostream& out, const LinkOnWords& link);
std::vector<LinkOnWords> LinksOnWords(const std::string& pdf);

}  // namespace tarn::test

#endif
