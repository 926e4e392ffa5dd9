#include "siblings/layout/HtmlScan.h"

#include <glib.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <span>
#include <unordered_map>
#include <unordered_set>

#include "siblings/Pages.h"
#include "siblings/layout/HtmlTag.h"
#include "siblings/layout/StyleMedia.h"

namespace tarn::pages {

namespace {

using Names = std::span<const std::string_view>;

// They go with all that is in them, up to their end tag.
constexpr std::array<std::string_view, 16> kDropped = {
    "script", "iframe", "title",  "noembed", "noframes", "template", "audio",    "video",
    "svg",    "math",   "select", "canvas",  "applet",   "datalist", "frameset", "map"};
// Their tags go, and what is in them stays.
constexpr std::array<std::string_view, 17> kUnwrapped = {
    "object",   "embed",     "noscript", "form",  "input",  "meta",  "link",  "base",   "frame",
    "textarea", "plaintext", "xmp",      "param", "source", "track", "image", "listing"};
constexpr std::array<std::string_view, 10> kVoid = {
    "area", "br", "col", "hr", "img", "wbr", "keygen", "command", "bgsound", "spacer"};
// A parser closes these by itself where the next begins, so that they nest only with others.
constexpr std::array<std::string_view, 11> kSelfClosing = {
    "p", "li", "dd", "dt", "option", "optgroup", "html", "head", "body", "rp", "rt"};
constexpr std::array<std::string_view, 14> kFormatting = {
    "a",    "b", "big",   "code",   "em",     "font", "i",
    "nobr", "s", "small", "strike", "strong", "tt",   "u"};
constexpr std::array<std::string_view, 9> kTableParts = {
    "td", "th", "tr", "tbody", "thead", "tfoot", "caption", "colgroup", "table"};

bool IsAmong(std::string_view name, Names names) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

size_t FindAnyCase(std::string_view text, std::string_view what, size_t from) {
  for (; from + what.size() <= text.size(); ++from) {
    from = text.find(what.front(), from);
    if (from == std::string_view::npos || from + what.size() > text.size()) break;
    if (g_ascii_strncasecmp(text.data() + from, what.data(), what.size()) == 0) return from;
  }
  return std::string_view::npos;
}

std::string WithoutComments(std::string_view sheet) {
  std::string kept;
  while (!sheet.empty()) {
    const size_t begin = std::min(sheet.find("/*"), sheet.size());
    kept += sheet.substr(0, begin);
    const size_t end = begin == sheet.size() ? sheet.npos : sheet.find("*/", begin + 2);
    sheet.remove_prefix(end == sheet.npos ? sheet.size() : end + 2);
  }
  return kept;
}

struct RuleDepth {
  size_t deepest = 0;
  size_t open = 0;  // at the end
};

// Of a sheet that goes on where so many are open.
RuleDepth DepthOfRules(std::string_view sheet, size_t open) {
  RuleDepth depth{open, open};
  for (const char c : sheet) {
    if (c == '{') depth.deepest = std::max(depth.deepest, ++depth.open);
    if (c == '}' && depth.open != 0) --depth.open;
  }
  return depth;
}

// The HTML library knows whole points alone, and drops the rest of them: "10.5pt" is "14px" then.
void WholePixels(std::string& markup) {
  for (size_t at = 0; (at = markup.find("pt", at)) != std::string::npos; ++at) {
    const size_t last = markup.find_last_not_of("0123456789.", at == 0 ? 0 : at - 1);
    const size_t first = last == std::string::npos ? 0 : last + 1;
    const std::string number = markup.substr(first, std::max(at, first) - first);
    if (number.size() > 10 || number.find('.') == std::string::npos) continue;
    const double pixels = std::round(g_ascii_strtod(number.c_str(), nullptr) * 96 / 72);
    const std::string length = std::to_string(static_cast<int64_t>(pixels)) + "px";
    markup.replace(first, at + 2 - first, length);
    at = first + length.size() - 1;
  }
}

// The HTML library adds up the digits of a reference without a limit, and takes what comes of it
// for a character. No character has more digits than these.
std::string WithBoundedReferences(std::string html) {
  std::string bounded;
  size_t copied = 0;
  for (size_t at = 0; (at = html.find("&#", at)) != std::string::npos;) {
    const size_t reference = at;
    at += 2;
    const bool hex = html.compare(at, 1, "x") == 0 || html.compare(at, 1, "X") == 0;
    const size_t first = std::min(html.find_first_not_of('0', at + (hex ? 1 : 0)), html.size());
    at = std::min(html.find_first_not_of(hex ? "0123456789abcdefABCDEF" : "0123456789", first),
                  html.size());
    if (at - first <= (hex ? 6u : 7u)) continue;
    if (html.compare(at, 1, ";") == 0) ++at;
    bounded.append(html, copied, reference - copied).append("&#xFFFD;");
    copied = at;
  }
  return copied == 0 ? std::move(html) : bounded.append(html, copied);
}

class HtmlScanner {
 public:
  explicit HtmlScanner(std::string_view html) : rest_(html) {}

  ScannedHtml scan() {
    while (!rest_.empty()) {
      copyText();
      if (!rest_.empty()) takeMarkup();
    }
    if (selectors_ * elements_ <= kMostMatches) {
      result_.html.insert(0, "<style>" + takeNames(styles_) + "</style>");
    }
    result_.html = WithBoundedReferences(std::move(result_.html));
    return std::move(result_);
  }

 private:
  struct Open {
    std::string name;
    size_t formatting = 0;  // how many were open before it
  };

  void copyText();
  std::string_view withoutMark(std::string_view text);
  void takeMarkup();
  void takeDeclaration();
  void takeTag(const HtmlTag& tag);
  void takeStart(const HtmlTag& tag, std::string_view whole);
  void takeEnd(const HtmlTag& tag);
  void takeStyle(std::string_view media);
  void dropElement(const std::string& name);
  void closeParts(Names names);
  void popTo(size_t index);
  void emitTag(const HtmlTag& tag, std::string_view whole);
  std::string takeNames(std::string_view whole);
  void countElement(size_t repeated);
  bool nestsTooDeep(const std::string& name) const;

  std::string_view rest_;
  ScannedHtml result_;
  std::vector<Open> open_;
  std::unordered_map<std::string, size_t> openCount_;
  size_t formatting_ = 0;
  size_t tables_ = 0;
  size_t flattenedTables_ = 0;               // that are open, and have lost their tags
  std::unordered_set<std::string> endless_;  // elements that have no end tag any more
  size_t elements_ = 0;
  std::string styles_;    // of all style elements
  size_t openRules_ = 0;  // at the end of them
  size_t selectors_ = 0;
  size_t textBytes_ = 0;
  size_t nesting_ = 0;     // how deep paragraphs and items were, added up
  bool bodySeen_ = false;  // text outside of tables
};

void HtmlScanner::copyText() {
  const size_t end = std::min(rest_.find('<'), rest_.size());
  textBytes_ += end;
  if (textBytes_ > kMostTextBytes) {
    throw PageFailure(Trouble::TooLarge, "the document has too much text to be laid out");
  }
  // A parser stops at a NUL.
  const std::string_view text = withoutMark(rest_.substr(0, end));
  if (text.find('\0') == std::string_view::npos) {
    result_.html += text;
  } else {
    std::copy_if(text.begin(), text.end(), std::back_inserter(result_.html),
                 [](char c) { return c != '\0'; });
  }
  rest_.remove_prefix(end);
}

// The mark of 7-bit content, which is where a body begins: at the start, or after the table of a
// header block that was put before the body.
std::string_view HtmlScanner::withoutMark(std::string_view text) {
  constexpr std::string_view kMark = "+/v";
  const size_t first = text.find_first_not_of(" \t\r\n");
  if (bodySeen_ || tables_ > 0 || first == std::string_view::npos) return text;
  // The block ends with an empty paragraph.
  if (text.substr(first) == "&nbsp;") return text;
  bodySeen_ = true;
  return text.substr(first).starts_with(kMark) ? text.substr(first + kMark.size()) : text;
}

void HtmlScanner::takeMarkup() {
  if (rest_.starts_with("<!") || rest_.starts_with("<?")) return takeDeclaration();
  if (const auto tag = ReadHtmlTag(rest_)) return takeTag(*tag);
  const bool endsWithin = rest_.size() > 1 && (g_ascii_isalpha(rest_[1]) || rest_[1] == '/');
  if (endsWithin) {
    rest_ = rest_.substr(1, 0);
    return;
  }
  result_.html += "&lt;";
  rest_.remove_prefix(1);
}

// Comments, which may hold tags, and what else begins with "<!": only the document's type matters.
void HtmlScanner::takeDeclaration() {
  size_t size = std::min(rest_.find('>'), rest_.size() - 1) + 1;
  if (rest_.starts_with("<!--") && !rest_.starts_with("<!-->")) {
    const size_t end = rest_.find("-->", 4);
    size = end == std::string_view::npos ? rest_.size() : end + 3;
  } else if (FindAnyCase(rest_.substr(0, 9), "<!doctype", 0) == 0) {
    result_.html += "<!DOCTYPE html>";
  }
  rest_.remove_prefix(size);
}

void HtmlScanner::takeTag(const HtmlTag& tag) {
  const std::string_view whole = rest_.substr(0, tag.size);
  rest_.remove_prefix(tag.size);
  if (IsAmong(tag.name, kUnwrapped)) return;
  if (flattenedTables_ > 0 && IsAmong(tag.name, kTableParts)) {
    // Parts of it would end up in the table around it.
    if (tag.name == "table") tag.end ? --flattenedTables_ : ++flattenedTables_;
  } else if (IsAmong(tag.name, kDropped)) {
    if (!tag.end) dropElement(tag.name);
  } else if (tag.end) {
    takeEnd(tag);
  } else if (tag.name == "style") {
    takeStyle(MediaOfTag(tag.inside));
  } else {
    takeStart(tag, whole);
  }
}

void HtmlScanner::dropElement(const std::string& name) {
  if (endless_.count(name) != 0) return;
  const size_t end = FindAnyCase(rest_, "</" + name, 0);
  // Without an end tag only the tag itself goes, but for scripts, which would show.
  if (end == std::string_view::npos) {
    if (name == "script") rest_ = {};
    endless_.insert(name);
    return;
  }
  rest_.remove_prefix(end);
  if (const auto tag = ReadHtmlTag(rest_)) rest_.remove_prefix(tag->size);
}

void HtmlScanner::takeStyle(std::string_view media) {
  const size_t end = std::min(FindAnyCase(rest_, "</style", 0), rest_.size());
  const std::string style = WithoutComments(rest_.substr(0, end));
  rest_.remove_prefix(end);
  const RuleDepth depth = DepthOfRules(style, openRules_);
  if (depth.deepest > kMostNestedRules) return;
  openRules_ = depth.open;
  selectors_ += static_cast<size_t>(
      std::count_if(style.begin(), style.end(), [](char c) { return c == '{' || c == ','; }));
  const bool isForSome = !media.empty() && media.find_first_of("{};@") == std::string_view::npos;
  if (isForSome) styles_ += "@media " + KnownMedia(media) + "{";
  styles_ += WithKnownMedia(style);
  styles_ += isForSome ? "\n}\n" : "\n";
}

bool HtmlScanner::nestsTooDeep(const std::string& name) const {
  if (IsAmong(name, kFormatting)) return formatting_ >= kMostFormatting;
  if (name == "table") return tables_ >= kMostNestedTables || open_.size() >= kMostNested;
  // The parts of a table that is there stay.
  return open_.size() >= kMostNested + (IsAmong(name, kTableParts) ? 10 : 0);
}

void HtmlScanner::takeStart(const HtmlTag& tag, std::string_view whole) {
  const std::string& name = tag.name;
  if (name == "td" || name == "th") closeParts(std::array<std::string_view, 2>{"td", "th"});
  if (name == "tr") closeParts(std::array<std::string_view, 1>{"tr"});
  if (name == "tbody" || name == "thead" || name == "tfoot" || name == "colgroup") {
    closeParts(std::array<std::string_view, 4>{"tbody", "thead", "tfoot", "colgroup"});
  }
  if (IsAmong(name, kVoid) || IsAmong(name, kSelfClosing)) {
    nesting_ += open_.size();
    if (nesting_ > kMostNesting && IsAmong(name, kSelfClosing)) return;
    countElement(formatting_);
    return emitTag(tag, whole);
  }
  if (nestsTooDeep(name)) {
    if (name == "table") ++flattenedTables_;
    return;
  }
  const bool style = IsAmong(name, kFormatting);
  countElement(style ? 0 : formatting_);
  emitTag(tag, whole);
  ++openCount_[name];
  if (style) {
    ++formatting_;
  } else {
    open_.push_back({name, formatting_});
    if (name == "table") ++tables_;
  }
}

void HtmlScanner::takeEnd(const HtmlTag& tag) {
  const std::string& name = tag.name;
  const auto count = openCount_.find(name);
  if (IsAmong(name, kSelfClosing) || name == "br") {
    countElement(0);
  } else if (count == openCount_.end() || count->second == 0) {
    return;
  } else if (IsAmong(name, kFormatting)) {
    --count->second;
    if (formatting_ > 0) --formatting_;
  } else {
    for (size_t i = open_.size(); i-- > 0;) {
      // Nothing in a cell ends what is around its table.
      if (open_[i].name == "table" && name != "table" && !IsAmong(name, kTableParts)) return;
      if (open_[i].name != name) continue;
      popTo(i);
      break;
    }
  }
  result_.html += "</" + name + ">";
}

// Ends the innermost of these, if it belongs to the innermost table.
void HtmlScanner::closeParts(Names names) {
  for (size_t i = open_.size(); i-- > 0;) {
    if (open_[i].name == "table") return;
    if (IsAmong(open_[i].name, names)) return popTo(i);
  }
}

void HtmlScanner::popTo(size_t index) {
  while (open_.size() > index) {
    const Open& last = open_.back();
    --openCount_[last.name];
    if (last.name == "table") --tables_;
    // A cell takes the style that was begun in it along.
    if (IsAmong(last.name, kTableParts)) formatting_ = std::min(formatting_, last.formatting);
    open_.pop_back();
  }
}

void HtmlScanner::countElement(size_t repeated) {
  elements_ += 1 + repeated;
  if (elements_ > kMostElements) {
    throw PageFailure(Trouble::TooLarge, "the document has too many elements to be laid out");
  }
}

void HtmlScanner::emitTag(const HtmlTag& tag, std::string_view whole) {
  result_.html += takeNames(whole.substr(0, tag.kept));
  if (tag.kept < tag.size) result_.html += '>';
}

// Markup with names in the place of its `data:` URLs.
std::string HtmlScanner::takeNames(std::string_view whole) {
  std::string named;
  constexpr std::string_view kScheme = "data:";
  size_t copied = 0;
  for (size_t at = 0; (at = FindAnyCase(whole, kScheme, at)) != std::string_view::npos;) {
    const size_t last = at == 0 ? at : whole.find_last_not_of(" \t\r\n", at - 1);
    if (at == 0 || last == std::string_view::npos ||
        std::string_view("\"'(=").find(whole[last]) == std::string_view::npos) {
      at += kScheme.size();
      continue;
    }
    const char before = whole[last];
    const bool quoted = before == '"' || before == '\'';
    const size_t end =
        std::min(whole.find_first_of(quoted ? "\"')" : "\"')> \t\r\n", at), whole.size());
    named += whole.substr(copied, at - copied);
    named += std::string(kDataName) + std::to_string(result_.dataUrls.size());
    result_.dataUrls.emplace_back(whole.substr(at, end - at));
    at = copied = end;
  }
  const std::string_view tail = whole.substr(copied);
  std::copy_if(tail.begin(), tail.end(), std::back_inserter(named),
               [](char c) { return c != '\0'; });
  WholePixels(named);
  return named;
}

}  // namespace

ScannedHtml ScanHtml(std::string_view html) { return HtmlScanner(html).scan(); }

}  // namespace tarn::pages
