#include "archive/text/HtmlStyles.h"

#include <algorithm>

#include "archive/text/HtmlReferences.h"

namespace tarn::archive {
namespace {

// A style in lower case and without spaces.
std::string StyleOf(const HtmlToken& tag) {
  const std::string_view* const value = tag.attribute("style");
  if (value == nullptr) return {};
  std::string style = DecodedHtmlValue(*value);
  std::transform(style.begin(), style.end(), style.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
  std::erase_if(style, [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); });
  return style;
}

// The last value that the style has for a property; empty without one.
std::string_view ValueOf(std::string_view style, std::string_view property) {
  std::string_view found;
  while (!style.empty()) {
    const size_t end = std::min(style.find(';'), style.size());
    const std::string_view one = style.substr(0, end);
    style.remove_prefix(std::min(end + 1, style.size()));
    if (one.size() > property.size() && one.starts_with(property) && one[property.size()] == ':') {
      found = one.substr(property.size() + 1);
    }
  }
  const size_t important = found.find('!');
  return found.substr(0, important);
}

// Of several numbers, as those of a margin, all of them.
bool IsZero(std::string_view value) {
  return value.starts_with('0') && value.find_first_of("123456789") == value.npos;
}

bool IsPieceOfText(std::string_view name) {
  return name == "span" || name == "font" || name == "p" || name == "b" || name == "i" ||
         name == "u" || name == "a";
}

}  // namespace

Hiding HidingOf(const HtmlToken& tag) {
  if (tag.attribute("hidden") != nullptr) return Hiding::Everything;
  const std::string style = StyleOf(tag);
  if (style.empty()) return Hiding::None;
  if (ValueOf(style, "display") == "none") return Hiding::Everything;
  const bool hasNoSize = IsZero(ValueOf(style, "font-size"));
  const bool hasNoHeight = IsZero(ValueOf(style, "max-height")) || IsZero(ValueOf(style, "height"));
  const bool isClear =
      IsZero(ValueOf(style, "opacity")) || ValueOf(style, "color") == "transparent";
  const bool isCut = ValueOf(style, "overflow") == "hidden";
  if (hasNoSize && (isClear || hasNoHeight)) return Hiding::Everything;
  if (hasNoHeight && (isCut || isClear)) return Hiding::Everything;
  if (ValueOf(style, "visibility") == "hidden") return Hiding::Visibility;
  return hasNoSize && IsPieceOfText(tag.name) ? Hiding::Size : Hiding::None;
}

bool IsSeenWithin(Hiding hiding, const HtmlToken& tag) {
  if (hiding == Hiding::None) return true;
  if (hiding == Hiding::Everything) return false;
  const std::string style = StyleOf(tag);
  if (hiding == Hiding::Visibility) return ValueOf(style, "visibility") == "visible";
  if (tag.name == "font" && tag.attribute("size") != nullptr) return true;
  // A part of no size is none.
  const std::string_view size = ValueOf(style, "font-size");
  const bool isRelative = size.ends_with("%") || size.ends_with("ex") || size.ends_with("ch") ||
                          size.ends_with("er") || size == "inherit" ||
                          (size.ends_with("em") && !size.ends_with("rem"));
  return !size.empty() && !IsZero(size) && !isRelative;
}

bool HasNoMargins(const HtmlToken& tag) {
  const std::string_view* const name = tag.attribute("class");
  if (name != nullptr && name->find("Mso") != name->npos) return true;
  const std::string style = StyleOf(tag);
  const auto isZero = [&](std::string_view side) {
    const std::string_view own = ValueOf(style, side);
    return IsZero(own.empty() ? ValueOf(style, "margin") : own);
  };
  return isZero("margin-top") && isZero("margin-bottom");
}

bool KeepsSpaces(const HtmlToken& tag) {
  return ValueOf(StyleOf(tag), "white-space").starts_with("pre");
}

}  // namespace tarn::archive
