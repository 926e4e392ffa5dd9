#include "archive/writers/MimeText.h"

#include <algorithm>
#include <cstddef>

#include "archive/model/TextSink.h"
#include "archive/text/CountWhile.h"
#include "archive/writers/SinkBuffer.h"

namespace tarn::archive {
namespace {

constexpr size_t kLongestPlainLine = 990;
constexpr size_t kLongestQuotedLine = 75;  // and the "=" that ends it

std::string WithCrLf(std::string_view text) {
  std::string lines;
  lines.reserve(text.size() + text.size() / 32);
  for (;;) {
    const size_t end = CountWhile(text, [](auto c) { return (c != '\r') & (c != '\n'); });
    lines += text.substr(0, end);
    text.remove_prefix(end);
    if (text.empty()) return lines;
    lines += "\r\n";
    text.remove_prefix(text.starts_with("\r\n") ? 2 : 1);
  }
}

// Each says it of a byte or of a block of them.
constexpr auto kIsPlain = [](auto c) {
  return ((c >= ' ') & (c < 0x7F)) | (c == '\t') | (c == '\r') | (c == '\n');
};
constexpr auto kIsUnquoted = [](auto c) {
  return ((c >= ' ') & (c < 0x7F) & (c != '=')) | (c == '\t');
};

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

// One line, broken where it grows too long.
class QuotedLine {
 public:
  explicit QuotedLine(std::string& quoted) : quoted_(quoted) {}

  void put(std::string_view text) {
    while (!text.empty()) {
      makeRoom(1);
      const std::string_view piece = text.substr(0, kLongestQuotedLine - column_);
      quoted_ += piece;
      column_ += piece.size();
      text.remove_prefix(piece.size());
    }
  }

  void putHex(char c) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    constexpr size_t kSize = 3;
    const auto byte = static_cast<unsigned char>(c);
    makeRoom(kSize);
    quoted_ += '=';
    quoted_ += kDigits[byte >> 4];
    quoted_ += kDigits[byte & 15];
    column_ += kSize;
  }

 private:
  void makeRoom(size_t size) {
    if (column_ + size <= kLongestQuotedLine) return;
    quoted_ += "=\r\n";
    column_ = 0;
  }

  std::string& quoted_;
  size_t column_ = 0;
};

void AppendQuotedLine(std::string_view line, std::string& quoted) {
  QuotedLine out(quoted);
  size_t at = 0;
  if (NeedsQuotes(line)) out.putHex(line[at++]);
  // A blank at the end would be lost on the way.
  const bool endsBlank = line.ends_with(' ') || line.ends_with('\t');
  const size_t end = line.size() - (endsBlank ? 1 : 0);
  while (at < line.size()) {
    const size_t begin = at;
    if (at < end) at += CountWhile(line.substr(at, end - at), kIsUnquoted);
    out.put(line.substr(begin, at - begin));
    if (at < line.size()) out.putHex(line[at++]);
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
  const size_t odd = lines.size() - CountAll(lines, kIsPlain);
  if (odd == 0 && HasPlainLines(lines)) return {"", std::move(lines)};
  if (odd <= lines.size() / 4) return {"quoted-printable", QuotedPrintable(lines)};
  TextSink sink;
  SinkBuffer out(sink);
  PutBase64(lines, Base64Lines::Mime, out);
  out.finish();
  return {"base64", std::move(sink.text)};
}

}  // namespace tarn::archive
