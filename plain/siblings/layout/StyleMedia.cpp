#include "siblings/layout/StyleMedia.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>

#include "siblings/layout/AsciiText.h"

namespace tarn::pages {

namespace {

constexpr std::string_view kNever = "(max-width:0px)";
constexpr std::string_view kAlways = "(min-width:0px)";

// With and without "min-" and "max-" before them.
constexpr std::array<std::string_view, 11> kFeatures = {
    "width", "height",      "device-width", "device-height", "aspect-ratio", "device-aspect-ratio",
    "color", "color-index", "monochrome",   "resolution",    "orientation"};

char Lower(char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); }

std::string Lowered(std::string_view text) {
  std::string lowered(text);
  std::transform(lowered.begin(), lowered.end(), lowered.begin(), Lower);
  return lowered;
}

// One feature with its parentheses.
std::string_view KnownFeature(std::string_view feature) {
  const std::string_view inside = feature.substr(1, feature.size() - 2);
  const size_t colon = inside.find(':');
  std::string name = Lowered(Trimmed(inside.substr(0, colon)));
  if (name == "prefers-color-scheme" && colon != std::string_view::npos) {
    return Lowered(Trimmed(inside.substr(colon + 1))) == "light" ? kAlways : kNever;
  }
  if (name.rfind("min-", 0) == 0 || name.rfind("max-", 0) == 0) name.erase(0, 4);
  const bool isKnown = std::find(kFeatures.begin(), kFeatures.end(), name) != kFeatures.end();
  return isKnown ? feature : kNever;
}

}  // namespace

std::string KnownMedia(std::string_view queries) {
  std::string known;
  while (!queries.empty()) {
    const size_t open = std::min(queries.find('('), queries.size());
    known += queries.substr(0, open);
    queries.remove_prefix(open);
    if (queries.empty()) break;
    const size_t close = queries.find(')');
    if (close == std::string_view::npos) return known + std::string(kNever);
    known += KnownFeature(queries.substr(0, close + 1));
    queries.remove_prefix(close + 1);
  }
  return known;
}

std::string WithKnownMedia(std::string_view sheet) {
  constexpr std::string_view kRule = "@media";
  std::string known;
  known.reserve(sheet.size());
  while (!sheet.empty()) {
    const size_t at = std::min(sheet.find('@'), sheet.size());
    known += sheet.substr(0, at);
    sheet.remove_prefix(at);
    if (!StartsWithAnyCase(sheet, kRule)) {
      known += sheet.substr(0, 1);
      sheet.remove_prefix(std::min<size_t>(1, sheet.size()));
      continue;
    }
    const size_t end = std::min(sheet.find_first_of("{;"), sheet.size());
    known += kRule;
    known += KnownMedia(sheet.substr(kRule.size(), end - kRule.size()));
    sheet.remove_prefix(end);
  }
  return known;
}

std::string_view MediaOfTag(std::string_view inside) {
  while (!inside.empty()) {
    const size_t start = inside.find_first_not_of(" \t\r\n\f/");
    if (start == std::string_view::npos) break;
    inside.remove_prefix(start);
    const size_t nameEnd = std::min(inside.find_first_of("= \t\r\n\f/", 1), inside.size());
    const std::string name = Lowered(inside.substr(0, nameEnd));
    inside.remove_prefix(nameEnd);
    std::string_view value;
    const size_t next = inside.find_first_not_of(kBlanks);
    if (next != std::string_view::npos && inside[next] == '=') {
      inside.remove_prefix(next + 1);
      inside.remove_prefix(std::min(inside.find_first_not_of(kBlanks), inside.size()));
      const bool isQuoted = !inside.empty() && (inside[0] == '"' || inside[0] == '\'');
      const size_t end = isQuoted ? inside.find(inside[0], 1) : inside.find_first_of(kBlanks);
      const size_t from = isQuoted ? 1 : 0;
      value = inside.substr(from, end == std::string_view::npos ? end : end - from);
      inside.remove_prefix(std::min(end, inside.size()));
      if (isQuoted && !inside.empty()) inside.remove_prefix(1);
    }
    if (name == "media") return Trimmed(value);
  }
  return {};
}

}  // namespace tarn::pages
