#include "siblings/layout/HtmlContainer.h"

#include <glib.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "siblings/OutwardAddress.h"
#include "siblings/layout/HtmlElements.h"
#include "siblings/layout/HtmlPlaces.h"
#include "siblings/layout/WordBreaks.h"

namespace tarn::pages {

namespace {

constexpr size_t kMostCellLayouts = 500'000;
constexpr int kLargestSpan = 100;
constexpr int kMostSpans = 20'000;

Box ToBox(const litehtml::position& position) {
  return {static_cast<double>(position.x), static_cast<double>(position.y),
          static_cast<double>(position.width), static_cast<double>(position.height)};
}

Colour ToColour(const litehtml::web_color& colour) {
  return {colour.red, colour.green, colour.blue, colour.alpha};
}

Corners ToCorners(const litehtml::border_radiuses& radius) {
  const auto number = [](int value) { return static_cast<double>(value); };
  return {{number(radius.top_left_x), number(radius.top_right_x), number(radius.bottom_right_x),
           number(radius.bottom_left_x)},
          {number(radius.top_left_y), number(radius.top_right_y), number(radius.bottom_right_y),
           number(radius.bottom_left_y)}};
}

LineStyle ToLineStyle(litehtml::border_style style) {
  switch (style) {
    case litehtml::border_style_none:
    case litehtml::border_style_hidden:
      return LineStyle::None;
    case litehtml::border_style_dotted:
      return LineStyle::Dotted;
    case litehtml::border_style_dashed:
      return LineStyle::Dashed;
    case litehtml::border_style_double:
      return LineStyle::Double;
    default:
      return LineStyle::Solid;
  }
}

// NOLINTNEXTLINE(performance-no-int-to-ptr): fonts are numbers to litehtml
HtmlFont* ToFont(litehtml::uint_ptr font) { return reinterpret_cast<HtmlFont*>(font); }

// Colours of the system, which mail programs like to name.
struct SystemColour {
  const char* name;
  const char* shown;
};
constexpr std::array<SystemColour, 12> kSystemColours = {{{"windowtext", "#000000"},
                                                          {"window", "#ffffff"},
                                                          {"captiontext", "#000000"},
                                                          {"infotext", "#000000"},
                                                          {"infobackground", "#ffffe1"},
                                                          {"menutext", "#000000"},
                                                          {"menu", "#f0f0f0"},
                                                          {"buttonface", "#f0f0f0"},
                                                          {"buttontext", "#000000"},
                                                          {"highlight", "#3399ff"},
                                                          {"highlighttext", "#ffffff"},
                                                          {"graytext", "#6d6d6d"}}};

using GText = std::unique_ptr<char, ReleasedBy<g_free>>;

// Lines may end anywhere in an address.
std::string WithoutBreaks(const std::string& written) {
  std::string address(WithoutBlanksAround(written));
  const auto isBreak = [](char c) { return c == '\t' || c == '\n' || c == '\r'; };
  address.erase(std::remove_if(address.begin(), address.end(), isBreak), address.end());
  return address;
}

std::string Capitalized(const std::string& text) {
  if (text.empty()) return text;
  const size_t first = static_cast<size_t>(g_utf8_next_char(text.c_str()) - text.c_str());
  const GText upper(g_utf8_strup(text.c_str(), static_cast<gssize>(first)));
  return upper.get() + text.substr(first);
}

}  // namespace

DisplayList HtmlContainer::takeDisplayList() {
  links_.clear();
  knownLinks_.clear();
  return std::exchange(list_, DisplayList());
}

void HtmlContainer::enterLink(const std::string& written) {
  const std::string address = WithoutBreaks(written);
  if (!IsOutwardAddress(address) && !IsInnerAddress(address)) {
    links_.push_back(-1);
    return;
  }
  const auto [known, added] =
      knownLinks_.emplace(address, static_cast<int32_t>(list_.links.size()));
  if (added) list_.links.push_back(address);
  links_.push_back(known->second);
}

void HtmlContainer::leaveLink() { links_.pop_back(); }

void HtmlContainer::keepTogether(const litehtml::position& box) {
  list_.together.push_back(ToBox(box));
}

void HtmlContainer::countCellLayout() {
  if (++cellLayouts_ > kMostCellLayouts) {
    throw PageFailure(Trouble::TooLong, "the tables of the document take too long to be laid out");
  }
}

int HtmlContainer::takeSpan(const char* wanted) {
  const auto span = static_cast<int>(
      std::clamp(std::strtol(wanted, nullptr, 10), 1L, static_cast<long>(kLargestSpan)));
  spans_ += span - 1;
  return spans_ <= kMostSpans ? span : 1;
}

litehtml::uint_ptr HtmlContainer::create_font(const litehtml::tchar_t* faceName, int size,
                                              int weight, litehtml::font_style italic,
                                              unsigned int decoration, litehtml::font_metrics* fm) {
  FontRequest request;
  request.families = faceName;
  request.size = size;
  request.weight = weight;
  request.italic = italic == litehtml::fontStyleItalic;
  request.underline = (decoration & litehtml::font_decoration_underline) != 0;
  request.strikeThrough = (decoration & litehtml::font_decoration_linethrough) != 0;
  request.overline = (decoration & litehtml::font_decoration_overline) != 0;
  HtmlFont* font = fonts_.add(request);
  if (fm != nullptr) {
    fm->ascent = font->ascent();
    fm->descent = font->descent();
    fm->height = font->height();
    fm->x_height = font->xHeight();
    fm->draw_spaces = true;
  }
  return reinterpret_cast<litehtml::uint_ptr>(font);
}

// The display list needs it.
void HtmlContainer::delete_font(litehtml::uint_ptr /*hFont*/) {}

int HtmlContainer::text_width(const litehtml::tchar_t* text, litehtml::uint_ptr hFont) {
  return static_cast<int>(std::lround(ToFont(hFont)->shape(text).width));
}

void HtmlContainer::draw_text(litehtml::uint_ptr /*hdc*/, const litehtml::tchar_t* text,
                              litehtml::uint_ptr hFont, litehtml::web_color color,
                              const litehtml::position& pos) {
  PaintedText painted;
  painted.box = ToBox(pos);
  painted.font = ToFont(hFont);
  painted.baseline = painted.box.bottom() - painted.font->descent();
  painted.text = text;
  painted.word = &painted.font->shape(painted.text);
  painted.colour = ToColour(color);
  painted.link = currentLink();
  list_.items.emplace_back(std::move(painted));
}

int HtmlContainer::pt_to_px(int pt) const {
  return static_cast<int>(std::lround(pt * 96.0 / 72.0));
}

int HtmlContainer::get_default_font_size() const { return 16; }

const litehtml::tchar_t* HtmlContainer::get_default_font_name() const { return "Liberation Sans"; }

void HtmlContainer::draw_list_marker(litehtml::uint_ptr /*hdc*/,
                                     const litehtml::list_marker& marker) {
  const Box box = ToBox(marker.pos);
  if (!marker.image.empty()) {
    if (const Picture* picture = pictures_.find(marker.image)) {
      list_.items.emplace_back(PaintedPicture{box, box, false, false, picture, -1});
      return;
    }
  }
  const double size = std::min(box.width, box.height);
  const Box shape = {box.left, box.top + (box.height - size) / 2, size, size};
  const Colour colour = ToColour(marker.color);
  const Corners round = {{size / 2, size / 2, size / 2, size / 2},
                         {size / 2, size / 2, size / 2, size / 2}};
  if (marker.marker_type == litehtml::list_style_type_circle) {
    const LineStyle solid = LineStyle::Solid;
    list_.items.emplace_back(PaintedBorder{shape,
                                           round,
                                           {1, 1, 1, 1},
                                           {colour, colour, colour, colour},
                                           {solid, solid, solid, solid}});
  } else {
    const bool square = marker.marker_type == litehtml::list_style_type_square;
    list_.items.emplace_back(PaintedBox{shape, square ? Corners() : round, colour});
  }
}

void HtmlContainer::load_image(const litehtml::tchar_t* src, const litehtml::tchar_t* /*baseurl*/,
                               bool /*redraw_on_ready*/) {
  pictures_.find(src);
}

void HtmlContainer::get_image_size(const litehtml::tchar_t* src,
                                   const litehtml::tchar_t* /*baseurl*/, litehtml::size& sz) {
  const Picture* picture = pictures_.find(src);
  sz.width = picture != nullptr ? picture->width : 0;
  sz.height = picture != nullptr ? picture->height : 0;
}

void HtmlContainer::draw_background(litehtml::uint_ptr /*hdc*/,
                                    const litehtml::background_paint& bg) {
  if (bg.color.alpha != 0) {
    if (bg.is_root) {
      list_.canvas = ToColour(bg.color);
    } else {
      list_.items.emplace_back(
          PaintedBox{ToBox(bg.clip_box), ToCorners(bg.border_radius), ToColour(bg.color)});
    }
  }
  if (bg.image.empty()) return;
  const Picture* picture = pictures_.find(bg.image);
  if (picture == nullptr) return;
  PaintedPicture painted;
  painted.box = ToBox(bg.clip_box);
  painted.tile = {static_cast<double>(bg.position_x), static_cast<double>(bg.position_y),
                  static_cast<double>(bg.image_size.width),
                  static_cast<double>(bg.image_size.height)};
  painted.repeatX = bg.repeat == litehtml::background_repeat_repeat ||
                    bg.repeat == litehtml::background_repeat_repeat_x;
  painted.repeatY = bg.repeat == litehtml::background_repeat_repeat ||
                    bg.repeat == litehtml::background_repeat_repeat_y;
  painted.picture = picture;
  painted.link = currentLink();
  list_.items.emplace_back(painted);
}

void HtmlContainer::draw_borders(litehtml::uint_ptr /*hdc*/, const litehtml::borders& borders,
                                 const litehtml::position& draw_pos, bool /*root*/) {
  PaintedBorder painted;
  painted.box = ToBox(draw_pos);
  painted.corners = ToCorners(borders.radius);
  const std::array<const litehtml::border*, 4> sides = {&borders.left, &borders.top, &borders.right,
                                                        &borders.bottom};
  bool visible = false;
  for (size_t i = 0; i < sides.size(); ++i) {
    painted.styles[i] = ToLineStyle(sides[i]->style);
    painted.colours[i] = ToColour(sides[i]->color);
    painted.widths[i] = painted.styles[i] == LineStyle::None ? 0 : std::max(0, sides[i]->width);
    visible = visible || (painted.widths[i] > 0 && painted.colours[i].alpha != 0);
  }
  if (visible) list_.items.emplace_back(painted);
}

void HtmlContainer::set_caption(const litehtml::tchar_t* /*caption*/) {}
void HtmlContainer::set_base_url(const litehtml::tchar_t* /*base_url*/) {}
void HtmlContainer::link(const std::shared_ptr<litehtml::document>& /*doc*/,
                         const litehtml::element::ptr& /*el*/) {}
void HtmlContainer::on_anchor_click(const litehtml::tchar_t* /*url*/,
                                    const litehtml::element::ptr& /*el*/) {}
void HtmlContainer::set_cursor(const litehtml::tchar_t* /*cursor*/) {}

void HtmlContainer::transform_text(litehtml::tstring& text, litehtml::text_transform tt) {
  if (tt == litehtml::text_transform_uppercase) {
    text = GText(g_utf8_strup(text.c_str(), -1)).get();
  } else if (tt == litehtml::text_transform_lowercase) {
    text = GText(g_utf8_strdown(text.c_str(), -1)).get();
  } else if (tt == litehtml::text_transform_capitalize) {
    text = Capitalized(text);
  }
}

void HtmlContainer::import_css(litehtml::tstring& text, const litehtml::tstring& /*url*/,
                               litehtml::tstring& /*baseurl*/) {
  text.clear();
}

void HtmlContainer::set_clip(const litehtml::position& pos,
                             const litehtml::border_radiuses& bdr_radius, bool valid_x,
                             bool valid_y) {
  Box box = ToBox(pos);
  constexpr double kFar = 1e6;
  if (!valid_x) {
    box.left = -kFar;
    box.width = 2 * kFar;
  }
  if (!valid_y) {
    box.top = -kFar;
    box.height = 2 * kFar;
  }
  list_.items.emplace_back(ClipBegin{box, ToCorners(bdr_radius)});
}

void HtmlContainer::del_clip() { list_.items.emplace_back(ClipEnd()); }

void HtmlContainer::get_client_rect(litehtml::position& client) const {
  client = litehtml::position(0, 0, width_, height_);
}

litehtml::element::ptr HtmlContainer::create_element(
    const litehtml::tchar_t* tag_name, const litehtml::string_map& attributes,
    const std::shared_ptr<litehtml::document>& doc) {
  return MakeHtmlElement(tag_name, attributes, doc, *this);
}

void HtmlContainer::get_media_features(litehtml::media_features& media) const {
  media.type = litehtml::media_type_print;
  media.width = width_;
  media.height = height_;
  media.device_width = width_;
  media.device_height = height_;
  media.color = 8;
  media.resolution = 96;
}

void HtmlContainer::get_language(litehtml::tstring& language, litehtml::tstring& culture) const {
  language = "en";
  culture.clear();
}

litehtml::tstring HtmlContainer::resolve_color(const litehtml::tstring& color) const {
  for (const SystemColour& known : kSystemColours) {
    if (g_ascii_strcasecmp(color.c_str(), known.name) == 0) return known.shown;
  }
  return {};
}

void HtmlContainer::split_text(const char* text,
                               const std::function<void(const litehtml::tchar_t*)>& on_word,
                               const std::function<void(const litehtml::tchar_t*)>& on_space) {
  for (const std::string& word : SplitIntoWords(text)) {
    const bool blank = word.size() == 1 && static_cast<unsigned char>(word[0]) <= 0x20;
    (blank ? on_space : on_word)(word.c_str());
  }
}

}  // namespace tarn::pages
