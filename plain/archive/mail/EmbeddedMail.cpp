#include "archive/mail/EmbeddedMail.h"

#include <algorithm>
#include <optional>

#include "archive/mail/LineScan.h"
#include "archive/mail/ParseMail.h"
#include "archive/text/AsciiText.h"

namespace tarn::archive::mail {
namespace {

// The place of the first header of an object; none without headers.
std::optional<uint64_t> FirstHeader(GMimeObject* object) {
  GMimeHeaderList* headers = g_mime_object_get_header_list(object);
  std::optional<uint64_t> first;
  const int count = g_mime_header_list_get_count(headers);
  for (int i = 0; i < count; ++i) {
    const gint64 offset = g_mime_header_get_offset(g_mime_header_list_get_header_at(headers, i));
    if (offset < 0) continue;
    first = std::min(first.value_or(UINT64_MAX), static_cast<uint64_t>(offset));
  }
  return first;
}

// Where the contents of a leaf begin.
std::optional<uint64_t> ContentStart(GMimeObject* part) {
  if (!GMIME_IS_PART(part)) return std::nullopt;
  GMimeDataWrapper* content = g_mime_part_get_content(GMIME_PART(part));
  GMimeStream* stream = content == nullptr ? nullptr : g_mime_data_wrapper_get_stream(content);
  if (stream == nullptr || stream->bound_start < 0) return std::nullopt;
  return static_cast<uint64_t>(stream->bound_start);
}

// A mail's headers are its own and those of its top part.
std::optional<uint64_t> StartOf(GMimeMessage* message) {
  std::optional<uint64_t> start = FirstHeader(GMIME_OBJECT(message));
  GMimeObject* top = g_mime_message_get_mime_part(message);
  if (top == nullptr) return start;
  const std::optional<uint64_t> part = FirstHeader(top);
  if (part) start = std::min(start.value_or(UINT64_MAX), *part);
  return start ? start : ContentStart(top);
}

bool IsDelimiter(std::string_view line, const std::vector<std::string>& boundaries) {
  if (!line.starts_with("--")) return false;
  line = TrimmedRight(line.substr(2));
  return std::any_of(boundaries.begin(), boundaries.end(), [&](std::string_view boundary) {
    if (boundary.empty() || !line.starts_with(boundary)) return false;
    const std::string_view rest = line.substr(boundary.size());
    return rest.empty() || rest == "--";
  });
}

// Without the line end that belongs to the delimiter after it.
Outcome<uint64_t> WithoutLineEnd(MailBytes& mail, uint64_t start, uint64_t end) {
  const size_t wanted = static_cast<size_t>(std::min<uint64_t>(2, end - start));
  const Outcome<std::string> tail = ReadRange(mail, end - wanted, wanted);
  if (!tail) return tail.trouble();
  if (tail->ends_with("\r\n")) return end - 2;
  return tail->ends_with('\n') ? end - 1 : end;
}

// After the headers of the part itself; where it has none, at the first header of the mail in it.
Outcome<std::optional<uint64_t>> StartOf(MailBytes& mail, GMimeObject* part) {
  if (const std::optional<uint64_t> own = FirstHeader(part)) {
    const Outcome<HeaderSection> headers = FindHeaders(mail, *own);
    if (!headers) return headers.trouble();
    return std::optional(headers->body);
  }
  GMimeMessage* message = g_mime_message_part_get_message(GMIME_MESSAGE_PART(part));
  if (message == nullptr) return std::optional<uint64_t>();
  return StartOf(message);
}

// Up to the delimiter of a multipart around it.
Outcome<ByteRange> RangeFrom(MailBytes& mail, uint64_t start, const LaidPart& part) {
  LineScan lines(mail, start);
  while (const auto line = lines.next()) {
    if (!IsDelimiter(line->text, part.boundaries)) continue;
    if (line->start == start) return ByteRange{start, start};
    const Outcome<uint64_t> end = WithoutLineEnd(mail, start, line->start);
    if (!end) return end.trouble();
    return ByteRange{start, *end};
  }
  if (lines.trouble()) return *lines.trouble();
  return ByteRange{start, mail.size()};
}

}  // namespace

Outcome<ByteRange> RangeOfEmbedded(MailBytes& mail, const LaidPart& part) {
  const Outcome<std::optional<uint64_t>> start = StartOf(mail, part.part);
  if (!start) return start.trouble();
  if (!*start) return Trouble{TroubleKind::Missing, "the attached mail is empty"};
  return RangeFrom(mail, **start, part);
}

}  // namespace tarn::archive::mail
