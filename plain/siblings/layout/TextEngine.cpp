#include "siblings/layout/TextEngine.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "siblings/layout/PageOutput.h"
#include "siblings/layout/PaperSheet.h"
#include "siblings/layout/PlainDocument.h"
#include "siblings/layout/TextLinks.h"
#include "siblings/layout/TextShaper.h"

namespace tarn::pages {

namespace {

constexpr double kTextMargin = 54;  // points: room for 80 columns on either paper

// A place between lines: a paragraph's start in the text, and lines of it that come before.
struct LinePlace {
  size_t paragraph = 0;
  int32_t line = 0;
};

// Where a paragraph goes on a page: from that row on, without its first lines.
struct RowPlace {
  int32_t row = 0;
  int32_t skipped = 0;
};

// Goes through the paragraphs of a text, as they are laid out.
class ParagraphReader {
 public:
  ParagraphReader(std::string_view text, size_t start) : text_(text), start_(start) { findEnd(); }

  bool atEnd() const { return start_ >= text_.size(); }
  size_t start() const { return start_; }
  // Up to its line end.
  std::string_view paragraph() const { return text_.substr(start_, end_ - start_); }
  // To what comes after so many bytes of the paragraph.
  void advance(size_t bytes) {
    start_ += bytes;
    if (start_ < end_) return;
    start_ = end_ + 1;
    findEnd();
  }

 private:
  void findEnd() { end_ = std::min(text_.find('\n', start_), text_.size()); }

  std::string_view text_;
  size_t start_;
  size_t end_ = 0;
};

class TextLayout : public Layout {
 public:
  TextLayout(std::string text, const PaperSheet& sheet, std::shared_ptr<TextShaper> shaper)
      : text_(std::move(text)), sheet_(sheet), shaper_(std::move(shaper)) {
    shaper_->setWidth(sheet_.contentWidth());
    split();
  }

  int32_t pageCount() const override { return static_cast<int32_t>(pages_.size()); }
  PageSize pageSize(int32_t /*page*/) const override { return sheet_.size; }

  Bitmap draw(int32_t page, int32_t dotsPerInch, Progress& /*progress*/) override {
    return DrawBitmap(sheet_.size, page, dotsPerInch, drawPage());
  }

  std::string pdf(PageRange range, const PdfProperties& properties, Progress& progress) override {
    return WritePdf({sheet_.size, pageCount(), range, properties}, drawPage(), progress);
  }

 private:
  int32_t linesPerPage() const {
    return static_cast<int32_t>(sheet_.contentHeight() / TextShaper::kLineHeight);
  }

  void split();
  DrawPage drawPage();
  void drawLines(cairo_t* context, int32_t page, Target target);
  int32_t drawParagraph(cairo_t* context, std::string_view paragraph, const RowPlace& place,
                        Target target);
  const std::vector<TextLink>& linksAround(size_t place);
  void addLinks(cairo_t* context, size_t paragraph, PangoLayoutLine* line, double y);

  std::string text_;
  PaperSheet sheet_;
  std::shared_ptr<TextShaper> shaper_;
  std::vector<LinePlace> pages_ = {{}};
  // Of the paragraph that linksAround was last asked about, which is laid out in many pieces if it
  // is long.
  size_t linksFrom_ = 0;
  size_t linksTo_ = 0;
  std::vector<TextLink> links_;
};

void TextLayout::split() {
  const int64_t perPage = linesPerPage();
  int64_t onPage = 0;
  for (ParagraphReader reader(text_, 0); !reader.atEnd();) {
    const TextMeasure measure = shaper_->measure(reader.paragraph());
    int64_t line = 0;
    while (onPage + (measure.lines - line) > perPage) {
      line += perPage - onPage;
      onPage = 0;
      pages_.push_back({reader.start(), static_cast<int32_t>(line)});
    }
    onPage += measure.lines - line;
    reader.advance(measure.bytes);
  }
}

DrawPage TextLayout::drawPage() {
  return
      [this](cairo_t* context, int32_t page, Target target) { drawLines(context, page, target); };
}

void TextLayout::drawLines(cairo_t* context, int32_t page, Target target) {
  cairo_set_source_rgb(context, 0, 0, 0);
  const LinePlace& first = pages_[static_cast<size_t>(page) - 1];
  int32_t skipped = first.line;
  int32_t onPage = 0;
  shaper_->setWidth(sheet_.contentWidth());
  for (ParagraphReader reader(text_, first.paragraph); !reader.atEnd();) {
    const TextMeasure measure = shaper_->measure(reader.paragraph());
    const std::string_view paragraph = reader.paragraph().substr(0, measure.bytes);
    onPage += drawParagraph(context, paragraph, {onPage, skipped}, target);
    if (onPage >= linesPerPage()) break;
    skipped = 0;
    reader.advance(measure.bytes);
  }
}

// Answers how many rows it took.
int32_t TextLayout::drawParagraph(cairo_t* context, std::string_view paragraph,
                                  const RowPlace& place, Target target) {
  if (paragraph.empty()) return 1;
  PangoLayout* layout = shaper_->layOut(paragraph);
  const auto start = static_cast<size_t>(paragraph.data() - text_.data());
  LayoutIterator iterator(pango_layout_get_iter(layout));
  const int32_t room = linesPerPage() - place.row;
  int32_t drawn = 0;
  int32_t line = 0;
  do {
    if (line++ < place.skipped) continue;
    if (drawn >= room) break;
    PangoRectangle extents = {};
    pango_layout_iter_get_line_extents(iterator.get(), nullptr, &extents);
    const double y = sheet_.margin + (place.row + drawn) * TextShaper::kLineHeight;
    cairo_move_to(context, sheet_.margin + static_cast<double>(extents.x) / PANGO_SCALE,
                  y + TextShaper::kBaseline);
    PangoLayoutLine* shown = pango_layout_iter_get_line_readonly(iterator.get());
    pango_cairo_show_layout_line(context, shown);
    if (target == Target::Pdf) addLinks(context, start, shown, y);
    ++drawn;
  } while (pango_layout_iter_next_line(iterator.get()));
  return drawn;
}

// The links of the whole paragraph, by their places in the text.
const std::vector<TextLink>& TextLayout::linksAround(size_t place) {
  if (place >= linksFrom_ && place < linksTo_) return links_;
  const size_t before = place == 0 ? std::string::npos : text_.rfind('\n', place - 1);
  linksFrom_ = before == std::string::npos ? 0 : before + 1;
  linksTo_ = std::min(text_.find('\n', place), text_.size());
  links_ = FindTextLinks(std::string_view(text_).substr(linksFrom_, linksTo_ - linksFrom_));
  for (TextLink& link : links_) {
    link.start += linksFrom_;
    link.end += linksFrom_;
  }
  return links_;
}

// The parts of links that are on a line of what begins there in the text.
void TextLayout::addLinks(cairo_t* context, size_t paragraph, PangoLayoutLine* line, double y) {
  const size_t lineStart = paragraph + static_cast<size_t>(line->start_index);
  const size_t lineEnd = lineStart + static_cast<size_t>(line->length);
  const std::vector<TextLink>& links = linksAround(paragraph);
  auto link = std::upper_bound(links.begin(), links.end(), lineStart,
                               [](size_t at, const TextLink& one) { return at < one.end; });
  for (; link != links.end() && link->start < lineEnd; ++link) {
    const size_t start = std::max(link->start, lineStart) - paragraph;
    const size_t end = std::min(link->end, lineEnd) - paragraph;
    int* ranges = nullptr;
    int count = 0;
    pango_layout_line_get_x_ranges(line, static_cast<int>(start), static_cast<int>(end), &ranges,
                                   &count);
    for (int i = 0; i < count; ++i) {
      const double left = static_cast<double>(ranges[2 * i]) / PANGO_SCALE;
      const double right = static_cast<double>(ranges[2 * i + 1]) / PANGO_SCALE;
      AddLink(context, link->address,
              {sheet_.margin + left, y, right - left, TextShaper::kLineHeight});
    }
    g_free(ranges);
  }
}

class TextEngine : public Engine {
 public:
  std::unique_ptr<Layout> layOut(DocumentKind kind, std::string document, Paper paper,
                                 DocumentFolder& /*folder*/) override {
    if (kind != DocumentKind::Text) {
      throw PageFailure(Trouble::BadDocument, "this engine lays out plain text alone");
    }
    return std::make_unique<TextLayout>(DecodePlainDocument(document), SheetOf(paper, kTextMargin),
                                        shaper_);
  }

 private:
  std::shared_ptr<TextShaper> shaper_ = std::make_shared<TextShaper>();
};

}  // namespace

std::unique_ptr<Engine> MakeTextEngine() { return std::make_unique<TextEngine>(); }

}  // namespace tarn::pages
