#include "eml/BodyChoice.h"

#include <cstring>
#include <string_view>

#include "Common/ByteSearch.h"
#include "Common/ImageAim.h"
#include "Common/ImagePass.h"
#include "eml/TransferDecoding.h"

namespace tarn {
namespace {

int32_t ReplaceBody(EmlPart& part, EmlMessage& message, InlineImageContext& context) {
  const int32_t decoded = EnsureDecoded(part);
  if (decoded != StatusOk) return decoded;
  if (context.pass != nullptr) context.pass->discard();
  message.body.setLength(0);
  return AppendTerminated(message.body, part.decoded.get(), part.decodedLength);
}

// The siblings read such a text in a stricter way than mails stand.
void BlankDoctype(SizedBytes& body) {
  constexpr std::string_view kDoctype = "<!DOCTYPE html>";
  const char* const hit = FindBytes(body.data(), body.data() + body.length(), kDoctype);
  if (hit != nullptr) std::memset(body.data() + (hit - body.data()), ' ', kDoctype.size());
}

int32_t UseTextPart(EmlPart& part, EmlMessage& message, InlineImageContext& context) {
  if (IsOutdoneByBody(part, message)) return StatusOk;
  const int32_t status = ReplaceBody(part, message, context);
  if (status != StatusOk) return status;
  BlankDoctype(message.body);
  message.documentKind = part.contentClass == ContentPlain ? DocumentText : DocumentHtml;
  return StatusOk;
}

int32_t UseOtherPart(EmlPart& part, EmlMessage& message, InlineImageContext& context) {
  if (message.body.length() != 0) return StatusOk;
  const int32_t status = ReplaceBody(part, message, context);
  if (status == StatusOk) message.documentKind = DocumentText;
  return status;
}

int32_t PlaceImage(EmlPart& part, EmlMessage& message, InlineImageContext& context,
                   SearchBudget& budget, int32_t& walkResult) {
  if (!part.name) return StatusOk;
  if (message.body.length() == 0) {
    walkResult = StatusDone;
    return StatusOk;
  }
  context.name = part.name.get();
  context.contentId = part.hasContentId() ? part.contentId.data() : nullptr;

  // By its content id, or else by its name. An empty name is nowhere.
  bool found = false;
  const int32_t aimed = AimAtReference(context, budget, context.contentId, context.name, found);
  if (aimed != StatusOk) return aimed;
  if (!found) {
    walkResult = StatusDone;
  } else {
    const int32_t decoded = EnsureDecoded(part);
    if (decoded != StatusOk) return decoded;
    const int32_t status = RewriteInlineImage(context, part.decoded.get(), part.decodedLength);
    if (status < StatusOk) return status;
    walkResult = status;
    if (context.pass == nullptr) budget.spend(message.body.length());
  }
  return budget.isSpent() ? StatusOutOfMemory : StatusOk;
}

}  // namespace

bool IsOutdoneByBody(const EmlPart& part, const EmlMessage& message) {
  return part.contentClass == ContentPlain && message.documentKind == DocumentHtml &&
         message.body.length() != 0;
}

int32_t UsePart(EmlPart& part, EmlMessage& message, InlineImageContext& context,
                SearchBudget& budget, int32_t& walkResult) {
  switch (part.contentClass) {
    case ContentHtml:
    case ContentPlain:
      return UseTextPart(part, message, context);
    case ContentPng:
    case ContentGif:
    case ContentJpeg:
    case ContentWmf:
      return PlaceImage(part, message, context, budget, walkResult);
    case ContentOther:
      return UseOtherPart(part, message, context);
    default:
      return StatusOk;
  }
}

}  // namespace tarn
