#include "siblings/layout/HtmlEngine.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "siblings/layout/BidiLines.h"
#include "siblings/layout/DisplayPainter.h"
#include "siblings/layout/FontContext.h"
#include "siblings/layout/HtmlCharset.h"
#include "siblings/layout/HtmlContainer.h"
#include "siblings/layout/HtmlScan.h"
#include "siblings/layout/MasterStyle.h"
#include "siblings/layout/PageCuts.h"
#include "siblings/layout/PageOutput.h"
#include "siblings/layout/PaperSheet.h"

namespace tarn::pages {

namespace {

constexpr double kMargin = 36;  // points
constexpr double kPointsPerPixel = 72.0 / 96.0;
constexpr double kLeastScale = 0.35;

bool IsSeen(const Painted& item) {
  if (const auto* text = std::get_if<PaintedText>(&item)) {
    return text->text.find_first_not_of(" \t\r\n") != std::string::npos;
  }
  return !std::holds_alternative<ClipBegin>(item);
}

// How far what is seen reaches to the right.
double RightOf(const DisplayList& list) {
  double right = 0;
  for (const Painted& item : list.items) {
    const Box* box = BoxOf(item);
    if (box != nullptr && IsSeen(item)) right = std::max(right, box->right());
  }
  return right;
}

SheetExtents ExtentsOf(const DisplayList& list, double pageHeight) {
  SheetExtents extents;
  for (const Painted& item : list.items) {
    const Box* box = BoxOf(item);
    if (box == nullptr || !IsSeen(item)) continue;
    const Extent extent = {box->top, box->bottom()};
    const auto* picture = std::get_if<PaintedPicture>(&item);
    const bool tiled = picture != nullptr && (picture->repeatX || picture->repeatY);
    const bool text = std::holds_alternative<PaintedText>(item);
    if ((picture != nullptr && !tiled) || text) {
      extents.whole.push_back(extent);
      extents.content.push_back(extent);
    } else if (box->height <= 2 * pageHeight) {
      // Not the ground on which others are, which may go on without end.
      extents.content.push_back(extent);
    }
  }
  for (const Box& box : list.together) extents.together.push_back({box.top, box.bottom()});
  return extents;
}

// What pages are drawn from, once they are laid out: the document's tree is gone by then.
class HtmlLayout : public Layout {
 public:
  HtmlLayout(PaperSheet sheet, double scale, DisplayList list, HtmlFonts fonts,
             std::unique_ptr<DocumentPictures> pictures)
      : sheet_(sheet),
        scale_(scale),
        list_(std::move(list)),
        fonts_(std::move(fonts)),
        pictures_(std::move(pictures)) {
    const double height = sheet_.contentHeight() / scale_;
    const std::vector<double> tops = CutPages(ExtentsOf(list_, height), height);
    bands_ = MakeBands(list_, tops, tops.back() + height);
  }

  int32_t pageCount() const override { return static_cast<int32_t>(bands_.size()); }
  PageSize pageSize(int32_t /*page*/) const override { return sheet_.size; }

  Bitmap draw(int32_t page, int32_t dotsPerInch, Progress& /*progress*/) override {
    return DrawBitmap(sheet_.size, page, dotsPerInch, drawPage());
  }

  std::string pdf(PageRange range, const PdfProperties& properties, Progress& progress) override {
    return WritePdf({sheet_.size, pageCount(), range, properties}, drawPage(), progress);
  }

 private:
  DrawPage drawPage() {
    return [this](cairo_t* context, int32_t page, Target target) {
      const PageBand& band = bands_[static_cast<size_t>(page) - 1];
      if (list_.canvas) {
        cairo_set_source_rgba(context, list_.canvas->red / 255.0, list_.canvas->green / 255.0,
                              list_.canvas->blue / 255.0, list_.canvas->alpha / 255.0);
        cairo_paint(context);
      }
      cairo_translate(context, sheet_.margin, sheet_.margin);
      cairo_scale(context, scale_, scale_);
      cairo_translate(context, 0, -band.top);
      PaintBand(context, list_, band, target);
    };
  }

  PaperSheet sheet_;
  double scale_;  // points of a pixel
  DisplayList list_;
  HtmlFonts fonts_;
  std::unique_ptr<DocumentPictures> pictures_;
  std::vector<PageBand> bands_;
};

class HtmlEngine : public Engine {
 public:
  HtmlEngine() : fonts_(MakeFontContext()) { styles_.load_master_stylesheet(kMasterStyle); }

  std::unique_ptr<Layout> layOut(DocumentKind kind, std::string document, Paper paper,
                                 DocumentFolder& folder) override {
    if (kind != DocumentKind::Html) {
      throw PageFailure(Trouble::BadDocument, "this engine lays out HTML alone");
    }
    try {
      return layOutHtml(document, SheetOf(paper, kMargin), folder);
    } catch (const PageFailure&) {
      throw;
    } catch (const std::bad_alloc&) {
      throw PageFailure(Trouble::TooLarge, "there is not enough memory to lay the document out");
    } catch (const std::exception& error) {
      throw PageFailure(Trouble::BadDocument,
                        std::string("the document cannot be laid out: ") + error.what());
    }
  }

 private:
  std::unique_ptr<Layout> layOutHtml(const std::string& document, const PaperSheet& sheet,
                                     DocumentFolder& folder);

  GObjectHandle<PangoContext> fonts_;
  litehtml::context styles_;
};

DisplayList Record(litehtml::document& document, HtmlContainer& container, int width) {
  document.render(width);
  container.takeDisplayList();
  document.draw(0, 0, 0, nullptr);
  return container.takeDisplayList();
}

std::unique_ptr<Layout> HtmlEngine::layOutHtml(const std::string& bytes, const PaperSheet& sheet,
                                               DocumentFolder& folder) {
  ScannedHtml scanned = ScanHtml(DecodeHtmlDocument(bytes));
  auto pictures = std::make_unique<DocumentPictures>(std::move(scanned.dataUrls), folder);
  const int width = static_cast<int>(sheet.contentWidth() / kPointsPerPixel);
  const int height = static_cast<int>(sheet.contentHeight() / kPointsPerPixel);
  HtmlContainer container(fonts_.get(), *pictures, width, height);
  const auto document =
      litehtml::document::createFromUTF8(scanned.html.c_str(), &container, &styles_);
  DisplayList list = Record(*document, container, width);
  double scale = kPointsPerPixel;
  const double needed = RightOf(list);
  if (needed > width + 1) {
    const double wider = std::min(std::ceil(needed), std::floor(width / kLeastScale));
    list = Record(*document, container, static_cast<int>(wider));
    scale *= width / wider;
  }
  ArrangeWords(list);
  return std::make_unique<HtmlLayout>(sheet, scale, std::move(list), container.takeFonts(),
                                      std::move(pictures));
}

}  // namespace

std::unique_ptr<Engine> MakeHtmlEngine() { return std::make_unique<HtmlEngine>(); }

}  // namespace tarn::pages
