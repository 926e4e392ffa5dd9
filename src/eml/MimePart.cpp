#include "eml/MimePart.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "Common/ByteSearch.h"
#include "eml/AttachmentReport.h"
#include "eml/BodyChoice.h"
#include "eml/ContentClasses.h"
#include "eml/EncodedWords.h"
#include "eml/HeaderParameter.h"
#include "eml/HeaderSearch.h"
#include "eml/HeaderValue.h"
#include "eml/PartCharset.h"
#include "eml/TransferDecoding.h"

namespace tarn {
namespace {

struct Stretch {
  const char* start;
  const char* end;
};

// What stands behind the name of a header line and the one byte that follows its colon; empty when
// the header block ends before that.
Stretch FixedValue(const char* line, std::string_view name, const char* headerEnd) {
  const char* const start = line + std::min<ptrdiff_t>(headerEnd - line, std::ssize(name) + 1);
  return {start, headerEnd};
}

// The header block. The line end behind the delimiter is stepped over; in a file that is no
// multipart that is its first byte, whatever it is.
Stretch LocateHeader(const char* start, const char* end) {
  const ptrdiff_t lead = start != end && *start == '\r' ? 2 : 1;
  const char* const first = start + std::min<ptrdiff_t>(end - start, lead);
  return {first, FindHeaderEnd(first, end)};
}

// The last path segment of Content-Location names the part.
int32_t ReadLocation(EmlPart& part, Stretch header) {
  constexpr std::string_view kName = "Content-Location:";
  part.locationLine = FindHeaderLine(header.start, header.end, kName);
  if (part.locationLine == nullptr) return StatusOk;

  const Stretch value = FixedValue(part.locationLine, kName, header.end);
  const char* const lineEnd = FindLineEnd(value.start, value.end);
  const char* tail = lineEnd;
  while (tail != value.start && tail[-1] != '/') --tail;

  const auto length = static_cast<uint64_t>(lineEnd - tail);
  part.name = AllocateBlock<char>(length + 1, TARN_HERE);
  if (!part.name) return StatusOutOfMemory;
  if (length != 0) std::memcpy(part.name.get(), tail, length);
  part.name[length] = '\0';
  return StatusOk;
}

int32_t ReadContentType(EmlPart& part, Stretch header, const char* fileEnd) {
  const char* const value = FindContentType(header.start, header.end);
  if (value == nullptr) return StatusOk;
  part.parsed = 1;
  part.contentClass = ClassifyContent(value, header.end);
  if (part.contentClass == ContentHtml || part.contentClass == ContentPlain) {
    ParsePartCharset(part, value, header.end, fileEnd);
  }
  if (part.name) return StatusOk;

  const char* nameEnd = nullptr;
  const char* const name = FindHeaderParameter(value, header.end, "name=", &nameEnd);
  if (name == nullptr) return StatusOk;
  return DecodePartName(part, name, nameEnd);
}

void ReadTransferEncoding(EmlPart& part, Stretch header) {
  constexpr std::string_view kName = "Content-Transfer-Encoding:";
  part.encoding = TransferRaw;
  const char* const line = FindHeaderLine(header.start, header.end, kName);
  if (line == nullptr) return;
  const Stretch value = FixedValue(line, kName, header.end);
  part.encoding = ClassifyTransferEncoding(value.start, value.end);
}

// The id between its angle brackets; either may be missing.
int32_t ReadContentId(EmlPart& part, Stretch header) {
  constexpr std::string_view kName = "Content-ID:";
  part.contentId.setLength(0);
  const char* const line = FindHeaderLine(header.start, header.end, kName);
  if (line == nullptr) return StatusOk;

  const Stretch value = FixedValue(line, kName, header.end);
  const char* const lineEnd = FindLineEnd(value.start, value.end);
  const char* const open = FindByte(value.start, lineEnd, '<');
  const char* const start = open != nullptr ? open + 1 : value.start;
  const char* const close = FindByte(start, lineEnd, '>');
  const auto length = static_cast<uint64_t>((close != nullptr ? close : lineEnd) - start);

  if (part.contentId.reserve(length + 1) == nullptr) return part.contentId.lastError();
  if (length != 0) std::memcpy(part.contentId.data(), start, length);
  part.contentId.data()[length] = '\0';
  part.contentId.setLength(length);
  return StatusOk;
}

ContentDisposition ClassifyDisposition(const char* value, const char* end) {
  if (StartsWithIgnoringCase(value, end, "attachment")) return DispositionAttachment;
  if (StartsWithIgnoringCase(value, end, "inline")) return DispositionInline;
  return DispositionOther;
}

// Reports the part by its Content-Disposition line; without one the part's status stays as it is.
int32_t ReportByDisposition(EmlPart& part, EmlMessage& message, Stretch header,
                            const AttachmentRequest* request, int32_t status) {
  constexpr std::string_view kName = "Content-Disposition:";
  const char* const line = FindHeaderLine(header.start, header.end, kName);
  if (line == nullptr) return status;

  const Stretch value = FixedValue(line, kName, header.end);
  const char* const lineEnd = FindValueEnd(value.start, value.end, message.end);
  const char* const valueEnd = lineEnd != nullptr ? lineEnd : value.end;
  part.disposition = ClassifyDisposition(value.start, valueEnd);
  return ReportEmlAttachment(request, part, message, header.start, header.end, value.start,
                             valueEnd);
}

// Does the part's text become the body, or decide on the charset of the message?
bool IsTextForTheDocument(const EmlPart& part, const EmlMessage& message) {
  if (part.contentClass == ContentHtml) return true;
  if (part.contentClass != ContentPlain) return false;
  return !IsOutdoneByBody(part, message) || LooksAtTextForCharset(part, message);
}

int32_t ReadPart(EmlPart& part, EmlMessage& message, const char** cursor, const char* end,
                 const AttachmentRequest* request) {
  const Stretch header = LocateHeader(part.start, end);
  int32_t status = ReadLocation(part, header);
  if (status == StatusOk) status = ReadContentType(part, header, message.end);
  if (status != StatusOk) return status;
  ReadTransferEncoding(part, header);
  status = ReadContentId(part, header);

  if (status != StatusOk) return status;
  part.raw = {header.end, static_cast<size_t>(end - header.end)};
  part.parsed = 1;
  *cursor = end;

  // Base64 content of length 0 fails, but a report replaces that failure.
  const bool fails = part.encoding == TransferBase64 && part.raw.empty();
  status = fails ? StatusOutOfMemory : StatusOk;
  status = ReportByDisposition(part, message, header, request, status);
  if (status != StatusOk || !IsTextForTheDocument(part, message)) return status;
  status = EnsureDecoded(part);
  return status == StatusOk ? ConvertPartCharset(part, message) : status;
}

}  // namespace

int32_t ParseMimePart(EmlPart& part, EmlMessage& message, const char** cursor, const char* end,
                      const AttachmentRequest* request) {
  part.disposition = DispositionNone;
  part.charset.kind = CharsetNone;
  part.parsed = 0;
  part.contentClass = ContentOther;

  const int32_t status = ReadPart(part, message, cursor, end, request);
  if (status != StatusOk) {
    part.name.reset();
    part.raw = {};
    part.decoded.reset();
    part.decodedLength = 0;
  }
  return status;
}

}  // namespace tarn
