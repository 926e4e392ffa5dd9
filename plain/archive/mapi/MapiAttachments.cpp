#include "archive/mapi/MapiAttachments.h"

#include <string>
#include <string_view>
#include <utility>

#include "archive/mapi/MapiFields.h"
#include "archive/mapi/PropertyValues.h"
#include "archive/mapi/Tags.h"
#include "archive/text/AsciiText.h"

namespace tarn::archive::mapi {
namespace {

// Values of PidTagAttachMethod.
enum Method : int64_t {
  kMethodNone = 0,
  kMethodByValue = 1,
  kMethodByReference = 2,
  kMethodByReferenceResolve = 3,
  kMethodByReferenceOnly = 4,
  kMethodEmbedded = 5,
  kMethodOle = 6,
  kMethodByWeb = 7
};

constexpr int64_t kRenderedInBody = 4;  // of PidTagAttachFlags

AttachmentKind KindOf(PropertyValues& values) {
  const std::optional<uint16_t> type = values.set().typeOf(kTagAttachData);
  const bool hasBytes = type == kTypeBinary;
  switch (values.integer(kTagAttachMethod).value_or(kMethodNone)) {
    case kMethodByReference:
    case kMethodByReferenceResolve:
    case kMethodByReferenceOnly:
    case kMethodByWeb:
      // Bytes that are there are worth more than the place that they come from.
      return hasBytes ? AttachmentKind::Data : AttachmentKind::Reference;
    case kMethodEmbedded:
      return hasBytes ? AttachmentKind::Data : AttachmentKind::Item;
    case kMethodOle:
      return AttachmentKind::Ole;
    default:
      return type == kTypeObject ? AttachmentKind::Item : AttachmentKind::Data;
  }
}

bool IsSignature(std::string_view mediaType) {
  return mediaType == "application/pkcs7-signature" ||
         mediaType == "application/x-pkcs7-signature" || mediaType == "application/pgp-signature";
}

// An embedded item without a name of its own is called by its subject.
std::string SubjectOfEmbedded(MapiMessage& message, size_t index) {
  const Outcome<std::unique_ptr<MapiMessage>> embedded = message.embedded(index);
  if (!embedded) return {};
  PropertyValues values((*embedded)->properties(), TextCodePage((*embedded)->properties()));
  return SubjectWithoutMark(values.firstText({kTagSubject, kTagNormalizedSubject}));
}

std::string NameOf(MapiMessage& message, size_t index, AttachmentKind kind,
                   PropertyValues& values) {
  if (kind != AttachmentKind::Item) {
    return values.firstText({kTagAttachLongFilename, kTagAttachFilename, kTagDisplayName});
  }
  std::string name =
      values.firstText({kTagDisplayName, kTagAttachLongFilename, kTagAttachFilename});
  return name.empty() ? SubjectOfEmbedded(message, index) : name;
}

Attachment DescribeAttachment(MapiMessage& message, size_t index, PropertyValues& values) {
  Attachment attachment;
  attachment.kind = KindOf(values);
  attachment.mediaType = LoweredAscii(values.firstText({kTagAttachMimeTag}));
  if (attachment.kind == AttachmentKind::Data && IsSignature(attachment.mediaType)) {
    attachment.kind = AttachmentKind::Signature;
  }
  attachment.name = NameOf(message, index, attachment.kind, values);
  attachment.contentId = WithoutBrackets(values.firstText({kTagAttachContentId}));
  attachment.contentLocation = values.firstText({kTagAttachContentLocation});
  const bool isRendered = (values.integer(kTagAttachFlags).value_or(0) & kRenderedInBody) != 0;
  attachment.isInline = attachment.kind != AttachmentKind::Item &&
                        (isRendered || values.boolean(kTagAttachmentHidden).value_or(false));
  if (values.set().typeOf(kTagAttachData) == kTypeBinary) {
    attachment.size = values.set().sizeOf(kTagAttachData);
  }
  if (attachment.kind == AttachmentKind::Reference) {
    attachment.target = values.firstText({kTagAttachLongPathname, kTagAttachPathname});
  }
  return attachment;
}

// A source that keeps alive what it reads from.
class SourceOfSet final : public ByteSource {
 public:
  SourceOfSet(std::unique_ptr<PropertySet> set, std::unique_ptr<ByteSource> source)
      : set_(std::move(set)), source_(std::move(source)) {}

  Outcome<size_t> read(std::span<char> buffer) override { return source_->read(buffer); }

 private:
  std::unique_ptr<PropertySet> set_;
  std::unique_ptr<ByteSource> source_;
};

Outcome<std::unique_ptr<ByteSource>> OpenData(MapiMessage& message, size_t index) {
  Outcome<std::unique_ptr<PropertySet>> set = message.attachment(index);
  if (!set) return set.trouble();
  Outcome<std::unique_ptr<ByteSource>> source = (*set)->stream(kTagAttachData);
  if (!source) return source;
  return std::unique_ptr<ByteSource>(
      std::make_unique<SourceOfSet>(std::move(*set), std::move(*source)));
}

}  // namespace

std::vector<Attachment> ReadAttachments(MapiMessage& message, std::optional<uint32_t> codePage,
                                        std::vector<Trouble>& troubles) {
  std::vector<Attachment> attachments;
  const Outcome<size_t> count = message.attachmentCount();
  if (!count) {
    troubles.push_back(
        {count.trouble().kind, "the attachments cannot be read: " + count.trouble().reason});
    return attachments;
  }
  for (size_t index = 0; index < *count; ++index) {
    const Outcome<std::unique_ptr<PropertySet>> set = message.attachment(index);
    if (set) {
      const std::string place = "attachment " + std::to_string(index + 1) + ": ";
      std::vector<Trouble> own = (*set)->troubles();
      PropertyValues values(**set, codePage, &own);
      attachments.push_back(DescribeAttachment(message, index, values));
      for (const Trouble& trouble : own) {
        troubles.push_back({trouble.kind, place + trouble.reason});
      }
    } else {
      attachments.emplace_back().trouble = set.trouble();
    }
  }
  return attachments;
}

Outcome<std::unique_ptr<ByteSource>> OpenAttachment(MapiMessage& message, size_t index,
                                                    AttachmentKind kind) {
  switch (kind) {
    case AttachmentKind::Data:
    case AttachmentKind::Signature:
      return OpenData(message, index);
    case AttachmentKind::Ole:
      return message.object(index);
    case AttachmentKind::Item:
      return Trouble{TroubleKind::Missing, "an embedded item has no bytes of its own"};
    case AttachmentKind::Reference:
      break;
  }
  return Trouble{TroubleKind::Missing, "the attachment is kept elsewhere"};
}

}  // namespace tarn::archive::mapi
