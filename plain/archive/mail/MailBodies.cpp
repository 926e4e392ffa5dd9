#include "archive/mail/MailBodies.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "archive/mail/FlowedText.h"
#include "archive/mail/GObjectPtr.h"
#include "archive/mail/HeaderFields.h"
#include "archive/mail/PartBytes.h"
#include "archive/mail/Uuencode.h"
#include "archive/text/AsciiText.h"
#include "archive/text/BodyText.h"

namespace tarn::archive::mail {
namespace {

void Join(std::optional<std::string>& all, std::string text) {
  if (!all) {
    all = std::move(text);
    return;
  }
  if (!all->empty() && all->back() != '\n') *all += '\n';
  *all += text;
}

// Enriched text (RFC 1896) and its elder (RFC 1341) as HTML.
std::string HtmlOfEnriched(const std::string& text, bool isRichText) {
  const GObjectPtr<GMimeStream> memory(g_mime_stream_mem_new());
  const GObjectPtr<GMimeStream> filtered(g_mime_stream_filter_new(memory.get()));
  const GObjectPtr<GMimeFilter> filter(
      g_mime_filter_enriched_new(isRichText ? GMIME_FILTER_ENRICHED_IS_RICHTEXT : 0));
  g_mime_stream_filter_add(GMIME_STREAM_FILTER(filtered.get()), filter.get());
  g_mime_stream_write(filtered.get(), text.data(), text.size());
  g_mime_stream_flush(filtered.get());
  const GByteArray* bytes = g_mime_stream_mem_get_byte_array(GMIME_STREAM_MEM(memory.get()));
  return {reinterpret_cast<const char*>(bytes->data), bytes->len};
}

// Text as HTML that keeps its lines.
std::string PreformattedHtml(std::string_view text) {
  std::string html = "<pre>";
  const char* at = text.data();
  const char* const end = at + text.size();
  while (at < end) {
    const gunichar character = g_utf8_get_char(at);
    at = g_utf8_next_char(at);
    if (character >= 128 || character == '<' || character == '&' || character == '>') {
      html += "&#" + std::to_string(character) + ";";
    } else {
      html += static_cast<char>(character);
    }
  }
  return html + "</pre>\n";
}

bool HasWords(std::string_view text) { return !Trimmed(text).empty(); }

// The text and the HTML of one piece.
struct ReadPiece {
  std::optional<std::string> text;
  bool saysAllAsText = false;  // the text has words, and not only those beside the HTML
  std::vector<HtmlBody> htmls;
};

class BodyReader {
 public:
  explicit BodyReader(bool seeksUuencode) : seeksUuencode_(seeksUuencode) {}

  ReadPiece read(const BodyPiece& piece);
  std::vector<Trouble> takeTroubles() { return std::move(troubles_); }

 private:
  std::optional<std::string> readText(GMimePart* part);
  std::optional<HtmlBody> readHtml(GMimePart* part);
  std::optional<std::string> bytesOf(GMimePart* part);

  bool seeksUuencode_;
  std::vector<Trouble> troubles_;
};

ReadPiece BodyReader::read(const BodyPiece& piece) {
  ReadPiece read;
  if (!piece.loose.empty()) {
    read.text = piece.loose;
    read.saysAllAsText = HasWords(piece.loose);
  }
  for (const BodyPart& part : piece.parts) {
    if (part.isHtml) {
      if (auto html = readHtml(part.part)) read.htmls.push_back(std::move(*html));
    } else if (auto text = readText(part.part)) {
      if (part.isOfHtml && HasWords(*text))
        read.htmls.push_back({PreformattedHtml(*text), "utf-8"});
      read.saysAllAsText |= !part.isOfHtml && HasWords(*text);
      Join(read.text, std::move(*text));
    }
  }
  return read;
}

std::optional<std::string> BodyReader::bytesOf(GMimePart* part) {
  Outcome<std::string> bytes = BytesOfText(part);
  if (bytes) return std::move(*bytes);
  troubles_.push_back({bytes.trouble().kind, "a text cannot be read: " + bytes.trouble().reason});
  return std::nullopt;
}

std::optional<std::string> BodyReader::readText(GMimePart* part) {
  std::optional<std::string> bytes = bytesOf(part);
  if (!bytes) return std::nullopt;
  if (seeksUuencode_) *bytes = SplitUuencode(*bytes).text;
  GMimeObject* object = GMIME_OBJECT(part);
  std::string text = Utf8Of(*bytes, ParameterOf(object, "charset"));
  EndLinesWithLf(text);
  if (EqualsNoCase(ParameterOf(object, "format"), "flowed")) {
    text = UnflowText(text, EqualsNoCase(ParameterOf(object, "delsp"), "yes"));
  }
  return text;
}

std::optional<HtmlBody> BodyReader::readHtml(GMimePart* part) {
  std::optional<std::string> bytes = bytesOf(part);
  if (!bytes) return std::nullopt;
  GMimeObject* object = GMIME_OBJECT(part);
  std::string charset = ParameterOf(object, "charset");
  const std::string type = MediaTypeOf(object);
  if (type == "text/html") return HtmlBody{std::move(*bytes), std::move(charset)};
  return HtmlBody{HtmlOfEnriched(Utf8Of(*bytes, charset), type == "text/richtext"), "utf-8"};
}

void AppendHtml(std::string& all, std::string_view html) {
  if (!all.empty() && all.back() != '\n') all += '\n';
  all += html;
}

bool IsTextAlone(const ReadPiece& piece) { return piece.htmls.empty() && piece.saysAllAsText; }

bool IsHtmlAlone(const ReadPiece& piece) { return !piece.htmls.empty() && !piece.saysAllAsText; }

// The HTML of all pieces. A document alone keeps its bytes; several, or one with text, are UTF-8.
HtmlBody JoinHtml(std::vector<ReadPiece>& pieces) {
  size_t count = 0;
  for (const ReadPiece& piece : pieces) count += piece.htmls.size() + (IsTextAlone(piece) ? 1 : 0);
  HtmlBody all{{}, "utf-8"};
  for (ReadPiece& piece : pieces) {
    for (HtmlBody& html : piece.htmls) {
      if (count == 1) return std::move(html);
      AppendHtml(all.bytes, Utf8OfHtml(html));
    }
    if (IsTextAlone(piece)) AppendHtml(all.bytes, PreformattedHtml(*piece.text));
  }
  return all;
}

std::string UnescapedId(std::string_view id) {
  const std::string text(id);
  const GText unescaped(g_uri_unescape_string(text.c_str(), nullptr));
  return unescaped == nullptr ? text : std::string(unescaped.get());
}

}  // namespace

Outcome<std::string> BytesOfText(GMimePart* part) { return ReadAll(*OpenPart(part), kLargestText); }

Bodies BodiesOf(const MailLayout& layout, bool seeksUuencode) {
  BodyReader reader(seeksUuencode);
  std::vector<ReadPiece> pieces;
  bool hasHtml = false;
  bool isAllText = true;
  for (const BodyPiece& piece : layout.pieces) {
    pieces.push_back(reader.read(piece));
    hasHtml |= !pieces.back().htmls.empty();
    isAllText &= !IsHtmlAlone(pieces.back());
  }
  Bodies bodies;
  for (ReadPiece& piece : pieces) {
    if (isAllText && piece.text) Join(bodies.text, *piece.text);
  }
  if (hasHtml) bodies.html = JoinHtml(pieces);
  bodies.troubles = reader.takeTroubles();
  return bodies;
}

std::unordered_set<std::string> ContentIdsOf(const HtmlBody& html) {
  constexpr std::string_view kScheme = "cid:";
  std::unordered_set<std::string> ids;
  const std::string text = Utf8OfHtml(html);
  auto at = text.begin();
  for (;;) {
    at = std::search(at, text.end(), kScheme.begin(), kScheme.end(), SameNoCase);
    if (at == text.end()) return ids;
    at += static_cast<std::ptrdiff_t>(kScheme.size());
    const auto start = at;
    at = std::find_if(at, text.end(), [](char c) {
      return std::string_view("\"'<>()").find(c) != std::string_view::npos || (c >= 0 && c <= ' ');
    });
    ids.insert(UnescapedId(std::string_view(text).substr(static_cast<size_t>(start - text.begin()),
                                                         static_cast<size_t>(at - start))));
  }
}

}  // namespace tarn::archive::mail
