// TnefAttributes.h - TNEF cut into its attributes (MS-OXTNEF 2.1.3).
//
//   signature 4, key 2, and then for each attribute:
//   level 1 (1 of the message, 2 of an attachment), id 2, type 2, length 4, the bytes, checksum 2
#ifndef TARN_ARCHIVE_TNEFATTRIBUTES_H
#define TARN_ARCHIVE_TNEFATTRIBUTES_H

#include <cstdint>
#include <optional>
#include <string_view>

namespace tarn::archive::tnef {

// The ids. Types are not looked at: every id has one.
enum AttributeId : uint16_t {
  kAttributeOwner = 0x0000,
  kAttributeSentFor = 0x0001,
  kAttributeDelegate = 0x0002,
  kAttributeDateStart = 0x0006,  // of type date; the original message class has this id too
  kAttributeDateEnd = 0x0007,
  kAttributeFrom = 0x8000,
  kAttributeSubject = 0x8004,
  kAttributeDateSent = 0x8005,
  kAttributeDateReceived = 0x8006,
  kAttributeMessageClass = 0x8008,
  kAttributeBody = 0x800C,
  kAttributePriority = 0x800D,
  kAttributeAttachData = 0x800F,
  kAttributeAttachTitle = 0x8010,
  kAttributeAttachMetaFile = 0x8011,
  kAttributeAttachCreated = 0x8012,
  kAttributeAttachModified = 0x8013,
  kAttributeDateModified = 0x8020,
  kAttributeAttachTransportName = 0x9001,
  kAttributeAttachRendering = 0x9002,
  kAttributeMessageProperties = 0x9003,
  kAttributeRecipients = 0x9004,
  kAttributeAttachment = 0x9005,
  kAttributeCodePage = 0x9007
};

inline constexpr uint16_t kDateType = 3;

enum class Level : uint8_t { Message = 1, Attachment = 2 };

struct Attribute {
  Level level = Level::Message;
  uint16_t id = 0;
  uint16_t type = 0;
  std::string_view bytes;
  bool isCutOff = false;
  bool isChecked = true;  // the checksum fits
};

// Walks attributes that are in memory; every call looks at new bytes.
class AttributeWalk {
 public:
  // Whether the bytes begin as TNEF.
  static bool IsTnef(std::string_view bytes);

  // Of bytes that do.
  explicit AttributeWalk(std::string_view bytes);

  std::optional<Attribute> next();

  // Once there are no more: whether what is left is something else than filling.
  bool endsInOtherBytes() const;

 private:
  std::string_view rest_;
};

}  // namespace tarn::archive::tnef

#endif
