#include "eml/MimePart.h"

#include <algorithm>
#include <array>

#include "Common/ByteSearch.h"
#include "eml/AttachmentReport.h"
#include "eml/BodyChoice.h"
#include "eml/EncodedWords.h"
#include "eml/HeaderSearch.h"
#include "eml/PartCharset.h"
#include "eml/TransferDecoding.h"

namespace tarn {
namespace {

struct ContentTypeRow {
  std::string_view type;
  ContentClass contentClass;
};

// Tested in this order.
constexpr std::array<ContentTypeRow, 12> kContentTypes = {
    {{"text/html", ContentHtml},
     {"text/plain", ContentPlain},
     {"image/png", ContentPng},
     {"image/jpeg", ContentJpeg},
     {"text/css", ContentCss},
     {"image/svg", ContentSvg},
     {"application/javascript", ContentJavascript},
     {"application/vnd.ms-officetheme", ContentOfficeTheme},
     {"application/pdf", ContentPdf},
     {"text/xml", ContentXml},
     {"image/gif", ContentGif},
     {"image/x-wmf", ContentWmf}}};

// The header block of the part. The line end after the delimiter is stepped over; in a file that is
// no multipart that is its first byte, whatever it is. The content follows, up to `end`.
HeaderStretch LocateHeader(std::string_view file, size_t start, size_t end) {
  const std::string_view part = file.substr(start, end - start);
  const size_t lead = std::min<size_t>(part.starts_with('\r') ? 2 : 1, part.size());
  return {file.substr(start + lead), FindHeaderEnd(part.substr(lead))};
}

// The last path segment of Content-Location names the part.
Status ReadLocation(EmlPart& part, std::string_view header) {
  constexpr std::string_view kName = "Content-Location:";
  part.locationLine = {};
  const size_t line = FindHeaderLine(header, kName);
  if (line == npos) return StatusOk;
  part.locationLine = header.substr(line);

  std::string_view value = header.substr(FixedValue(header, line, kName));
  value = value.substr(0, FindLineEnd(value));
  return part.name.append(value.substr(value.rfind('/') + 1));
}

Status ReadContentType(EmlPart& part, const HeaderStretch& header) {
  const size_t start = FindContentType(header.text());
  if (start == npos) return StatusOk;
  const HeaderStretch value = header.from(start);
  part.parsed = true;
  part.contentClass = ClassifyContent(value.text());
  if (part.contentClass == ContentHtml || part.contentClass == ContentPlain) {
    ParsePartCharset(part, value);
  }
  if (part.name.hasBlock()) return StatusOk;
  const auto name = FindHeaderParameter(value.text(), "name=");
  return name ? DecodePartName(part, *name) : Status(StatusOk);
}

void ReadTransferEncoding(EmlPart& part, std::string_view header) {
  const size_t value = FindFixedValue(header, "Content-Transfer-Encoding:");
  part.encoding = value != npos ? ClassifyTransferEncoding(header.substr(value)) : TransferRaw;
}

// The id between its angle brackets; either may be missing.
Status ReadContentId(EmlPart& part, std::string_view header) {
  part.contentId.clear();
  const size_t value = FindFixedValue(header, "Content-ID:");
  if (value == npos) return StatusOk;

  std::string_view id = header.substr(value, FindLineEnd(header, value) - value);
  id = id.substr(FindByte(id, '<') + 1);  // all of it without a bracket
  id = id.substr(0, FindByte(id, '>'));
  if (part.contentId.reserve(id.size() + 1) == nullptr) return part.contentId.lastError();
  const Status kept = part.contentId.append(id);
  part.contentId.data()[id.size()] = '\0';
  return kept;
}

ContentDisposition ClassifyDisposition(std::string_view value) {
  if (StartsWithIgnoringCase(value, "attachment")) return DispositionAttachment;
  if (StartsWithIgnoringCase(value, "inline")) return DispositionInline;
  return DispositionOther;
}

// Reports the part by its Content-Disposition line; without one the part's status stays as it is.
Status ReportByDisposition(EmlPart& part, EmlMessage& message, const HeaderStretch& header,
                           const AttachmentRequest* request, Status status) {
  const size_t start = FindFixedValue(header.text(), "Content-Disposition:");
  if (start == npos) return status;
  const HeaderStretch stretch = header.from(start);
  const std::string_view value = stretch.text().substr(0, FindFoldedLineEnd(stretch));
  part.disposition = ClassifyDisposition(value);
  return ReportEmlAttachment(request, part, message, header.text(), value);
}

// Does the part's text become the body, or decide on the charset of the message?
bool IsTextForTheDocument(const EmlPart& part, const EmlMessage& message) {
  if (part.contentClass == ContentHtml) return true;
  if (part.contentClass != ContentPlain) return false;
  return !IsOutdoneByBody(part, message) || LooksAtTextForCharset(part, message);
}

Status ReadHeaders(EmlPart& part, const HeaderStretch& header) {
  if (const Status status = ReadLocation(part, header.text()); !status.ok()) return status;
  if (const Status status = ReadContentType(part, header); !status.ok()) return status;
  ReadTransferEncoding(part, header.text());
  return ReadContentId(part, header.text());
}

Status ReadPart(EmlPart& part, EmlMessage& message, size_t& cursor, size_t end,
                const AttachmentRequest* request) {
  const HeaderStretch header = LocateHeader(message.file(), part.start, end);
  if (const Status read = ReadHeaders(part, header); !read.ok()) return read;
  const size_t content = message.file().size() - header.readable.size() + header.size;
  part.raw = message.file().substr(content, end - content);
  part.parsed = true;
  cursor = end;

  // Base64 content of length 0 fails, but a report replaces that failure.
  const bool fails = part.encoding == TransferBase64 && part.raw.empty();
  const Status reported =
      ReportByDisposition(part, message, header, request, fails ? StatusOutOfMemory : StatusOk);
  if (!reported.ok() || !IsTextForTheDocument(part, message)) return reported;
  const Status decoded = EnsureDecoded(part);
  return decoded.ok() ? ConvertPartCharset(part, message) : decoded;
}

}  // namespace

ContentClass ClassifyContent(std::string_view value) {
  for (const ContentTypeRow& row : kContentTypes) {
    if (StartsWithIgnoringCase(value, row.type)) return row.contentClass;
  }
  return ContentOther;
}

Status ParseMimePart(EmlPart& part, EmlMessage& message, size_t& cursor, size_t end,
                     const AttachmentRequest* request) {
  part.disposition = DispositionNone;
  part.charset.kind = CharsetNone;
  part.parsed = false;
  part.contentClass = ContentOther;

  const Status status = ReadPart(part, message, cursor, end, request);
  if (!status.ok()) {
    part.name.release();
    part.raw = {};
    part.decoded.release();
  }
  return status;
}

}  // namespace tarn
