#include "archive/sources/SourceKind.h"

#include <algorithm>
#include <array>
#include <string>

#include "archive/sources/FileFacts.h"

namespace tarn::archive {
namespace {

constexpr std::string_view kStoreMagic = "!BDN";
constexpr std::string_view kCompoundMagic = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1";
constexpr std::string_view kTnefMagic = "\x78\x9F\x3E\x22";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kLittleEndianMark = "\xFF\xFE";
constexpr std::string_view kBigEndianMark = "\xFE\xFF";

// In lower case. Other files have lines with a colon too, but none of these before them.
constexpr std::array<std::string_view, 26> kUsualNames = {
    "authentication-results",
    "bcc",
    "cc",
    "content-transfer-encoding",
    "content-type",
    "date",
    "delivered-to",
    "dkim-signature",
    "envelope-to",
    "errors-to",
    "from",
    "in-reply-to",
    "list-id",
    "list-unsubscribe",
    "message-id",
    "mime-version",
    "received",
    "references",
    "reply-to",
    "resent-from",
    "return-path",
    "sender",
    "subject",
    "thread-topic",
    "to",
    "x-mailer",
};

// Takes the first line off, and gives it without its end (LF, CRLF or CR).
std::string_view TakeLine(std::string_view& text) {
  const size_t end = text.find_first_of("\r\n");
  const std::string_view line = text.substr(0, end);
  if (end == std::string_view::npos) {
    text = {};
  } else {
    const size_t size = text.substr(end, 2) == "\r\n" ? 2 : 1;
    text.remove_prefix(end + size);
  }
  return line;
}

void SkipBlankLines(std::string_view& text) {
  const size_t begin = text.find_first_not_of(" \t\r\n");
  if (begin == std::string_view::npos) {
    text = {};
    return;
  }
  // Blanks before the first word of a line are the line's.
  const size_t lineEnd = text.substr(0, begin).find_last_of("\r\n");
  if (lineEnd != std::string_view::npos) text.remove_prefix(lineEnd + 1);
}

// The name of a header field in lower case; empty for a line that is none (RFC 5322, 2.2).
std::string FieldName(std::string_view line) {
  constexpr size_t kLongestName = 256;
  const size_t colon = line.substr(0, kLongestName).find(':');
  if (colon == std::string_view::npos) return {};
  std::string name(line.substr(0, colon));
  name.erase(name.find_last_not_of(" \t") + 1);
  for (char& letter : name) {
    if (letter < '!' || letter > '~') return {};
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  }
  return name;
}

bool BeginsWithHeader(std::string_view text) {
  bool isFirst = true;
  while (!text.empty()) {
    const std::string_view line = TakeLine(text);
    if (line.empty()) return false;
    const bool isContinued = line[0] == ' ' || line[0] == '\t';
    if (isContinued && !isFirst) continue;
    const std::string name = FieldName(line);
    if (name.empty()) return false;
    if (std::find(kUsualNames.begin(), kUsualNames.end(), name) != kUsualNames.end()) return true;
    isFirst = false;
  }
  return false;
}

// Enough of UTF-16 to see names of header fields: what is beyond ASCII becomes a control character.
std::string Narrowed(std::string_view units, bool bigEndian) {
  std::string text;
  text.reserve(units.size() / 2);
  for (size_t i = 0; i + 1 < units.size(); i += 2) {
    const char high = units[bigEndian ? i : i + 1];
    const char low = units[bigEndian ? i + 1 : i];
    text += high == 0 && static_cast<signed char>(low) > 0 ? low : '\x1A';
  }
  return text;
}

// "From ann@example.com Wed May 1 ...", and not a header field with blanks before its colon.
bool IsSeparator(std::string_view text) {
  constexpr std::string_view kFrom = "From ";
  if (!text.starts_with(kFrom)) return false;
  const size_t word = text.find_first_not_of(" \t", kFrom.size());
  return word != std::string_view::npos && text[word] != ':';
}

std::optional<SourceKind> KindOfText(std::string_view text) {
  SkipBlankLines(text);
  if (text.starts_with(">From ")) TakeLine(text);
  if (!IsSeparator(text)) {
    return BeginsWithHeader(text) ? std::optional(SourceKind::Mail) : std::nullopt;
  }
  TakeLine(text);
  while (text.starts_with(">From ")) TakeLine(text);
  return BeginsWithHeader(text) ? std::optional(SourceKind::Mbox) : std::nullopt;
}

}  // namespace

std::optional<SourceKind> KindOfBeginning(std::string_view bytes) {
  if (bytes.starts_with(kStoreMagic)) return SourceKind::Store;
  if (bytes.starts_with(kCompoundMagic)) return SourceKind::Compound;
  if (bytes.starts_with(kTnefMagic)) return SourceKind::Tnef;
  const bool isBigEndian = bytes.starts_with(kBigEndianMark);
  if (isBigEndian || bytes.starts_with(kLittleEndianMark)) {
    return KindOfText(Narrowed(bytes.substr(kBigEndianMark.size()), isBigEndian));
  }
  if (bytes.starts_with(kUtf8Mark)) bytes.remove_prefix(kUtf8Mark.size());
  return KindOfText(bytes);
}

Outcome<std::optional<SourceKind>> KindOfFile(const std::filesystem::path& path) {
  const Outcome<std::string> beginning = BeginningOfFile(path, kTellingBytes);
  if (!beginning) return beginning.trouble();
  return KindOfBeginning(*beginning);
}

}  // namespace tarn::archive
