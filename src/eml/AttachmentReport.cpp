#include "eml/AttachmentReport.h"

#include "Common/AttachmentProperties.h"
#include "eml/EncodedWords.h"
#include "eml/HeaderParameter.h"
#include "eml/TransferDecoding.h"

namespace tarn {
namespace {

// A stretch of the file.
struct Stretch {
  const char* start;
  const char* end;
};

const char* DispositionName(ContentDisposition disposition) {
  switch (disposition) {
    case DispositionAttachment:
      return "attachment";
    case DispositionInline:
      return "inline";
    default:
      return "other";
  }
}

bool CountByDisposition(ContentDisposition disposition, EmlMessage& message) {
  switch (disposition) {
    case DispositionAttachment:
      ++message.attachmentCount;
      return true;
    case DispositionInline:
      ++message.inlineCount;
      return true;
    default:
      return false;
  }
}

// The name is spelt so in the interface.
void AddContentType(PropertyList& list, Stretch headers) {
  const char* end = nullptr;
  const char* const value = FindHeaderParameter(headers.start, headers.end, "Content-Type:", &end);
  if (value == nullptr) return;
  AddAttachmentProperty(list, "MineType", value, static_cast<uint64_t>(end - value));
}

// Failures of the three looked-up properties count; those of the other three are passed over.
int32_t AddProperties(PropertyList& list, const EmlPart& part, Stretch headers, Stretch value) {
  for (const std::string_view key : {"creation-date=", "modification-date="}) {
    const int32_t status = AddHeaderParameterProperty(list, value.start, value.end, key);
    if (status != StatusOk) return status;
  }
  AddAttachmentProperty(list, "Content-Disposition:", DispositionName(part.disposition));
  const int32_t status =
      AddHeaderParameterProperty(list, headers.start, headers.end, "Content-Description:");
  if (status != StatusOk) return status;
  AddContentType(list, headers);
  if (part.hasContentId()) {
    AddAttachmentProperty(list, "Content-ID:", part.contentId.data(), part.contentId.length());
  }
  return StatusOk;
}

// The wide file name, or null in `name` when the disposition has no "filename=".
int32_t ReadFileName(Stretch value, KernelBlock<char16_t>& name) {
  const char* end = nullptr;
  const char* const start = FindHeaderParameter(value.start, value.end, "filename=", &end);
  if (start == nullptr) return StatusOk;

  SizedBytes decoded;
  const int32_t status = DecodeParameterValue(start, end, decoded);
  if (status != StatusOk) return status;
  const std::string_view text = decoded.text();
  const uint64_t room = text.size() + 1;
  // Cleared, so that the name ends where the conversion does: not every kernel tells the units.
  name = AllocateZeroBlock<char16_t>(room, TARN_HERE);
  if (!name) return StatusOutOfMemory;
  if (text.empty()) return StatusOk;
  const int64_t converted = KernelUtf8ToWide(text.data(), static_cast<int64_t>(text.size()),
                                             name.get(), static_cast<int64_t>(room));
  return converted != 0 ? StatusOk : StatusFailed;
}

// The part's own block goes to the callback, and comes back unless the callback keeps it: a copy
// of a large attachment would be a second one in memory. Even no bytes have a block.
int32_t CallBack(const AttachmentRequest& request, EmlPart& part, const char16_t* name,
                 PropertyList& properties) {
  const int32_t decoded = EnsureDecoded(part);
  if (decoded != StatusOk) return decoded;
  TrackedBuffer<char> data;
  const int32_t granted = data.count(part.decodedLength);
  if (granted != StatusOk) return granted;
  data.replaceBlock(std::move(part.decoded), part.decodedLength, part.decodedLength);
  const int32_t result = request.callback(request.user, &data, name, &properties);
  part.decodedLength = data.length();
  part.decoded = data.take();
  return result;
}

}  // namespace

int32_t AddHeaderParameterProperty(PropertyList& list, const char* start, const char* end,
                                   std::string_view key) {
  const char* valueEnd = nullptr;
  const char* const value = FindHeaderParameter(start, end, key, &valueEnd);
  if (value == nullptr) return StatusOk;

  SizedBytes decoded;
  const int32_t status = DecodeParameterValue(value, valueEnd, decoded);
  if (status != StatusOk) return status;
  return AddAttachmentProperty(list, key.data(), decoded.data(), decoded.text().size());
}

int32_t ReportEmlAttachment(const AttachmentRequest* request, EmlPart& part, EmlMessage& message,
                            const char* headerStart, const char* headerEnd, const char* value,
                            const char* valueEnd) {
  if (!CountByDisposition(part.disposition, message)) return StatusOk;
  if (request == nullptr) return StatusOk;

  PropertyList properties;
  if (request->infoOnly != 0) {
    const int32_t added =
        AddProperties(properties, part, {headerStart, headerEnd}, {value, valueEnd});
    if (added != StatusOk) return added;
  }

  const uint32_t number = message.attachmentCount + message.inlineCount;
  if (request->index != kAllAttachments && request->index != number) return StatusOk;

  KernelBlock<char16_t> name;
  const int32_t named = ReadFileName({value, valueEnd}, name);
  if (named != StatusOk) return named;
  if (request->callback == nullptr) return StatusOk;
  return CallBack(*request, part, name.get(), properties);
}

}  // namespace tarn
