#include "archive/sources/SourceKind.h"

#include <algorithm>
#include <array>
#include <string>

#include "archive/mail/HeaderNames.h"
#include "archive/mail/MailDate.h"
#include "archive/sources/FileFacts.h"
#include "archive/text/AsciiText.h"

namespace tarn::archive {
namespace {

constexpr std::string_view kStoreMagic = "!BDN";
constexpr std::string_view kCompoundMagic = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1";
constexpr std::string_view kTnefMagic = "\x78\x9F\x3E\x22";
constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kLittleEndianMark = "\xFF\xFE";
constexpr std::string_view kBigEndianMark = "\xFE\xFF";

constexpr std::array<std::string_view, 7> kMailEndings = {".pst",  ".ost",  ".msg", ".eml",
                                                          ".emlx", ".mbox", ".mbx"};

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

enum class Header : uint8_t {
  OfMail,     // it has a usual name, or all its names are of the kind that programs add
  OfNothing,  // other text
  Unfinished  // the text ends before it tells
};

Header HeaderAt(std::string_view text) {
  bool hasNames = false;
  bool areAdded = true;  // "X-Folder"
  while (!text.empty()) {
    const std::string_view line = TakeLine(text);
    if (line.empty()) return hasNames && areAdded ? Header::OfMail : Header::OfNothing;
    const bool isContinued = line[0] == ' ' || line[0] == '\t';
    if (isContinued && hasNames) continue;
    const std::string_view name = mail::NameOfHeader(line);
    if (name.empty()) return text.empty() && hasNames ? Header::Unfinished : Header::OfNothing;
    if (mail::IsUsualHeader(name)) return Header::OfMail;
    hasNames = true;
    areAdded = areAdded && name.size() > 2 && (name[0] == 'X' || name[0] == 'x') && name[1] == '-';
  }
  return hasNames ? Header::Unfinished : Header::OfNothing;
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

// What a text begins with, and whether that is the header of a mail.
struct TextKind {
  SourceKind kind = SourceKind::Mail;
  Header header = Header::OfNothing;
};

// The mail after a separator may have no header, or one whose first line is broken, where the date
// of the separator tells what it is.
Header HeaderAfter(std::string_view separator, std::string_view text) {
  const Header header = HeaderAt(text);
  if (header != Header::OfNothing || text.empty() || !mail::HasMboxDate(separator)) return header;
  const std::string_view first = TakeLine(text);
  if (first.find_first_not_of(" \t") == std::string_view::npos) return Header::OfMail;
  return HeaderAt(text);
}

TextKind KindOfText(std::string_view text) {
  SkipBlankLines(text);
  if (text.starts_with(">From ")) TakeLine(text);
  if (!IsSeparator(text)) return {SourceKind::Mail, HeaderAt(text)};
  const std::string_view separator = TakeLine(text);
  while (text.starts_with(">From ")) TakeLine(text);
  return {SourceKind::Mbox, HeaderAfter(separator, text)};
}

TextKind KindOfMail(std::string_view bytes) {
  const bool isBigEndian = bytes.starts_with(kBigEndianMark);
  if (isBigEndian || bytes.starts_with(kLittleEndianMark)) {
    return KindOfText(Narrowed(bytes.substr(kBigEndianMark.size()), isBigEndian));
  }
  if (bytes.starts_with(kUtf8Mark)) bytes.remove_prefix(kUtf8Mark.size());
  return KindOfText(bytes);
}

}  // namespace

std::optional<SourceKind> KindOfBeginning(std::string_view bytes) {
  if (bytes.starts_with(kStoreMagic)) return SourceKind::Store;
  if (bytes.starts_with(kCompoundMagic)) return SourceKind::Compound;
  if (bytes.starts_with(kTnefMagic)) return SourceKind::Tnef;
  const TextKind text = KindOfMail(bytes);
  return text.header == Header::OfMail ? std::optional(text.kind) : std::nullopt;
}

Outcome<std::optional<SourceKind>> KindOfFile(const std::filesystem::path& path) {
  Outcome<std::string> beginning = BeginningOfFile(path, kTellingBytes);
  if (!beginning) return beginning.trouble();
  const std::optional<SourceKind> kind = KindOfBeginning(*beginning);
  if (kind || beginning->size() < kTellingBytes) return kind;
  if (KindOfMail(*beginning).header != Header::Unfinished) return kind;
  beginning = BeginningOfFile(path, kLongestHeader);
  if (!beginning) return beginning.trouble();
  return KindOfBeginning(*beginning);
}

bool IsNamedAsMail(const std::filesystem::path& path) {
  const std::string name = LoweredAscii(path.filename().string());
  if (name.starts_with("._")) return false;
  if (name == "winmail.dat") return true;
  return std::any_of(kMailEndings.begin(), kMailEndings.end(),
                     [&](std::string_view ending) { return name.ends_with(ending); });
}

}  // namespace tarn::archive
