#include "archive/writers/CleanHtml.h"

#include <algorithm>
#include <array>
#include <bitset>
#include <utility>

#include "archive/mapi/Hexadecimal.h"
#include "archive/text/AsciiText.h"
#include "archive/text/CountWhile.h"
#include "archive/text/HtmlReferences.h"
#include "archive/writers/HtmlRules.h"
#include "archive/writers/MailStyles.h"

namespace tarn::archive {
namespace {

bool IsControlOrSpace(char c) { return static_cast<unsigned char>(c) <= 0x20 || c == 0x7F; }

std::string_view WithoutControlsAround(std::string_view text) {
  while (!text.empty() && IsControlOrSpace(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsControlOrSpace(text.back())) text.remove_suffix(1);
  return text;
}

// A value as it is written, made fit for double quotes. Its character references stay.
std::string QuotedValue(std::string_view value) {
  std::string quoted;
  for (const char c : value) {
    if (c == '"') {
      quoted += "&quot;";
    } else if (c == '<') {
      quoted += "&lt;";
    } else if (c == '>') {
      quoted += "&gt;";
    } else if (c != '\0') {
      quoted += c;
    }
  }
  return quoted;
}

// The pictures that a mail may carry in itself already.
bool IsDataImage(std::string_view address) {
  constexpr std::string_view kTypes[] = {"data:image/bmp;base64,",  "data:image/gif;base64,",
                                         "data:image/jpeg;base64,", "data:image/jpg;base64,",
                                         "data:image/png;base64,",  "data:image/webp;base64,"};
  return std::any_of(std::begin(kTypes), std::end(kTypes),
                     [&](std::string_view type) { return StartsWithNoCase(address, type); });
}

// Pictures of a dot or none at all are there to be counted, or to keep a distance.
bool IsDot(const HtmlToken& tag) {
  for (const std::string_view name : {"width", "height"}) {
    const std::string_view* const value = tag.attribute(name);
    if (value == nullptr) continue;
    const std::string size = DecodedHtmlValue(*value);
    if (size == "0" || size == "1" || size == "1px" || size == "0px") return true;
  }
  return false;
}

// Where a scheme ends that an address begins with; npos without one.
size_t EndOfScheme(std::string_view address) {
  const size_t end = address.find_first_of(":/?#\\");
  return end != address.npos && address[end] == ':' ? end : address.npos;
}

// A relative address as one of what <base> names (RFC 3986 5.2, without the removal of dots, which
// browsers do).
std::string ResolvedAddress(std::string_view address, std::string_view base) {
  if (address.starts_with("//")) return std::string("https:").append(address);
  if (base.empty() || address.empty() || address.starts_with('\\')) return {};
  base = base.substr(0, base.find_first_of("?#"));
  const size_t host = base.find("://") + 3;
  const size_t path = std::min(base.find('/', host), base.size());
  if (address[0] == '?') return std::string(base).append(address);
  if (address[0] == '/') return std::string(base.substr(0, path)).append(address);
  std::string resolved(base.substr(0, path == base.size() ? path : base.rfind('/')));
  return resolved.append("/").append(address);
}

// What old mails call a colour, as a style may; empty for what is none.
std::string ColourOf(std::string_view value) {
  std::string colour(WithoutControlsAround(value));
  const std::string_view digits = std::string_view(colour).substr(colour.starts_with('#') ? 1 : 0);
  const bool isHex = (digits.size() == 3 || digits.size() == 6) &&
                     digits.find_first_not_of("0123456789abcdefABCDEF") == digits.npos;
  if (isHex) return "#" + std::string(digits);
  const bool isName = !colour.empty() && std::all_of(colour.begin(), colour.end(), [](char c) {
    return LowerAscii(c) >= 'a' && LowerAscii(c) <= 'z';
  });
  return isName ? colour : std::string();
}

}  // namespace

std::string UrlOfPath(std::string_view path) {
  constexpr std::string_view kPlain = "-._~/";
  std::string url;
  for (const char c : path) {
    const bool isPlain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                         (c >= '0' && c <= '9') || kPlain.find(c) != kPlain.npos;
    if (isPlain) {
      url += c;
    } else {
      url += '%';
      url += mapi::Hexadecimal(static_cast<unsigned char>(c), 2);
    }
  }
  return url;
}

std::string KeptAddress(std::string_view address, std::string_view base) {
  address = WithoutControlsAround(address);
  std::string kept;
  for (const char c : address) {
    // Browsers drop these wherever they are.
    if (c != '\t' && c != '\r' && c != '\n' && c != '\0') kept += c;
  }
  if (kept.starts_with('#')) return kept;
  const size_t colon = EndOfScheme(kept);
  if (colon == kept.npos) return ResolvedAddress(kept, base);
  std::string scheme = kept.substr(0, colon);
  std::transform(scheme.begin(), scheme.end(), scheme.begin(), LowerAscii);
  return IsAmong(scheme, kKeptSchemes) ? kept : std::string();
}

void HtmlCleaner::putBody(std::string_view html) {
  HtmlTokens tokens(html);
  HtmlTokenKind kind = HtmlTokenKind::Text;
  const HtmlToken* body = nullptr;
  while (kind != HtmlTokenKind::End && body == nullptr) {
    const HtmlToken& token = tokens.next();
    kind = token.kind;
    if (kind == HtmlTokenKind::StartTag && token.name == "body") body = &token;
  }
  if (body != nullptr) putBodyStyle(*body);
  out_.put("<").put(kBodyElement);
  if (body != nullptr) putAttributes(*body);
  out_.put(">");
  put(html);
  out_.put("</").put(kBodyElement).put(">");
}

// What the attributes say of colours is weaker than any sheet of the mail.
void HtmlCleaner::putBodyStyle(const HtmlToken& body) {
  std::string style;
  const auto addColour = [&](std::string_view attribute, std::string_view property) {
    const std::string_view* const value = body.attribute(attribute);
    const std::string colour = value == nullptr ? "" : ColourOf(DecodedHtmlValue(*value));
    if (!colour.empty()) style.append(property).append(":").append(colour).append(";");
  };
  addColour("bgcolor", "background-color");
  addColour("text", "color");
  const std::optional<MailImage> image = loadBackground(body);
  if (style.empty() && !image) return;
  out_.put("<style>").put(kBodyElement).put("{").put(style);
  if (image) {
    out_.put("background-image:url(");
    PutDataUrl(*image, out_);
    out_.put(")");
  }
  out_.put("}</style>\n");
}

void HtmlCleaner::put(std::string_view html) {
  HtmlTokens tokens(html);
  while (!out_.isFull()) {
    const HtmlToken& token = tokens.next();
    switch (token.kind) {
      case HtmlTokenKind::End:
        return;
      case HtmlTokenKind::Text:
        putText(token.text);
        break;
      case HtmlTokenKind::RawText:
        putRawText(token);
        break;
      case HtmlTokenKind::StartTag:
        putStart(token);
        break;
      case HtmlTokenKind::EndTag:
        if (IsAmong(token.name, kKeptElements)) out_.put("</").put(token.name).put(">");
        break;
    }
  }
}

void HtmlCleaner::putStart(const HtmlToken& tag) {
  if (tag.name == "img" || tag.name == "image") return putImage(tag);
  if (tag.name == "base" && base_.empty()) return takeBase(tag);
  if (!IsAmong(tag.name, kKeptElements)) return;
  out_.put("<").put(tag.name);
  putAttributes(tag);
  if (tag.name == "a" || tag.name == "area") putLink(tag);
  putBackground(tag);
  out_.put(">");
}

void HtmlCleaner::putAttributes(const HtmlToken& tag) {
  std::bitset<std::size(kKeptAttributes)> seen;
  for (const HtmlAttribute& attribute : tag.attributes) {
    const auto* const at =
        std::lower_bound(std::begin(kKeptAttributes), std::end(kKeptAttributes), attribute.name);
    if (at == std::end(kKeptAttributes) || *at != attribute.name) continue;
    const auto place = static_cast<size_t>(at - std::begin(kKeptAttributes));
    if (seen[place]) continue;
    seen[place] = true;
    // The page's own names are not the mail's.
    const bool isName = attribute.name == "class" || attribute.name == "id";
    if (isName && ContainsNoCase(DecodedHtmlValue(attribute.value), "tarn-")) continue;
    out_.put(" ").put(attribute.name).put("=\"");
    if (attribute.name == "style") {
      putDeclarations(attribute.value);
    } else {
      out_.put(QuotedValue(attribute.value));
    }
    out_.put("\"");
  }
}

// Most of them are as they were.
void HtmlCleaner::putDeclarations(std::string_view value) {
  if (value.find_first_of("(&") != value.npos) {
    const std::string decoded = DecodedHtmlValue(value);
    if (MayFetch(decoded)) {
      out_.put(EscapedHtml(DeclarationsWithinMail(decoded)));
      return;
    }
  }
  out_.put(QuotedValue(value));
}

void HtmlCleaner::takeBase(const HtmlToken& tag) {
  const std::string_view* const href = tag.attribute("href");
  if (href == nullptr) return;
  std::string address = KeptAddress(DecodedHtmlValue(*href), {});
  const size_t colon = EndOfScheme(address);
  if (colon != address.npos && address.substr(colon).starts_with("://")) base_ = std::move(address);
}

void HtmlCleaner::putLink(const HtmlToken& tag) {
  const std::string_view* const href = tag.attribute("href");
  if (href == nullptr) return;
  const std::string address = DecodedHtmlValue(*href);
  const std::string kept = KeptAddress(address, base_);
  if (kept.starts_with('#')) {
    out_.put(" href=\"").put(EscapedHtml(kept)).put("\"");
    return;
  }
  constexpr std::string_view kElsewhere = "\" rel=\"noopener noreferrer\" target=\"_blank\"";
  if (!kept.empty()) {
    out_.put(" href=\"").put(EscapedHtml(kept)).put(kElsewhere);
    return;
  }
  const std::optional<size_t> attachment = images_.find(WithoutControlsAround(address));
  if (attachment && *attachment < paths_.size() && !paths_[*attachment].empty()) {
    out_.put(" href=\"").put(UrlOfPath(paths_[*attachment])).put(kElsewhere);
    return;
  }
  // Where it leads to is not known; a reader may know.
  const std::string_view shown = WithoutControlsAround(address);
  if (shown.empty() || EndOfScheme(shown) != shown.npos || tag.attribute("title") != nullptr)
    return;
  out_.put(" title=\"").put(EscapedHtml(shown)).put("\"");
}

std::optional<MailImage> HtmlCleaner::loadBackground(const HtmlToken& tag) {
  const std::string_view* const value = tag.attribute("background");
  if (value == nullptr) return std::nullopt;
  const std::optional<size_t> index = images_.find(WithoutControlsAround(DecodedHtmlValue(*value)));
  return index ? images_.load(*index) : std::nullopt;
}

// The background picture of a table.
void HtmlCleaner::putBackground(const HtmlToken& tag) {
  const std::optional<MailImage> image = loadBackground(tag);
  if (!image) return;
  out_.put(" background=\"");
  PutDataUrl(*image, out_);
  out_.put("\"");
}

void HtmlCleaner::putImage(const HtmlToken& tag) {
  const std::string_view* const source = tag.attribute("src");
  const std::string decoded = source == nullptr ? std::string() : DecodedHtmlValue(*source);
  const std::string_view address = WithoutControlsAround(decoded);
  const bool isData = IsDataImage(address);
  const std::optional<size_t> index = isData ? std::nullopt : images_.find(address);
  const std::optional<MailImage> image = index ? images_.load(*index) : std::nullopt;
  if (!isData && !image) return putImageMark(tag);
  out_.put("<img");
  putAttributes(tag);
  out_.put(" src=\"");
  if (image) {
    PutDataUrl(*image, out_);
  } else {
    out_.put(EscapedHtml(address));
  }
  out_.put("\">");
}

void HtmlCleaner::putImageMark(const HtmlToken& tag) {
  if (IsDot(tag)) return;
  const std::string_view* const alt = tag.attribute("alt");
  const std::string text = alt == nullptr ? std::string() : DecodedHtmlValue(*alt);
  out_.put("<span class=\"tarn-image\">[image");
  const std::string_view shown = WithoutControlsAround(text);
  if (!shown.empty()) out_.put(": ").put(EscapedHtml(shown));
  out_.put("]</span>");
}

void HtmlCleaner::putRawText(const HtmlToken& raw) {
  if (raw.name == "style") return putStyle(raw.text);
  const bool isShown = raw.name == "textarea" || raw.name == "xmp" || raw.name == "plaintext";
  if (isShown) out_.put("<pre>").put(EscapedHtml(raw.text)).put("</pre>");
}

// A "<" that begins no tag would begin one after what follows it is gone.
void HtmlCleaner::putText(std::string_view text) {
  if (CountWhile(text, [](auto c) { return (c != '<') & (c != '\0'); }) == text.size()) {
    out_.put(text);
    return;
  }
  std::string escaped;
  for (const char c : text) {
    if (c == '<') {
      escaped += "&lt;";
    } else if (c != '\0') {
      escaped += c;
    }
  }
  out_.put(escaped);
}

void HtmlCleaner::putStyle(std::string_view css) {
  const std::string styles = StylesWithinMail(css);
  if (!styles.empty()) out_.put("<style>").put(styles).put("</style>\n");
}

}  // namespace tarn::archive
