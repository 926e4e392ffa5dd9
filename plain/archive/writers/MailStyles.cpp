#include "archive/writers/MailStyles.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "archive/text/AsciiText.h"

namespace tarn::archive {
namespace {

bool IsAlphanumeric(char c) {
  return (c >= '0' && c <= '9') || (LowerAscii(c) >= 'a' && LowerAscii(c) <= 'z');
}
bool IsOfName(char c) { return IsAlphanumeric(c) || c == '-' || c == '_' || c == '\\' || c < 0; }

bool BeginsWithName(std::string_view text, std::string_view lowerName) {
  return StartsWithNoCase(text, lowerName) &&
         (text.size() == lowerName.size() || !IsOfName(text[lowerName.size()]));
}

// The end of what is in quotes, or in square brackets, from its first sign on.
size_t EndOfClosed(std::string_view text, size_t at) {
  const char close = text[at] == '[' ? ']' : text[at];
  for (++at; at < text.size() && text[at] != close; ++at) {
    if (text[at] == '\\') ++at;
    const bool isQuote = at < text.size() && (text[at] == '"' || text[at] == '\'');
    if (isQuote && close == ']') at = EndOfClosed(text, at) - 1;
  }
  return std::min(at + 1, text.size());
}

// `html body p` is `body p`, and `html` alone is `body`.
std::string_view WithoutRoot(std::string_view selector) {
  for (const std::string_view root : {"html", ":root"}) {
    if (!BeginsWithName(selector, root)) continue;
    std::string_view rest = selector.substr(root.size());
    if (Trimmed(rest, kHtmlSpace).empty()) return "body";
    if (!IsHtmlSpace(rest[0]) && rest[0] != '>') continue;
    rest = Trimmed(rest, kHtmlSpace);
    if (rest[0] == '>') rest = Trimmed(rest.substr(1), kHtmlSpace);
    return rest;
  }
  return selector;
}

// A piece of a sheet up to a sign that ends it.
struct Piece {
  std::string text;  // without comments
  bool isFit = true;
};

class StyleReader {
 public:
  explicit StyleReader(std::string_view css) : rest_(css) {}

  std::string read() {
    takeRules(0);
    return std::move(out_);
  }

  // Of an attribute, where no brace ends them.
  std::string readDeclarations() {
    std::string all;
    while (!rest_.empty()) {
      const std::string some = takeDeclarations();
      if (!all.empty() && !some.empty()) all += ';';
      all += some;
    }
    return all;
  }

 private:
  static constexpr size_t kDeepest = 8;

  void takeRules(size_t depth);
  void takeRule();
  void takeAtRule(size_t depth);
  void takeKeyframes();
  std::string takeDeclarations();
  Piece takePiece(std::string_view ends);
  void takeQuoted(Piece& piece);
  void takeEscape(Piece& piece);
  void skipComment();
  void skipBlock();
  bool isAt(char sign) const { return !rest_.empty() && rest_[0] == sign; }
  bool take(std::string_view sign);

  std::string_view rest_;
  std::string out_;
};

bool StyleReader::take(std::string_view sign) {
  if (!rest_.starts_with(sign)) return false;
  rest_.remove_prefix(sign.size());
  return true;
}

void StyleReader::skipComment() {
  const size_t end = rest_.find("*/", 2);
  rest_.remove_prefix(end == rest_.npos ? rest_.size() : end + 2);
}

// A string may not reach over the end of a line.
void StyleReader::takeQuoted(Piece& piece) {
  const char quote = rest_[0];
  piece.text += quote;
  rest_.remove_prefix(1);
  while (!rest_.empty() && rest_[0] != quote) {
    if (rest_[0] == '\n' || rest_[0] == '\r' || rest_[0] == '\f') {
      piece.isFit = false;
      return;
    }
    if (rest_[0] == '\\') {
      takeEscape(piece);
      continue;
    }
    piece.text += rest_[0];
    rest_.remove_prefix(1);
  }
  piece.isFit = piece.isFit && !rest_.empty();
  if (!rest_.empty()) rest_.remove_prefix(1);
  piece.text += quote;
}

// Signs that mean something to those who know no escapes are not fit.
void StyleReader::takeEscape(Piece& piece) {
  constexpr std::string_view kFit = ":/.-_%!@#+*";
  rest_.remove_prefix(1);
  if (rest_.empty() || !(IsAlphanumeric(rest_[0]) || kFit.find(rest_[0]) != kFit.npos)) {
    piece.isFit = false;
    return;
  }
  piece.text += '\\';
  piece.text += rest_[0];
  rest_.remove_prefix(1);
}

Piece StyleReader::takePiece(std::string_view ends) {
  Piece piece;
  std::string open;
  while (!rest_.empty()) {
    const char c = rest_[0];
    const bool isBrace = c == '{' || c == '}';
    if (ends.find(c) != ends.npos && (open.empty() || isBrace)) break;
    if (rest_.starts_with("/*")) {
      skipComment();
      piece.text += ' ';
      continue;
    }
    if (c == '"' || c == '\'') {
      takeQuoted(piece);
      continue;
    }
    if (c == '\\') {
      takeEscape(piece);
      continue;
    }
    if (c == '(') open += ')';
    if (c == '[') open += ']';
    if (c == ')' || c == ']') {
      piece.isFit = piece.isFit && open.ends_with(c);
      if (open.ends_with(c)) open.pop_back();
    }
    piece.text += c;
    rest_.remove_prefix(1);
  }
  piece.isFit = piece.isFit && open.empty() &&
                piece.text.find_first_of(std::string_view("<\0", 2)) == piece.text.npos;
  piece.text = std::string(Trimmed(piece.text, kHtmlSpace));
  return piece;
}

// After its first brace, up to the one that closes it.
void StyleReader::skipBlock() {
  size_t depth = 1;
  while (!rest_.empty() && depth != 0) {
    takePiece("{};");
    if (isAt('{')) ++depth;
    if (isAt('}')) --depth;
    if (!rest_.empty()) rest_.remove_prefix(1);
  }
}

std::string StyleReader::takeDeclarations() {
  std::string list;
  for (;;) {
    const Piece piece = takePiece("{};");
    if (take("{")) {
      skipBlock();
      continue;
    }
    if (piece.isFit && !piece.text.empty() && piece.text[0] != '@' && !MayFetch(piece.text)) {
      if (!list.empty()) list += ';';
      list += piece.text;
    }
    if (rest_.empty() || take("}")) return list;
    take(";");
  }
}

void StyleReader::takeRule() {
  const Piece prelude = takePiece("{}");
  if (!take("{")) return;
  const std::string declarations = takeDeclarations();
  if (!prelude.isFit || declarations.empty()) return;
  std::string selectors;
  std::string_view rest = prelude.text;
  size_t depth = 0;
  for (size_t at = 0; at <= rest.size();) {
    const bool isEnd = at == rest.size();
    if (!isEnd && (rest[at] == '"' || rest[at] == '\'' || rest[at] == '[')) {
      at = EndOfClosed(rest, at);
      continue;
    }
    if (!isEnd && rest[at] == '(') ++depth;
    if (!isEnd && rest[at] == ')') --depth;
    if (!isEnd && (rest[at] != ',' || depth != 0)) {
      ++at;
      continue;
    }
    const std::string selector = SelectorWithinMail(rest.substr(0, at));
    if (!selector.empty() && !selectors.empty()) selectors += ',';
    selectors += selector;
    if (isEnd) break;
    rest.remove_prefix(at + 1);
    at = 0;
  }
  if (!selectors.empty()) out_.append(selectors).append("{").append(declarations).append("}\n");
}

// Their selectors are places in time.
void StyleReader::takeKeyframes() {
  for (;;) {
    const Piece place = takePiece("{}");
    if (!take("{")) break;
    const std::string declarations = takeDeclarations();
    // "from", "to", and percentages
    constexpr std::string_view kSigns = "0123456789.,% \t\r\nfromt";
    const bool isPlace = place.text.find_first_not_of(kSigns) == place.text.npos;
    if (place.isFit && isPlace)
      out_.append(place.text).append("{").append(declarations).append("}");
  }
  take("}");
}

void StyleReader::takeAtRule(size_t depth) {
  constexpr std::string_view kKeyframes[] = {"-moz-keyframes", "-webkit-keyframes", "keyframes"};
  rest_.remove_prefix(1);
  const Piece prelude = takePiece("{};");
  if (!take("{")) {
    take(";");
    return;
  }
  const auto isNamed = [&](std::string_view name) { return BeginsWithName(prelude.text, name); };
  const bool isGroup = isNamed("media") || isNamed("supports");
  const bool isKeyframes = std::any_of(std::begin(kKeyframes), std::end(kKeyframes), isNamed);
  if (!prelude.isFit || depth == kDeepest || (!isGroup && !isKeyframes)) return skipBlock();
  out_.append("@").append(prelude.text).append("{\n");
  if (isGroup) {
    takeRules(depth + 1);
  } else {
    takeKeyframes();
  }
  out_ += "}\n";
}

void StyleReader::takeRules(size_t depth) {
  while (!rest_.empty()) {
    if (IsHtmlSpace(rest_[0]) || rest_[0] == ';') {
      rest_.remove_prefix(1);
    } else if (rest_.starts_with("/*")) {
      skipComment();
    } else if (take("<!--") || take("-->")) {
      continue;
    } else if (take("}")) {
      if (depth != 0) return;
    } else if (isAt('@')) {
      takeAtRule(depth);
    } else {
      takeRule();
    }
  }
}

}  // namespace

std::string SelectorWithinMail(std::string_view selector) {
  selector = WithoutRoot(Trimmed(selector, kHtmlSpace));
  // A selector that begins with how it hangs on what is before it would begin at <main>.
  if (selector.empty() || std::string_view(">+~|&").find(selector[0]) != selector.npos) return {};
  std::string within(kMailElement);
  within += ' ';
  bool isStart = true;
  for (size_t at = 0; at < selector.size();) {
    const char c = selector[at];
    size_t end = at + 1;
    if (c == '"' || c == '\'' || c == '[') {
      end = EndOfClosed(selector, at);
    } else if (IsOfName(c)) {
      while (end < selector.size() && IsOfName(selector[end])) ++end;
    }
    if (isStart && BeginsWithName(selector.substr(at), "body")) {
      within += kBodyElement;
    } else {
      within += selector.substr(at, end - at);
    }
    isStart = IsHtmlSpace(c) || c == '>' || c == '+' || c == '~' || c == '(' || c == ',';
    at = end;
  }
  return within;
}

bool MayFetch(std::string_view declarations) {
  constexpr std::string_view kFetching[] = {"-moz-element", "-webkit-image-set", "expression",
                                            "image",        "image-set",         "src"};
  size_t at = declarations.find('(');
  // Names may be written with escapes: where there are some, no function is trusted.
  if (at != declarations.npos && declarations.find('\\') != declarations.npos) return true;
  for (; at != declarations.npos; at = declarations.find('(', at + 1)) {
    size_t begin = at;
    while (begin > 0 && IsOfName(declarations[begin - 1])) --begin;
    std::string name(declarations.substr(begin, at - begin));
    std::transform(name.begin(), name.end(), name.begin(), LowerAscii);
    if (std::find(std::begin(kFetching), std::end(kFetching), name) != std::end(kFetching)) {
      return true;
    }
    if (!name.ends_with("url") && name != "url-prefix") continue;
    const size_t address = declarations.find_first_not_of(" \t\r\n\f\"'", at + 1);
    if (address == declarations.npos) return true;
    const bool isOwn =
        declarations[address] == '#' || BeginsWithName(declarations.substr(address), "data");
    if (!isOwn) return true;
  }
  return false;
}

std::string DeclarationsWithinMail(std::string_view declarations) {
  return StyleReader(declarations).readDeclarations();
}

std::string StylesWithinMail(std::string_view css) { return StyleReader(css).read(); }

}  // namespace tarn::archive
