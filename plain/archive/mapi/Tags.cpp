#include "archive/mapi/Tags.h"

#include <algorithm>
#include <iterator>

#include "archive/mapi/Hexadecimal.h"

namespace tarn::archive::mapi {
namespace {

struct NamedTag {
  uint16_t id;
  std::string_view name;
};

// In the order of their numbers.
constexpr NamedTag kNamedTags[] = {
    {kTagMessageClass, "PidTagMessageClass"},
    {kTagSubject, "PidTagSubject"},
    {kTagClientSubmitTime, "PidTagClientSubmitTime"},
    {kTagSubjectPrefix, "PidTagSubjectPrefix"},
    {kTagSentRepresentingEntryId, "PidTagSentRepresentingEntryId"},
    {kTagSentRepresentingName, "PidTagSentRepresentingName"},
    {kTagSentRepresentingAddressType, "PidTagSentRepresentingAddressType"},
    {kTagSentRepresentingEmailAddress, "PidTagSentRepresentingEmailAddress"},
    {kTagConversationTopic, "PidTagConversationTopic"},
    {kTagTransportMessageHeaders, "PidTagTransportMessageHeaders"},
    {kTagRecipientType, "PidTagRecipientType"},
    {kTagSenderEntryId, "PidTagSenderEntryId"},
    {kTagSenderName, "PidTagSenderName"},
    {kTagSenderAddressType, "PidTagSenderAddressType"},
    {kTagSenderEmailAddress, "PidTagSenderEmailAddress"},
    {kTagDisplayBcc, "PidTagDisplayBcc"},
    {kTagDisplayCc, "PidTagDisplayCc"},
    {kTagDisplayTo, "PidTagDisplayTo"},
    {kTagMessageDeliveryTime, "PidTagMessageDeliveryTime"},
    {kTagMessageFlags, "PidTagMessageFlags"},
    {kTagMessageSize, "PidTagMessageSize"},
    {kTagHasAttachments, "PidTagHasAttachments"},
    {kTagNormalizedSubject, "PidTagNormalizedSubject"},
    {kTagAttachSize, "PidTagAttachSize"},
    {kTagAttachNumber, "PidTagAttachNumber"},
    {kTagEntryId, "PidTagEntryId"},
    {kTagBody, "PidTagBody"},
    {kTagRtfCompressed, "PidTagRtfCompressed"},
    {kTagHtml, "PidTagHtml"},
    {kTagInternetMessageId, "PidTagInternetMessageId"},
    {kTagDisplayName, "PidTagDisplayName"},
    {kTagAddressType, "PidTagAddressType"},
    {kTagEmailAddress, "PidTagEmailAddress"},
    {kTagCreationTime, "PidTagCreationTime"},
    {kTagLastModificationTime, "PidTagLastModificationTime"},
    {kTagAttachData, "PidTagAttachData"},
    {kTagAttachEncoding, "PidTagAttachEncoding"},
    {kTagAttachExtension, "PidTagAttachExtension"},
    {kTagAttachFilename, "PidTagAttachFilename"},
    {kTagAttachMethod, "PidTagAttachMethod"},
    {kTagAttachLongFilename, "PidTagAttachLongFilename"},
    {kTagAttachPathname, "PidTagAttachPathname"},
    {kTagAttachRendering, "PidTagAttachRendering"},
    {kTagAttachTag, "PidTagAttachTag"},
    {kTagRenderingPosition, "PidTagRenderingPosition"},
    {kTagAttachTransportName, "PidTagAttachTransportName"},
    {kTagAttachLongPathname, "PidTagAttachLongPathname"},
    {kTagAttachMimeTag, "PidTagAttachMimeTag"},
    {kTagAttachContentId, "PidTagAttachContentId"},
    {kTagAttachContentLocation, "PidTagAttachContentLocation"},
    {kTagAttachFlags, "PidTagAttachFlags"},
    {kTagAttachPayloadClass, "PidTagAttachPayloadClass"},
    {kTagSmtpAddress, "PidTagSmtpAddress"},
    {kTagCompanyName, "PidTagCompanyName"},
    {kTagTransmittableDisplayName, "PidTagTransmittableDisplayName"},
    {kTagInternetCodepage, "PidTagInternetCodepage"},
    {kTagMessageCodepage, "PidTagMessageCodepage"},
    {kTagSenderSmtpAddress, "PidTagSenderSmtpAddress"},
    {kTagSentRepresentingSmtpAddress, "PidTagSentRepresentingSmtpAddress"},
    {kTagRecipientDisplayName, "PidTagRecipientDisplayName"},
    {kTagRecipientEntryId, "PidTagRecipientEntryId"},
    {kTagAttachmentHidden, "PidTagAttachmentHidden"},
};

constexpr bool IsBefore(const NamedTag& left, const NamedTag& right) { return left.id < right.id; }

static_assert(std::is_sorted(std::begin(kNamedTags), std::end(kNamedTags), IsBefore));

}  // namespace

std::string_view NameOfTag(uint16_t id) {
  const NamedTag* const end = std::end(kNamedTags);
  const NamedTag* const at =
      std::lower_bound(std::begin(kNamedTags), end, NamedTag{id, {}}, IsBefore);
  return at != end && at->id == id ? at->name : std::string_view();
}

std::string DescribeTag(uint16_t id) {
  const std::string number = "0x" + Hexadecimal(id, 4);
  const std::string_view name = NameOfTag(id);
  return name.empty() ? number : std::string(name) + " (" + number + ")";
}

size_t WidthOfNumber(uint16_t type) {
  switch (type) {
    case kTypeBoolean:
      return 1;
    case kTypeInteger16:
      return 2;
    case kTypeInteger32:
    case kTypeFloat32:
    case kTypeError:
      return 4;
    case kTypeFloat64:
    case kTypeCurrency:
    case kTypeFloatingTime:
    case kTypeInteger64:
    case kTypeTime:
      return 8;
    default:
      return 0;
  }
}

size_t WidthOfValue(uint16_t type) {
  constexpr size_t kGuid = 16;
  return type == kTypeGuid ? kGuid : WidthOfNumber(type);
}

}  // namespace tarn::archive::mapi
