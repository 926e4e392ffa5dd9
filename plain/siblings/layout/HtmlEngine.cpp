#include "siblings/layout/HtmlEngine.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>
#include <vector>

#include "siblings/layout/BidiLines.h"
#include "siblings/layout/DisplayPainter.h"
#include "siblings/layout/FontContext.h"
#include "siblings/layout/HtmlCharset.h"
#include "siblings/layout/HtmlContainer.h"
#include "siblings/layout/HtmlPlaces.h"
#include "siblings/layout/HtmlScan.h"
#include "siblings/layout/HtmlUnseen.h"
#include "siblings/layout/MasterStyle.h"
#include "siblings/layout/PageCuts.h"
#include "siblings/layout/PageOutput.h"
#include "siblings/layout/PaperSheet.h"

namespace tarn::pages {

namespace {

constexpr double kMargin = 36;  // points
constexpr double kPointsPerPixel = 72.0 / 96.0;
// Words and pictures count for the scale of a page up to this; what is still further to the right
// is somewhere by mistake.
constexpr double kLeastScale = 0.05;
// A ground, or a border, counts up to this even if there is little on it.
constexpr double kLeastGroundScale = 0.35;

bool IsSeen(const Painted& item) {
  if (const auto* text = std::get_if<PaintedText>(&item)) {
    return text->text.find_first_not_of(" \t\r\n") != std::string::npos;
  }
  return !std::holds_alternative<ClipBegin>(item);
}

struct SeenBox {
  Box box;
  bool ground = false;  // or a border: not a word or a picture
};

SeenBox SeenBoxOf(const Painted& item, const Box& box) {
  SeenBox seen = {box, !std::holds_alternative<PaintedText>(item)};
  if (const auto* picture = std::get_if<PaintedPicture>(&item)) {
    seen.ground = picture->repeatX || picture->repeatY;
    if (!seen.ground) seen.box = Overlap(box, picture->tile);
  }
  return seen;
}

// What is neither blank, nor clipped away, nor above or left of the sheet.
std::vector<SeenBox> SeenBoxesOf(const DisplayList& list) {
  constexpr double kEndless = 1e12;
  std::vector<SeenBox> all;
  std::vector<Box> clips = {{0, 0, kEndless, kEndless}};
  for (const Painted& item : list.items) {
    const Box* box = BoxOf(item);
    if (box == nullptr) {
      if (clips.size() > 1) clips.pop_back();
    } else if (std::holds_alternative<ClipBegin>(item)) {
      clips.push_back(Overlap(clips.back(), *box));
    } else if (IsSeen(item)) {
      SeenBox seen = SeenBoxOf(item, *box);
      seen.box = Overlap(clips.back(), seen.box);
      if (!seen.box.empty()) all.push_back(seen);
    }
  }
  return all;
}

// How far to the right there is something that a page of that width should show. Grounds count as
// far as there is content on at least half of them.
double ReachOf(const DisplayList& list, double width, double leastScale) {
  const std::vector<SeenBox> all = SeenBoxesOf(list);
  const auto reach = [&](bool ground, double most) {
    double right = 0;
    for (const SeenBox& seen : all) {
      if (seen.ground == ground && seen.box.right() <= most) {
        right = std::max(right, seen.box.right());
      }
    }
    return right;
  };
  const double content = reach(false, width / leastScale);
  return std::max(content, reach(true, std::max(2 * content, width / kLeastGroundScale)));
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
    return DrawBitmap(sheet_.size, page, dotsPerInch, [this](cairo_t* context, int32_t at, Target) {
      drawPage(context, at, nullptr);
    });
  }

  std::string pdf(PageRange range, const PdfProperties& properties, Progress& progress) override {
    const std::vector<ShownPlace> places = placesIn(range);
    const auto draw = [&](cairo_t* context, int32_t at, Target) {
      drawPage(context, at, [&](size_t link, const cairo_rectangle_t& box) {
        const std::string& address = list_.links[link];
        if (!IsInnerAddress(address)) {
          AddLink(context, address, box);
        } else if (std::any_of(places.begin(), places.end(),
                               [link](const ShownPlace& place) { return place.link == link; })) {
          AddInnerLink(context, link, box);
        }
      });
      cairo_identity_matrix(context);
      for (const ShownPlace& place : places) {
        if (place.page == at) AddPlace(context, place.link, place.top);
      }
    };
    return WritePdf({sheet_.size, pageCount(), range, properties}, draw, progress);
  }

 private:
  void drawPage(cairo_t* context, int32_t page, const PlaceLink& placeLink) {
    const PageBand& band = bands_[static_cast<size_t>(page) - 1];
    if (list_.canvas) {
      cairo_set_source_rgba(context, list_.canvas->red / 255.0, list_.canvas->green / 255.0,
                            list_.canvas->blue / 255.0, list_.canvas->alpha / 255.0);
      cairo_paint(context);
    }
    cairo_translate(context, sheet_.margin, sheet_.margin);
    cairo_scale(context, scale_, scale_);
    cairo_translate(context, 0, -band.top);
    PaintBand(context, list_, band, placeLink);
  }

  // Where an inner link leads to: points from the top of a page.
  struct ShownPlace {
    size_t link = 0;
    int32_t page = 1;
    double top = 0;
  };

  // Those of a range of pages.
  std::vector<ShownPlace> placesIn(PageRange range) const {
    std::vector<ShownPlace> places;
    for (size_t link = 0; link < list_.links.size(); ++link) {
      const auto known = list_.places.find(list_.links[link]);
      if (known == list_.places.end()) continue;
      const int32_t page = pageOf(known->second);
      if (page < range.first || (range.last != 0 && page > range.last)) continue;
      const double below = known->second - bands_[static_cast<size_t>(page) - 1].top;
      places.push_back({link, page, sheet_.margin + std::max(below, 0.0) * scale_});
    }
    return places;
  }

  // The last page that begins above it. What no page shows, since it is blank, leads to the next.
  int32_t pageOf(double top) const {
    const auto after =
        std::upper_bound(bands_.begin(), bands_.end(), top,
                         [](double place, const PageBand& band) { return place < band.top; });
    if (after == bands_.begin()) return 1;
    const auto page = static_cast<int32_t>(after - bands_.begin());
    const bool isShown = top < std::prev(after)->top + sheet_.contentHeight() / scale_;
    return isShown || after == bands_.end() ? page : page + 1;
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

struct Recorded {
  DisplayList list;
  double width = 0;  // of the list, in pixels, that a page shows
};

// Laid out at the width of a page, or at that of what does not fit one.
Recorded RecordAll(litehtml::document& document, HtmlContainer& container, int width) {
  DisplayList list = Record(document, container, width);
  const double needed = std::ceil(ReachOf(list, width, kLeastScale));
  if (needed <= width + 1) return {std::move(list), static_cast<double>(width)};
  DisplayList wider = Record(document, container, static_cast<int>(needed));
  // What is told to be wider than its surroundings never fits.
  constexpr double kMostGrowth = 1.25;
  constexpr double kNoLeastScale = 1e-9;
  const double reached = std::ceil(ReachOf(wider, needed, kNoLeastScale));
  if (reached > kMostGrowth * needed) return {std::move(list), needed};
  return {std::move(wider), std::max(needed, reached)};
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
  HideUnseen(*document);
  Recorded recorded = RecordAll(*document, container, width);
  recorded.list.places = FindPlaces(*document, recorded.list.links);
  ArrangeWords(recorded.list);
  return std::make_unique<HtmlLayout>(sheet, kPointsPerPixel * width / recorded.width,
                                      std::move(recorded.list), container.takeFonts(),
                                      std::move(pictures));
}

}  // namespace

std::unique_ptr<Engine> MakeHtmlEngine() { return std::make_unique<HtmlEngine>(); }

}  // namespace tarn::pages
