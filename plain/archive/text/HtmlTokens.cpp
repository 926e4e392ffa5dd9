#include "archive/text/HtmlTokens.h"

#include <algorithm>
#include <utility>

#include "archive/text/AsciiText.h"
#include "archive/text/CountWhile.h"

namespace tarn::archive {
namespace {

// Elements whose content has no tags but their own end.
constexpr std::string_view kRawElements[] = {
    "iframe", "noembed", "noframes", "plaintext", "script", "style", "textarea", "title", "xmp"};

// Empty for a character that stays as it is.
std::string_view ReferenceFor(char c) {
  switch (c) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    case '\'':
      return "&#39;";
    default:
      return {};
  }
}

}  // namespace

const std::string_view* HtmlToken::attribute(std::string_view wanted) const {
  for (const HtmlAttribute& attribute : attributes) {
    if (attribute.name == wanted) return &attribute.value;
  }
  return nullptr;
}

const HtmlToken& HtmlTokens::next() {
  token_.attributes.clear();
  token_.text = {};
  if (!rawElement_.empty()) {
    takeRawText();
    if (!token_.text.empty()) return token_;
  }
  while (!rest_.empty()) {
    if (rest_[0] == '<' && takeMarkup()) {
      if (token_.kind == HtmlTokenKind::End) continue;
      return token_;
    }
    // What looks like markup and is none is text.
    const size_t end = std::min(rest_.find('<', 1), rest_.size());
    token_.kind = HtmlTokenKind::Text;
    token_.text = rest_.substr(0, end);
    rest_.remove_prefix(end);
    return token_;
  }
  token_.kind = HtmlTokenKind::End;
  return token_;
}

// Whether there is markup. It is passed over where the token is of kind End.
bool HtmlTokens::takeMarkup() {
  if (rest_.size() < 2) return false;
  token_.kind = HtmlTokenKind::End;
  const char second = rest_[1];
  if (IsLetter(second)) return takeTag();
  if (second == '/') {
    if (rest_.size() < 3) return false;
    if (IsLetter(rest_[2])) return takeTag();
    skipTo('>');
    return true;
  }
  if (second == '!') {
    if (rest_.starts_with("<!--")) {
      skipComment();
    } else {
      skipTo('>');
    }
    return true;
  }
  if (second == '?') {
    skipTo('>');
    return true;
  }
  return false;
}

// A tag that the text ends in is none at all.
bool HtmlTokens::takeTag() {
  const bool isEnd = rest_[1] == '/';
  rest_.remove_prefix(isEnd ? 2 : 1);
  const size_t end = std::min(rest_.find_first_of(" \t\r\n\f/>"), rest_.size());
  token_.name = LoweredAscii(rest_.substr(0, end));
  rest_.remove_prefix(end);
  while (takeAttribute()) {
  }
  if (rest_.empty()) return true;
  rest_.remove_prefix(1);
  token_.kind = isEnd ? HtmlTokenKind::EndTag : HtmlTokenKind::StartTag;
  const bool isRaw = std::find(std::begin(kRawElements), std::end(kRawElements), token_.name) !=
                     std::end(kRawElements);
  if (!isEnd && isRaw) rawElement_ = token_.name;
  return true;
}

// False at the end of the tag, or of the text.
bool HtmlTokens::takeAttribute() {
  rest_.remove_prefix(std::min(rest_.find_first_not_of(" \t\r\n\f/"), rest_.size()));
  if (rest_.empty() || rest_[0] == '>') return false;
  size_t end = std::min(rest_.find_first_of(" \t\r\n\f/>=", 1), rest_.size());
  // What comes after very many is passed over.
  HtmlAttribute beyond;
  const bool isKept = token_.attributes.size() < kMostAttributes;
  HtmlAttribute& attribute = isKept ? token_.attributes.emplace_back() : beyond;
  if (isKept) attribute.name = LoweredAscii(rest_.substr(0, end));
  rest_.remove_prefix(end);
  const size_t sign = rest_.find_first_not_of(kHtmlSpace);
  if (sign == rest_.npos || rest_[sign] != '=') return true;
  rest_.remove_prefix(sign + 1);
  rest_.remove_prefix(std::min(rest_.find_first_not_of(kHtmlSpace), rest_.size()));
  if (rest_.empty() || rest_[0] == '>') return true;
  if (rest_[0] == '"' || rest_[0] == '\'') {
    const char quote = rest_[0];
    rest_.remove_prefix(1);
    end = std::min(rest_.find(quote), rest_.size());
    attribute.value = rest_.substr(0, end);
    rest_.remove_prefix(std::min(end + 1, rest_.size()));
  } else {
    end = std::min(rest_.find_first_of(" \t\r\n\f>"), rest_.size());
    attribute.value = rest_.substr(0, end);
    rest_.remove_prefix(end);
  }
  return true;
}

void HtmlTokens::takeRawText() {
  const std::string name = std::exchange(rawElement_, {});
  size_t end = 0;
  for (;; ++end) {
    end = name == "plaintext" ? rest_.npos : rest_.find("</", end);
    if (end == rest_.npos) break;
    const std::string_view found = rest_.substr(end + 2, name.size());
    const size_t after = end + 2 + name.size();
    const bool isWhole = after < rest_.size() &&
                         (IsHtmlSpace(rest_[after]) || rest_[after] == '/' || rest_[after] == '>');
    if (isWhole && LoweredAscii(found) == name) break;
  }
  end = std::min(end, rest_.size());
  token_.kind = HtmlTokenKind::RawText;
  token_.name = name;
  token_.text = rest_.substr(0, end);
  rest_.remove_prefix(end);
}

// "-->", "--!>", and ">" or "->" at once, end a comment; else the text's end does.
void HtmlTokens::skipComment() {
  rest_.remove_prefix(4);
  if (rest_.starts_with(">") || rest_.starts_with("->")) return skipTo('>');
  for (size_t at = 0; (at = rest_.find("--", at)) != rest_.npos; ++at) {
    const std::string_view end = rest_.substr(at + 2, 2);
    if (!end.starts_with(">") && end != "!>") continue;
    rest_.remove_prefix(at + 2);
    return skipTo('>');
  }
  rest_ = {};
}

void HtmlTokens::skipTo(char end) {
  const size_t at = rest_.find(end);
  rest_.remove_prefix(at == rest_.npos ? rest_.size() : at + 1);
}

void DropControls(std::string& text) {
  constexpr signed char kFirstOfC1 = -0x3E;  // C2, and of others
  const auto isPlain = [](auto c) {
    return ((c >= ' ') | (c < 0) | (c == '\t') | (c == '\n') | (c == '\f') | (c == '\r')) &
           (c != 0x7F) & (c != kFirstOfC1);
  };
  size_t kept = CountWhile(text, isPlain);
  for (size_t at = kept; at < text.size();) {
    const auto first = static_cast<signed char>(text[at]);
    const bool isOther = first == kFirstOfC1 && at + 1 < text.size();
    const bool isC1 = isOther && static_cast<unsigned char>(text[at + 1]) < 0xA0;
    const size_t size = isOther ? 2 : 1;
    const bool isKept = (isOther && !isC1) || isPlain(first);
    for (size_t i = 0; isKept && i < size; ++i) text[kept++] = text[at + i];
    at += size;
  }
  text.resize(kept);
}

std::string EscapedHtml(std::string_view text) {
  std::string escaped;
  escaped.reserve(text.size() + text.size() / 8);
  // What lies between two of them goes over in one piece.
  for (;;) {
    const size_t plain = CountWhile(text, [](auto c) {
      return (c != '&') & (c != '<') & (c != '>') & (c != '"') & (c != '\'');
    });
    escaped += text.substr(0, plain);
    if (plain == text.size()) break;
    escaped += ReferenceFor(text[plain]);
    text.remove_prefix(plain + 1);
  }
  DropControls(escaped);
  return escaped;
}

}  // namespace tarn::archive
