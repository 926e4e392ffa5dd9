// Tags.h - the properties that are read by their meaning (MS-OXPROPS), and their canonical names.
#ifndef TARN_ARCHIVE_TAGS_H
#define TARN_ARCHIVE_TAGS_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "archive/mapi/MapiMessage.h"

namespace tarn::archive::mapi {

enum Tag : uint16_t {
  // Messages
  kTagMessageClass = 0x001A,
  kTagSubject = 0x0037,
  kTagClientSubmitTime = 0x0039,
  kTagSubjectPrefix = 0x003D,
  kTagSentRepresentingEntryId = 0x0041,
  kTagSentRepresentingName = 0x0042,
  kTagSentRepresentingAddressType = 0x0064,
  kTagSentRepresentingEmailAddress = 0x0065,
  kTagConversationTopic = 0x0070,
  kTagTransportMessageHeaders = 0x007D,
  kTagSenderEntryId = 0x0C19,
  kTagSenderName = 0x0C1A,
  kTagSenderAddressType = 0x0C1E,
  kTagSenderEmailAddress = 0x0C1F,
  kTagDisplayBcc = 0x0E02,
  kTagDisplayCc = 0x0E03,
  kTagDisplayTo = 0x0E04,
  kTagMessageDeliveryTime = 0x0E06,
  kTagMessageFlags = 0x0E07,
  kTagMessageSize = 0x0E08,
  kTagHasAttachments = 0x0E1B,
  kTagNormalizedSubject = 0x0E1D,
  kTagBody = 0x1000,
  kTagRtfCompressed = 0x1009,
  kTagHtml = 0x1013,
  kTagInternetMessageId = 0x1035,
  kTagInternetCodepage = 0x3FDE,
  kTagMessageCodepage = 0x3FFD,
  kTagSenderSmtpAddress = 0x5D01,
  kTagSentRepresentingSmtpAddress = 0x5D02,

  // Recipients, and what all objects have
  kTagRecipientType = 0x0C15,
  kTagEntryId = 0x0FFF,
  kTagDisplayName = 0x3001,
  kTagAddressType = 0x3002,
  kTagEmailAddress = 0x3003,
  kTagCreationTime = 0x3007,
  kTagLastModificationTime = 0x3008,
  kTagSmtpAddress = 0x39FE,
  kTagCompanyName = 0x3A16,
  kTagTransmittableDisplayName = 0x3A20,
  kTagRecipientDisplayName = 0x5FF6,
  kTagRecipientEntryId = 0x5FF7,

  // Attachments
  kTagAttachSize = 0x0E20,
  kTagAttachNumber = 0x0E21,
  kTagAttachData = 0x3701,
  kTagAttachEncoding = 0x3702,
  kTagAttachExtension = 0x3703,
  kTagAttachFilename = 0x3704,
  kTagAttachMethod = 0x3705,
  kTagAttachLongFilename = 0x3707,
  kTagAttachPathname = 0x3708,
  kTagAttachRendering = 0x3709,
  kTagAttachTag = 0x370A,
  kTagRenderingPosition = 0x370B,
  kTagAttachTransportName = 0x370C,
  kTagAttachLongPathname = 0x370D,
  kTagAttachMimeTag = 0x370E,
  kTagAttachContentId = 0x3712,
  kTagAttachContentLocation = 0x3713,
  kTagAttachFlags = 0x3714,
  kTagAttachPayloadClass = 0x371A,
  kTagAttachmentHidden = 0x7FFE
};

// Names in the set of contacts (PSETID_Address).
inline constexpr std::array<uint8_t, 16> kAddressSet = {
    0x04, 0x20, 0x06, 0x00, 0x00, 0x00, 0x00, 0x00, 0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46};
inline constexpr uint32_t kLidFileUnder = 0x8005;

// "PidTagSubject"; empty for an id that is not among the above.
std::string_view NameOfTag(uint16_t id);

// "PidTagSubject (0x0037)", or the number alone.
std::string DescribeTag(uint16_t id);

// How many bytes a number of this type takes (MS-OXCDATA 2.11.1), times and truth values among
// them; 0 for all other types.
size_t WidthOfNumber(uint16_t type);

// How many bytes a value of this type takes; 0 for types of any length.
size_t WidthOfValue(uint16_t type);

}  // namespace tarn::archive::mapi

#endif
