#include "eml/BodyChoice.h"

#include <algorithm>

#include "Common/ByteSearch.h"
#include "Common/ImageAim.h"
#include "Common/ImagePass.h"
#include "eml/TransferDecoding.h"

namespace tarn {
namespace {

Status ReplaceBody(EmlPart& part, EmlMessage& message, InlineImageContext& context) {
  if (const Status decoded = EnsureDecoded(part); !decoded.ok()) return decoded;
  if (context.pass != nullptr) context.pass->discard();
  message.body.clear();
  return message.body.append(part.decoded.view());
}

// The siblings read such a text in a stricter way than mails are written.
void BlankDoctype(SizedBytes& body) {
  constexpr std::string_view kDoctype = "<!DOCTYPE html>";
  const size_t hit = FindBytes(body.view(), kDoctype);
  if (hit != std::string_view::npos) std::fill_n(body.data() + hit, kDoctype.size(), ' ');
}

Status UseTextPart(EmlPart& part, EmlMessage& message, InlineImageContext& context) {
  if (IsOutdoneByBody(part, message)) return StatusOk;
  if (const Status status = ReplaceBody(part, message, context); !status.ok()) return status;
  BlankDoctype(message.body);
  message.documentKind = part.contentClass == ContentPlain ? DocumentText : DocumentHtml;
  return StatusOk;
}

Status UseOtherPart(EmlPart& part, EmlMessage& message, InlineImageContext& context) {
  if (message.body.length() != 0) return StatusOk;
  const Status status = ReplaceBody(part, message, context);
  if (status.ok()) message.documentKind = DocumentText;
  return status;
}

Status PlaceImage(EmlPart& part, EmlMessage& message, const ImagePlacing& images,
                  bool& imageIsLost) {
  InlineImageContext& context = images.context;
  if (!part.name.hasBlock()) return StatusOk;
  imageIsLost = true;
  if (message.body.length() == 0) return StatusOk;
  context.name = part.name.data();
  context.contentId = part.hasContentId() ? part.contentId.data() : nullptr;

  // By its content id, or else by its name. An empty name is nowhere.
  bool found = false;
  const Status aimed =
      AimAtReference(context, images.budget, context.contentId, context.name, found);
  if (!aimed.ok()) return aimed;
  if (found) {
    if (const Status decoded = EnsureDecoded(part); !decoded.ok()) return decoded;
    const Status put = RewriteInlineImage(context, part.decoded.view());
    if (!put.ok()) return put;
    imageIsLost = false;
    if (context.pass == nullptr) images.budget.spend(message.body.length());
  }
  return images.budget.isSpent() ? StatusOutOfMemory : StatusOk;
}

}  // namespace

bool IsOutdoneByBody(const EmlPart& part, const EmlMessage& message) {
  return part.contentClass == ContentPlain && message.documentKind == DocumentHtml &&
         message.body.length() != 0;
}

Status UsePart(EmlPart& part, EmlMessage& message, const ImagePlacing& images, bool& imageIsLost) {
  switch (part.contentClass) {
    case ContentHtml:
    case ContentPlain:
      return UseTextPart(part, message, images.context);
    case ContentPng:
    case ContentGif:
    case ContentJpeg:
    case ContentWmf:
      return PlaceImage(part, message, images, imageIsLost);
    case ContentOther:
      return UseOtherPart(part, message, images.context);
    default:
      return StatusOk;
  }
}

}  // namespace tarn
