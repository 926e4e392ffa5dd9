#include "siblings/layout/HtmlUnseen.h"

#include <litehtml/el_text.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <vector>

namespace tarn::pages {
namespace {

struct Measure {
  double number = 0;
  std::string_view unit;
};

// A number with its unit; nothing for other words.
std::optional<Measure> MeasureOf(const char* text) {
  if (text == nullptr) return std::nullopt;
  while (*text == ' ') ++text;
  const std::string_view start = std::string_view(text).substr(0, 1);
  if (start.find_first_of("0123456789.+-") == std::string_view::npos) return std::nullopt;
  char* end = nullptr;
  const double number = std::strtod(text, &end);
  if (end == text) return std::nullopt;
  while (*end == ' ') ++end;
  return Measure{number, end};
}

bool IsNothing(const char* text) {
  const std::optional<Measure> measure = MeasureOf(text);
  return measure && measure->number <= 0;
}

// Is text of that element without a size, when that around it is or is not?
bool HasNoSize(const litehtml::element& element, bool around) {
  const char* const own = element.get_style_property("font-size", false, nullptr);
  if (own == nullptr) return around;
  const std::optional<Measure> measure = MeasureOf(own);
  const std::string_view word = own;
  if (!measure) return around && (word == "smaller" || word == "larger" || word == "inherit");
  if (measure->number <= 0) return true;
  return around && (measure->unit.empty() || measure->unit == "em" || measure->unit == "%");
}

struct Place {
  litehtml::element::ptr element;
  bool noSize = false;
};

}  // namespace

void HideUnseen(litehtml::document& document) {
  std::vector<Place> left = {{document.root(), false}};
  while (!left.empty()) {
    const Place place = left.back();
    left.pop_back();
    auto* const tag = dynamic_cast<litehtml::html_tag*>(place.element.get());
    if (tag == nullptr) continue;
    if (IsNothing(tag->get_style_property("opacity", false, nullptr))) {
      tag->add_style("visibility:hidden !important", "");
      tag->parse_styles(true);
      continue;
    }
    const char* const overflow = tag->get_style_property("overflow", false, nullptr);
    if (overflow != nullptr && std::string_view(overflow) == "hidden" &&
        IsNothing(tag->get_style_property("max-height", false, nullptr))) {
      tag->add_style("height:0 !important", "");
      tag->parse_styles(true);
    }
    const bool noSize = HasNoSize(*tag, place.noSize);
    if (noSize) {
      auto& children = tag->children();
      const auto isText = [](const litehtml::element::ptr& child) {
        return dynamic_cast<const litehtml::el_text*>(child.get()) != nullptr;
      };
      children.erase(std::remove_if(children.begin(), children.end(), isText), children.end());
    }
    for (const litehtml::element::ptr& child : tag->children()) left.push_back({child, noSize});
  }
}

}  // namespace tarn::pages
