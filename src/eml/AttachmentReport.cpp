#include "eml/AttachmentReport.h"

#include "Common/ApiUtils.h"
#include "Common/AttachmentProperties.h"
#include "eml/EncodedWords.h"
#include "eml/HeaderSearch.h"
#include "eml/TransferDecoding.h"

namespace tarn {
namespace {

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

// Failures of the three looked-up properties count; those of the other three are passed over.
Status AddProperties(PropertyList& list, const EmlPart& part, std::string_view headers,
                     std::string_view disposition) {
  const auto addQuietly = [&list](std::string_view name, std::string_view value) {
    AddAttachmentProperty(list, name, value).ignore();
  };
  for (const std::string_view key : {"creation-date=", "modification-date="}) {
    const Status added = AddHeaderParameterProperty(list, disposition, key);
    if (!added.ok()) return added;
  }
  addQuietly("Content-Disposition:", DispositionName(part.disposition));
  const Status added = AddHeaderParameterProperty(list, headers, "Content-Description:");
  if (!added.ok()) return added;
  // The name is spelt so in the interface.
  if (const auto type = FindHeaderParameter(headers, "Content-Type:"))
    addQuietly("MineType", *type);
  if (part.hasContentId()) addQuietly("Content-ID:", part.contentId.view());
  return StatusOk;
}

// The wide file name, or none in `name` when the disposition has no "filename=".
Status ReadFileName(std::string_view disposition, KernelBlock<char16_t>& name) {
  const auto value = FindHeaderParameter(disposition, "filename=");
  if (!value) return StatusOk;

  SizedBytes decoded;
  if (const Status status = DecodeParameterValue(*value, decoded); !status.ok()) return status;
  const std::string_view text = decoded.text();
  const uint64_t room = text.size() + 1;
  name = AllocateBlock<char16_t>(room, TARN_HERE);
  if (!name) return StatusOutOfMemory;
  return ConvertToWide(text, {name.get(), room}) ? StatusOk : StatusFailed;
}

// The part's own block goes to the callback, and comes back unless the callback keeps it: a copy
// of a large attachment would be a second one in memory. Even no bytes have a block.
Status CallBack(const AttachmentRequest& request, EmlPart& part, const char16_t* name,
                PropertyList& properties) {
  if (const Status decoded = EnsureDecoded(part); !decoded.ok()) return decoded;
  TrackedBuffer<char> data;
  const uint64_t length = part.decoded.length();
  if (const Status granted = data.count(length); !granted.ok()) return granted;
  data.replaceBlock(part.decoded.take(), length, length);
  const Status result = request.callback(request.user, &data, name, &properties);
  const uint64_t left = data.length();
  part.decoded.adopt(data.take(), left);
  return result;
}

}  // namespace

Status AddHeaderParameterProperty(PropertyList& list, std::string_view text, std::string_view key) {
  const auto value = FindHeaderParameter(text, key);
  if (!value) return StatusOk;

  SizedBytes decoded;
  if (const Status status = DecodeParameterValue(*value, decoded); !status.ok()) return status;
  return AddAttachmentProperty(list, key, decoded.text());
}

Status ReportEmlAttachment(const AttachmentRequest* request, EmlPart& part, EmlMessage& message,
                           std::string_view headers, std::string_view disposition) {
  if (!CountByDisposition(part.disposition, message)) return StatusOk;
  if (request == nullptr) return StatusOk;

  PropertyList properties;
  if (request->infoOnly) {
    const Status added = AddProperties(properties, part, headers, disposition);
    if (!added.ok()) return added;
  }

  const uint32_t number = message.attachmentCount + message.inlineCount;
  if (request->index != kAllAttachments && request->index != number) return StatusOk;

  KernelBlock<char16_t> name;
  if (const Status named = ReadFileName(disposition, name); !named.ok()) return named;
  if (request->callback == nullptr) return StatusOk;
  return CallBack(*request, part, name.get(), properties);
}

}  // namespace tarn
