#include "eml/BodyChoice.h"

#include <cstring>
#include <string_view>

#include "Common/ByteSearch.h"
#include "eml/TransferDecoding.h"

namespace tarn {
namespace {

int32_t ReplaceBody(EmlPart& part, EmlMessage& message) {
  const int32_t decoded = EnsureDecoded(part);
  if (decoded != StatusOk) return decoded;
  message.body.length = 0;
  return AppendTerminated(message.body, part.decoded.get(), part.decodedLength);
}

// The siblings read such a text in a stricter way than mails stand.
void BlankDoctype(SizedBytes& body) {
  constexpr std::string_view kDoctype = "<!DOCTYPE html>";
  const char* const hit = FindBytes(body.data, body.data + body.length, kDoctype);
  if (hit != nullptr) std::memset(body.data + (hit - body.data), ' ', kDoctype.size());
}

int32_t UseTextPart(EmlPart& part, EmlMessage& message) {
  if (IsOutdoneByBody(part, message)) return StatusOk;
  const int32_t status = ReplaceBody(part, message);
  if (status != StatusOk) return status;
  BlankDoctype(message.body);
  message.documentKind = part.contentClass == ContentPlain ? DocumentText : DocumentHtml;
  return StatusOk;
}

int32_t UseOtherPart(EmlPart& part, EmlMessage& message) {
  if (message.body.length != 0) return StatusOk;
  const int32_t status = ReplaceBody(part, message);
  if (status == StatusOk) message.documentKind = DocumentText;
  return status;
}

// Looks for a needle in the body, and makes it the context's when it is there.
bool AimAt(std::string_view needle, InlineImageContext& context, SearchBudget& budget) {
  const SizedBytes& body = *context.body;
  const char* const hit = FindBytes(body.data, body.data + body.length, needle);
  context.searchOffset = hit != nullptr ? static_cast<uint64_t>(hit - body.data) : 0;
  budget.spend(hit != nullptr ? context.searchOffset : body.length);
  if (hit == nullptr) return false;
  context.needle = needle.data();
  return true;
}

// The image is looked for by its content id, or else by its name. An empty name stands nowhere.
int32_t FindReference(const EmlPart& part, InlineImageContext& context, SearchBudget& budget,
                      bool& found) {
  found = false;
  if (part.hasContentId()) {
    context.cidText.length = 0;
    if (AppendFormat(context.cidText, context.cidTextFlag, "cid:%s", part.contentId.data) == 0) {
      return StatusOutOfMemory;
    }
    found = AimAt({context.cidText.data, context.cidText.length}, context, budget);
  }
  if (!found) found = AimAt(part.name.get(), context, budget);
  return StatusOk;
}

int32_t PlaceImage(EmlPart& part, EmlMessage& message, InlineImageContext& context,
                   SearchBudget& budget, int32_t& walkResult) {
  if (!part.name) return StatusOk;
  if (message.body.length == 0) {
    walkResult = StatusDone;
    return StatusOk;
  }
  context.name = part.name.get();
  context.contentId = part.hasContentId() ? part.contentId.data : nullptr;

  bool found = false;
  const int32_t looked = FindReference(part, context, budget, found);
  if (looked != StatusOk) return looked;
  if (!found) {
    walkResult = StatusDone;
  } else {
    const int32_t decoded = EnsureDecoded(part);
    if (decoded != StatusOk) return decoded;
    const int32_t status = RewriteInlineImage(context, part.decoded.get(), part.decodedLength);
    if (status < StatusOk) return status;
    walkResult = status;
    budget.spend(message.body.length);
  }
  return budget.isSpent() ? StatusOutOfMemory : StatusOk;
}

}  // namespace

bool IsOutdoneByBody(const EmlPart& part, const EmlMessage& message) {
  return part.contentClass == ContentPlain && message.documentKind == DocumentHtml &&
         message.body.length != 0;
}

int32_t UsePart(EmlPart& part, EmlMessage& message, InlineImageContext& context,
                SearchBudget& budget, int32_t& walkResult) {
  switch (part.contentClass) {
    case ContentHtml:
    case ContentPlain:
      return UseTextPart(part, message);
    case ContentPng:
    case ContentGif:
    case ContentJpeg:
    case ContentWmf:
      return PlaceImage(part, message, context, budget, walkResult);
    case ContentOther:
      return UseOtherPart(part, message);
    default:
      return StatusOk;
  }
}

}  // namespace tarn
