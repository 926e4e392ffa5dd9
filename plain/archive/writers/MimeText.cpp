#include "archive/writers/MimeText.h"

#include <algorithm>
#include <cstddef>

#include "archive/writers/SinkBuffer.h"

namespace tarn::archive {
namespace {

constexpr size_t kLongestPlainLine = 990;
constexpr size_t kLongestQuotedLine = 75;  // and the "=" that ends it

class TextSink final : public ByteSink {
 public:
  std::optional<Trouble> write(std::string_view bytes) override {
    text.append(bytes);
    return std::nullopt;
  }
  std::string text;
};

std::string WithCrLf(std::string_view text) {
  std::string lines;
  lines.reserve(text.size() + text.size() / 32);
  for (size_t at = 0; at < text.size(); ++at) {
    const char c = text[at];
    if (c == '\r' && at + 1 < text.size() && text[at + 1] == '\n') continue;
    if (c == '\r' || c == '\n') {
      lines += "\r\n";
    } else {
      lines += c;
    }
  }
  return lines;
}

bool IsPlain(char c) { return (c >= ' ' && c < 0x7F) || c == '\t' || c == '\r' || c == '\n'; }

// Boundaries of the mails written here begin so, and "From " is changed by some programs.
bool NeedsQuotes(std::string_view line) {
  return line.starts_with("--=_") || line.starts_with("From ");
}

bool HasPlainLines(std::string_view text) {
  while (!text.empty()) {
    const size_t end = std::min(text.find("\r\n"), text.size());
    if (end > kLongestPlainLine || NeedsQuotes(text.substr(0, end))) return false;
    text.remove_prefix(std::min(end + 2, text.size()));
  }
  return true;
}

std::string Hex(char c) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  const auto byte = static_cast<unsigned char>(c);
  return {'=', kDigits[byte >> 4], kDigits[byte & 15]};
}

void AppendQuotedLine(std::string_view line, std::string& quoted) {
  const bool needsQuotes = NeedsQuotes(line);
  size_t column = 0;
  for (size_t at = 0; at < line.size(); ++at) {
    const char c = line[at];
    const bool isLast = at + 1 == line.size();
    const bool isBlank = c == ' ' || c == '\t';
    const bool isPlain =
        ((c > ' ' && c < 0x7F && c != '=') || (isBlank && !isLast)) && !(at == 0 && needsQuotes);
    const std::string piece = isPlain ? std::string(1, c) : Hex(c);
    if (column + piece.size() > kLongestQuotedLine) {
      quoted += "=\r\n";
      column = 0;
    }
    quoted += piece;
    column += piece.size();
  }
}

std::string QuotedPrintable(std::string_view text) {
  std::string quoted;
  quoted.reserve(text.size() + text.size() / 8);
  for (;;) {
    const size_t end = text.find("\r\n");
    AppendQuotedLine(text.substr(0, end), quoted);
    if (end == text.npos) return quoted;
    quoted += "\r\n";
    text.remove_prefix(end + 2);
  }
}

}  // namespace

MimeText EncodeText(std::string_view text) {
  std::string lines = WithCrLf(text);
  const auto odd = static_cast<size_t>(
      std::count_if(lines.begin(), lines.end(), [](char c) { return !IsPlain(c); }));
  if (odd == 0 && HasPlainLines(lines)) return {"", std::move(lines)};
  if (odd <= lines.size() / 4) return {"quoted-printable", QuotedPrintable(lines)};
  TextSink sink;
  SinkBuffer out(sink);
  PutBase64(lines, Base64Lines::Mime, out);
  out.finish();
  return {"base64", std::move(sink.text)};
}

}  // namespace tarn::archive
