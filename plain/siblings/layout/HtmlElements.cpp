#include "siblings/layout/HtmlElements.h"

#include <litehtml/el_anchor.h>
#include <litehtml/el_space.h>
#include <litehtml/el_td.h>
#include <litehtml/el_text.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <map>
#include <optional>
#include <string_view>
#include <utility>

#include "siblings/layout/HtmlContainer.h"
#include "siblings/layout/WordBreaks.h"

namespace tarn::pages {

namespace {

bool IsTag(const litehtml::element::ptr& element, std::string_view tag) {
  return element != nullptr && element->get_tagName() != nullptr && tag == element->get_tagName();
}

// The value of an attribute as a number; nothing when it has none.
std::optional<int> NumberOf(const litehtml::element& element, const char* attribute) {
  const char* text = element.get_attr(attribute, nullptr);
  if (text == nullptr) return std::nullopt;
  while (*text == ' ') ++text;
  char* end = nullptr;
  const long value = std::strtol(text, &end, 10);
  if (end == text) return std::nullopt;
  return static_cast<int>(std::clamp(value, -1'000L, 1'000L));
}

// What attributes say that are older than style sheets. Style sheets come after them.
class OldElement : public litehtml::html_tag {
 public:
  explicit OldElement(const std::shared_ptr<litehtml::document>& document) : html_tag(document) {}

 protected:
  // Nothing, without a value.
  void set(const char* property, const char* value) {
    if (value != nullptr) m_style.add_property(property, value, nullptr, false, this);
  }
  void setFrom(const char* property, const char* attribute) {
    set(property, get_attr(attribute, nullptr));
  }
};

class BodyElement : public OldElement {
 public:
  using OldElement::OldElement;

  bool is_body() const override { return true; }

  void parse_attributes() override {
    setFrom("background-color", "bgcolor");
    setFrom("color", "text");
    OldElement::parse_attributes();
  }
};

// A list: small letters and capitals differ in its type.
class ListElement : public OldElement {
 public:
  using OldElement::OldElement;

  void parse_attributes() override {
    constexpr std::array<std::array<const char*, 2>, 8> kTypes = {{{"1", "decimal"},
                                                                   {"a", "lower-alpha"},
                                                                   {"A", "upper-alpha"},
                                                                   {"i", "lower-roman"},
                                                                   {"I", "upper-roman"},
                                                                   {"disc", "disc"},
                                                                   {"circle", "circle"},
                                                                   {"square", "square"}}};
    const std::string_view type = get_attr("type", "");
    for (const auto& [name, style] : kTypes) {
      if (type == name) set("list-style-type", style);
    }
    OldElement::parse_attributes();
  }
};

// The old element for colour, face and size. Sizes are from 1 to 7, or differ from 3 by their sign.
class FontElement : public OldElement {
 public:
  using OldElement::OldElement;

  void parse_attributes() override {
    setFrom("color", "color");
    setFrom("font-family", "face");
    if (const std::optional<int> size = NumberOf(*this, "size")) {
      constexpr std::array<const char*, 7> kSizes = {"10px", "13px", "16px", "18px",
                                                     "24px", "32px", "48px"};
      const char* text = get_attr("size", "");
      const bool relative = std::strchr(text, '+') != nullptr || *size < 0;
      const int number = std::clamp(relative ? 3 + *size : *size, 1, 7);
      set("font-size", kSizes[static_cast<size_t>(number - 1)]);
    }
    OldElement::parse_attributes();
  }
};

class LinkElement : public litehtml::el_anchor {
 public:
  LinkElement(const std::shared_ptr<litehtml::document>& document, std::string address,
              HtmlContainer& container)
      : el_anchor(document), address_(std::move(address)), container_(container) {}

  void draw_children(litehtml::uint_ptr hdc, int x, int y, const litehtml::position* clip,
                     litehtml::draw_flag flag, int zindex) override {
    container_.enterLink(address_);
    el_anchor::draw_children(hdc, x, y, clip, flag, zindex);
    container_.leaveLink();
  }

 private:
  std::string address_;
  HtmlContainer& container_;
};

// A table measures each cell twice, at a width of 1 and at all the width there is, and then lays it
// out: in nested tables that is three to the power of their depth. Measures do not change, so that
// each is taken once; after one that was not, the cell says that it is not laid out.
class CellElement : public litehtml::el_td {
 public:
  CellElement(const std::shared_ptr<litehtml::document>& document, HtmlContainer& container)
      : el_td(document), container_(container) {}

  int render(int x, int y, int max_width, bool second_pass) override {
    const bool least = max_width == kLeastWidth;
    const bool measure = least || measuring_;
    measuring_ = least;
    const auto known = measures_.find(max_width);
    if (measure && known != measures_.end()) {
      m_pos.width = kNotLaidOut;
      return known->second;
    }
    container_.countCellLayout();
    const int width = el_td::render(x, y, max_width, second_pass);
    if (measure) measures_[max_width] = width;
    return width;
  }

  void set_attr(const litehtml::tchar_t* name, const litehtml::tchar_t* val) override {
    const std::string_view attribute = name;
    if (attribute == "colspan" || attribute == "rowspan") {
      el_td::set_attr(name, std::to_string(container_.takeSpan(val)).c_str());
    } else {
      el_td::set_attr(name, val);
    }
  }

  // What the table says of its cells.
  void parse_attributes() override {
    litehtml::element::ptr table = parent();
    while (table != nullptr && !IsTag(table, "table")) table = table->parent();
    if (table != nullptr) {
      if (const auto padding = NumberOf(*table, "cellpadding")) {
        set("padding", std::to_string(std::max(*padding, 0)) + "px");
      }
      if (NumberOf(*table, "border").value_or(0) > 0) set("border", "1px solid #808080");
    }
    el_td::parse_attributes();
  }

  // A cell is at least as high as it is told to be, and as high as what is in it.
  void parse_styles(bool is_reparse) override {
    el_td::parse_styles(is_reparse);
    if (m_css_height.is_predefined() || m_css_min_height.val() != 0) return;
    m_css_min_height = m_css_height;
    m_css_height.predef(0);
  }

  void draw(litehtml::uint_ptr hdc, int x, int y, const litehtml::position* clip) override {
    litehtml::position box = m_pos;
    box.x += x;
    box.y += y;
    container_.keepTogether(box);
    el_td::draw(hdc, x, y, clip);
  }

 private:
  static constexpr int kLeastWidth = 1;
  static constexpr int kNotLaidOut = -1'000'000;

  void set(const char* property, const std::string& value) {
    m_style.add_property(property, value.c_str(), nullptr, false, this);
  }

  HtmlContainer& container_;
  std::map<int, int> measures_;  // the width that is needed, by the width that there is
  bool measuring_ = false;
};

// The text that stands for an image.
litehtml::element::ptr MakeAlternative(const std::string& text,
                                       const std::shared_ptr<litehtml::document>& document) {
  auto element = std::make_shared<litehtml::html_tag>(document);
  for (const std::string& word : SplitIntoWords(text)) {
    litehtml::element::ptr child;
    if (word.size() == 1 && static_cast<unsigned char>(word[0]) <= 0x20) {
      child = std::make_shared<litehtml::el_space>(word.c_str(), document);
    } else {
      child = std::make_shared<litehtml::el_text>(word.c_str(), document);
    }
    element->appendChild(child);
  }
  return element;
}

litehtml::element::ptr MakeImage(const litehtml::string_map& attributes,
                                 const std::shared_ptr<litehtml::document>& document,
                                 HtmlContainer& container) {
  const auto source = attributes.find("src");
  litehtml::size size;
  if (source != attributes.end()) {
    container.get_image_size(source->second.c_str(), nullptr, size);
  }
  if (size.width > 0) return nullptr;
  const auto text = attributes.find("alt");
  return MakeAlternative(text != attributes.end() ? text->second : "", document);
}

}  // namespace

litehtml::element::ptr MakeHtmlElement(const std::string& tag,
                                       const litehtml::string_map& attributes,
                                       const std::shared_ptr<litehtml::document>& document,
                                       HtmlContainer& container) {
  if (tag == "td" || tag == "th") return std::make_shared<CellElement>(document, container);
  if (tag == "body") return std::make_shared<BodyElement>(document);
  if (tag == "ol" || tag == "ul") return std::make_shared<ListElement>(document);
  if (tag == "font") return std::make_shared<FontElement>(document);
  if (tag == "img") return MakeImage(attributes, document, container);
  if (tag == "a") {
    const auto address = attributes.find("href");
    if (address != attributes.end()) {
      return std::make_shared<LinkElement>(document, address->second, container);
    }
  }
  return nullptr;
}

}  // namespace tarn::pages
