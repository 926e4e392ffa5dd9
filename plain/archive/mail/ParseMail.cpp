#include "archive/mail/ParseMail.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>

#include "archive/mail/HeaderNames.h"
#include "archive/mail/LineScan.h"
#include "archive/mail/MailStream.h"
#include "archive/text/AsciiText.h"

namespace tarn::archive::mail {
namespace {

// Of the parse that goes on.
thread_local bool isTooDeep = false;

// What GMime tells of a parse as warnings.
void TakeWarning(gint64, GMimeParserWarning warning, const char*, void*) {
  if (warning == GMIME_CRIT_NESTING_OVERFLOW) isTooDeep = true;
}

GMimeParserOptions* MakeOptions() {
  g_mime_init();
  GMimeParserOptions* options = g_mime_parser_options_new();
  std::array<const char*, 3> charsets{"utf-8", "windows-1252", nullptr};
  g_mime_parser_options_set_fallback_charsets(options, charsets.data());
  g_mime_parser_options_set_allow_addresses_without_domain(options, TRUE);
  g_mime_parser_options_set_warning_callback(options, TakeWarning, nullptr);
  return options;
}

// A mail that has no headers is a text.
GObjectPtr<GMimeMessage> MessageOfText(GMimeStream* stream) {
  GObjectPtr<GMimeMessage> message(g_mime_message_new(FALSE));
  const GObjectPtr<GMimeTextPart> part(g_mime_text_part_new());
  const GObjectPtr<GMimeDataWrapper> content(
      g_mime_data_wrapper_new_with_stream(stream, GMIME_CONTENT_ENCODING_DEFAULT));
  g_mime_part_set_content(GMIME_PART(part.get()), content.get());
  g_mime_message_set_mime_part(message.get(), GMIME_OBJECT(part.get()));
  return message;
}

GMimeParser* MakeParser() {
  ReadingOptions();  // GMime itself is made ready with them
  return g_mime_parser_new();
}

// A parser is costly to make, and each mail is parsed at once.
GMimeParser* ThreadParser() {
  static thread_local const GObjectPtr<GMimeParser> parser(MakeParser());
  return parser.get();
}

GObjectPtr<GMimeMessage> ParseWith(GMimeParser* parser, GMimeStream* stream) {
  static thread_local const GObjectPtr<GMimeStream> nothing(g_mime_stream_mem_new());
  g_mime_parser_init_with_stream(parser, stream);
  g_mime_parser_set_persist_stream(parser, TRUE);
  g_mime_parser_set_format(parser, GMIME_FORMAT_MESSAGE);
  GObjectPtr<GMimeMessage> message(g_mime_parser_construct_message(parser, ReadingOptions()));
  // It lets go of the stream.
  g_mime_parser_init_with_stream(parser, nothing.get());
  return message;
}

// A header section with a usual header that is cut off within a name: with its last line ended, it
// is one for GMime too.
std::optional<std::string> CutHeadersEnded(MailBytes& bytes) {
  constexpr uint64_t kLargest = uint64_t{1} << 20;
  if (bytes.size() > kLargest) return std::nullopt;
  Outcome<std::string> all = ReadRange(bytes, 0, static_cast<size_t>(kLargest));
  if (!all || all->ends_with('\n')) return std::nullopt;
  LineScan lines(bytes, 0);
  while (const auto line = lines.next()) {
    if (IsUsualHeader(NameOfHeader(line->text))) return *all + "\n";
  }
  return std::nullopt;
}

// A field "From : ann@example.com" is none.
bool IsMboxLine(std::string_view line) {
  return (line.starts_with("From ") && !IsHeaderLine(line)) || line.starts_with(">From ");
}

}  // namespace

GMimeParserOptions* ReadingOptions() {
  static GMimeParserOptions* const options = MakeOptions();
  return options;
}

bool IsHeaderLine(std::string_view line) {
  size_t at = 0;
  while (at < line.size() && line[at] > ' ' && line[at] < 127 && line[at] != ':') ++at;
  if (at == 0) return false;
  while (at < line.size() && (line[at] == ' ' || line[at] == '\t')) ++at;
  return at < line.size() && line[at] == ':';
}

Outcome<MailStart> FindMailStart(MailBytes& bytes) {
  constexpr size_t kMostLines = 100;
  MailStart start;
  Outcome<std::string> mark = ReadRange(bytes, 0, 3);
  if (!mark) return mark.trouble();
  if (*mark == "\xEF\xBB\xBF") start.offset = 3;
  start.broken = start.offset;
  LineScan lines(bytes, start.offset);
  for (size_t i = 0; i < kMostLines; ++i) {
    const auto line = lines.next();
    if (!line) break;
    if (IsMboxLine(line->text)) {
      if (start.mboxLine.empty()) start.mboxLine = line->text;
    } else if (!Trimmed(line->text).empty()) {
      if (IsHeaderLine(line->text)) {
        start.offset = line->start;
        start.broken = start.offset;
        break;
      }
      const uint64_t broken = line->start;
      const auto next = lines.next();
      if (next && IsUsualHeader(NameOfHeader(next->text))) {
        start.offset = next->start;
        start.broken = broken;
      }
      break;
    }
  }
  if (lines.trouble()) return *lines.trouble();
  return start;
}

ParsedMail ParseMail(const SharedBytes& bytes) {
  ParsedMail mail;
  StreamReport report;
  isTooDeep = false;
  const GObjectPtr<GMimeStream> stream = StreamFor(bytes, &report);
  mail.message = ParseWith(ThreadParser(), stream.get());
  EndReport(stream.get());
  if (mail.message == nullptr && !report.trouble) {
    if (const auto headers = CutHeadersEnded(*bytes)) return ParseMail(BytesInMemory(*headers));
  }
  if (mail.message == nullptr) mail.message = MessageOfText(stream.get());
  mail.sawUuencode = report.watch.sawUuencode();
  if (report.trouble) mail.troubles.push_back(*report.trouble);
  if (!report.watch.reason().empty()) {
    mail.troubles.push_back({TroubleKind::TooLarge, report.watch.reason()});
  }
  if (isTooDeep) {
    mail.troubles.push_back(
        {TroubleKind::TooDeep, "the mail has parts within parts beyond what is read"});
  }
  return mail;
}

Outcome<HeaderSection> FindHeaders(MailBytes& bytes, uint64_t start) {
  LineScan lines(bytes, start);
  while (const auto line = lines.next()) {
    if (line->text.empty()) return HeaderSection{line->start, line->end};
  }
  if (lines.trouble()) return *lines.trouble();
  return HeaderSection{bytes.size(), bytes.size()};
}

}  // namespace tarn::archive::mail
