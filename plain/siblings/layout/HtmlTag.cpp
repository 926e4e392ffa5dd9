#include "siblings/layout/HtmlTag.h"

#include <glib.h>

#include "siblings/layout/AsciiText.h"

namespace tarn::pages {

namespace {

// Where ">" ends the tag whose attributes begin at a position; npos when the text ends before. Sets
// `kept` where there are more than kMostAttributes.
size_t FindTagEnd(std::string_view text, size_t position, size_t& kept) {
  enum class In { Tag, Name, AfterName, BeforeValue, BareValue } state = In::Tag;
  size_t attributes = 0;
  while (position < text.size()) {
    const char c = text[position];
    if (state == In::BeforeValue && (c == '"' || c == '\'')) {
      position = text.find(c, position + 1);
      if (position == std::string_view::npos) return position;
      state = In::Tag;
    } else if (c == '>') {
      return position;
    } else if (state == In::BareValue) {
      if (IsBlank(c)) state = In::Tag;
    } else if (state == In::BeforeValue) {
      if (!IsBlank(c)) state = In::BareValue;
    } else if (c == '=' && (state == In::Name || state == In::AfterName)) {
      state = In::BeforeValue;
    } else if (c == '/') {
      state = In::Tag;
    } else if (IsBlank(c)) {
      // A blank may part a name from its "=".
      if (state == In::Name) state = In::AfterName;
    } else {
      if (state != In::Name && ++attributes == kMostAttributes + 1) kept = position;
      state = In::Name;
    }
    ++position;
  }
  return std::string_view::npos;
}

}  // namespace

std::optional<HtmlTag> ReadHtmlTag(std::string_view text) {
  HtmlTag tag;
  size_t position = 1;
  if (position < text.size() && text[position] == '/') {
    tag.end = true;
    ++position;
  }
  if (position >= text.size() || !g_ascii_isalpha(text[position])) return std::nullopt;
  while (position < text.size() && !IsBlank(text[position]) && text[position] != '/' &&
         text[position] != '>') {
    tag.name += g_ascii_tolower(text[position++]);
  }
  const size_t close = FindTagEnd(text, position, tag.kept);
  if (close == std::string_view::npos) return std::nullopt;
  tag.inside = text.substr(position, close - position);
  tag.size = close + 1;
  if (tag.kept == 0) tag.kept = tag.size;
  return tag;
}

}  // namespace tarn::pages
