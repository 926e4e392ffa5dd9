#include "siblings/office/OfficeEngine.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "siblings/office/FinishedPdf.h"
#include "siblings/office/HarmlessRtf.h"
#include "siblings/office/OfficeLibrary.h"

namespace tarn::pages {

namespace {

constexpr int64_t kMostPixels = 150'000'000;
constexpr int32_t kWidestBitmap = 32'767;

void Tell(Progress& progress, int64_t percent) {
  if (!progress.at(static_cast<int>(percent))) {
    throw PageFailure(Trouble::Stopped, "stopped");
  }
}

int32_t PixelsOf(int32_t twips, int32_t dotsPerInch) {
  const double pixels = std::round(double{1} * twips / kTwipsPerInch * dotsPerInch);
  if (pixels < 1 || pixels > kWidestBitmap) {
    throw PageFailure(Trouble::TooLarge,
                      "no page is drawn at " + std::to_string(dotsPerInch) + " dots an inch");
  }
  return static_cast<int32_t>(pixels);
}

class OfficeLayout : public Layout {
 public:
  explicit OfficeLayout(std::unique_ptr<OfficeDocument> document)
      : document_(std::move(document)) {}

  int32_t pageCount() const override { return static_cast<int32_t>(document_->pages().size()); }
  PageSize pageSize(int32_t page) const override { return SizeOf(rectangle(page)); }
  Bitmap draw(int32_t page, int32_t dotsPerInch, Progress& progress) override;
  std::string pdf(PageRange range, const PdfProperties& properties, Progress& progress) override;

 private:
  const PageRectangle& rectangle(int32_t page) const {
    if (page < 1 || page > pageCount()) {
      throw PageFailure(Trouble::NoSuchPage, "there is no page " + std::to_string(page));
    }
    return document_->pages()[static_cast<size_t>(page - 1)];
  }

  std::unique_ptr<OfficeDocument> document_;
};

Bitmap OfficeLayout::draw(int32_t page, int32_t dotsPerInch, Progress& progress) {
  const PageRectangle& sheet = rectangle(page);
  Bitmap bitmap;
  bitmap.width = PixelsOf(sheet.width, dotsPerInch);
  bitmap.height = PixelsOf(sheet.height, dotsPerInch);
  if (int64_t{bitmap.width} * bitmap.height > kMostPixels) {
    throw PageFailure(Trouble::TooLarge,
                      "a page at " + std::to_string(dotsPerInch) + " dots an inch is too large");
  }
  const size_t stride = static_cast<size_t>(bitmap.width) * 4;
  bitmap.pixels.assign(stride * static_cast<size_t>(bitmap.height), 0xFF);
  for (const Strip& strip : StripsOf(bitmap.width, bitmap.height, dotsPerInch)) {
    Tell(progress, int64_t{strip.firstRow} * 100 / bitmap.height);
    const PageRectangle part{sheet.x, sheet.y + strip.top, sheet.width, strip.height};
    document_->paint(bitmap.pixels.data() + stride * static_cast<size_t>(strip.firstRow),
                     bitmap.width, strip.rows, part);
  }
  Tell(progress, 100);
  return bitmap;
}

std::string OfficeLayout::pdf(PageRange range, const PdfProperties& properties,
                              Progress& progress) {
  const int32_t first = std::max(range.first, 1);
  const int32_t last = range.last == 0 ? pageCount() : std::min(range.last, pageCount());
  if (first > last) {
    throw PageFailure(Trouble::NoSuchPage, "there is no page " + std::to_string(first));
  }
  Tell(progress, 0);
  const std::string pages = document_->pdf(first, last);
  Tell(progress, 80);
  std::string finished = FinishedPdf(pages, properties);
  Tell(progress, 100);
  return finished;
}

class OfficeEngine : public Engine {
 public:
  explicit OfficeEngine(OfficeLibrary& library) : library_(library) {}

  std::unique_ptr<Layout> layOut(DocumentKind kind, std::string document, Paper paper,
                                 DocumentFolder& /*folder*/) override {
    if (kind != DocumentKind::Rtf) {
      throw PageFailure(Trouble::BadDocument, "this engine lays out RTF alone");
    }
    document = HarmlessRtf(document, paper);
    return std::make_unique<OfficeLayout>(library_.load(document));
  }

 private:
  OfficeLibrary& library_;
};

}  // namespace

std::unique_ptr<Engine> MakeOfficeEngine(const std::filesystem::path& privateFolder) {
  return std::make_unique<OfficeEngine>(OfficeLibrary::start(privateFolder));
}

}  // namespace tarn::pages
