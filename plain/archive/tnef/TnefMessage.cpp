#include "archive/tnef/TnefMessage.h"

#include <utility>

#include "archive/mapi/CodePageNames.h"
#include "archive/mapi/Tags.h"
#include "archive/tnef/TnefOldValues.h"

namespace tarn::archive::tnef {
namespace {

using namespace mapi;

// Values of PidTagAttachMethod.
constexpr char kByValue = 1;
constexpr char kEmbedded = 5;
constexpr char kOle = 6;

std::string Number(uint32_t number) {
  std::string bytes;
  for (int shift = 0; shift < 32; shift += 8) bytes.push_back(static_cast<char>(number >> shift));
  return bytes;
}

Trouble NoSuchAttachment() { return {TroubleKind::Missing, "there is no such attachment"}; }

// Bytes may come as an object that is read as a stream.
void TakeStreamAsBytes(TnefProperties& set) {
  const std::optional<std::string_view> method = set.view(kTagAttachMethod);
  const bool isByValue = method && !method->empty() && method->front() == kByValue;
  if (!isByValue || set.typeOf(kTagAttachData) != kTypeObject) return;
  set.replaceView({kTagAttachData, kTypeBinary}, *set.view(kTagAttachData));
}

// How the attachment is kept, where its list does not tell.
char MethodOf(TnefProperties& set, bool isOle) {
  if (set.typeOf(kTagAttachData) == kTypeObject) {
    const bool isMessage = AttributeWalk::IsTnef(set.view(kTagAttachData).value_or(""));
    return isMessage ? kEmbedded : kOle;
  }
  return isOle ? kOle : kByValue;
}

}  // namespace

TnefMessage::TnefMessage(std::string bytes) : own_(std::move(bytes)) { readAttributes(own_); }

TnefMessage::TnefMessage(std::string_view bytes, uint32_t codePage) : codePage_(codePage) {
  readAttributes(bytes);
}

void TnefMessage::readAttributes(std::string_view bytes) {
  AttributeWalk walk(bytes);
  size_t wrong = 0;
  bool isCutOff = false;
  while (const std::optional<Attribute> attribute = walk.next()) {
    if (!attribute->isChecked) ++wrong;
    isCutOff = isCutOff || attribute->isCutOff;
    if (attribute->level == Level::Message) {
      takeForMessage(*attribute);
    } else {
      takeForAttachment(*attribute);
    }
  }
  if (isCutOff || walk.endsInOtherBytes()) {
    troubles_.push_back({TroubleKind::Damaged, isCutOff ? "the message is cut off"
                                                        : "the message ends in bytes that are no "
                                                          "part of it"});
  }
  if (wrong != 0) {
    troubles_.push_back({TroubleKind::Damaged, "the checksums of " + std::to_string(wrong) +
                                                   " parts of the message do not fit"});
  }
  if (!listOfProperties_.empty()) properties_.readList(listOfProperties_, names_);
  for (const Attribute& attribute : std::exchange(oldAttributes_, {})) {
    AddMessageValue(attribute, properties_);
  }
  if (!CharsetOfCodePage(codePage_).empty()) {
    properties_.replace({kTagMessageCodepage, kTypeInteger32}, Number(codePage_));
  }
}

void TnefMessage::takeForMessage(const Attribute& attribute) {
  switch (attribute.id) {
    case kAttributeMessageProperties:
      if (listOfProperties_.empty()) listOfProperties_ = attribute.bytes;
      return;
    case kAttributeRecipients:
      return readRecipients(attribute.bytes);
    case kAttributeCodePage:
      codePage_ = ListBytes(attribute.bytes).number32().value_or(codePage_);
      return;
    default:
      oldAttributes_.push_back(attribute);
  }
}

void TnefMessage::takeForAttachment(const Attribute& attribute) {
  if (attribute.id == kAttributeAttachRendering || attachments_.empty()) {
    attachments_.emplace_back();
  }
  attachments_.back().push_back(attribute);
}

void TnefMessage::readRecipients(std::string_view table) {
  RowsOfTable read = ReadTable(table);
  if (read.rows.size() < read.declared) {
    troubles_.push_back({TroubleKind::Missing, std::to_string(read.declared - read.rows.size()) +
                                                   " of " + std::to_string(read.declared) +
                                                   " recipients are missing"});
  }
  if (recipients_.empty()) recipients_ = std::move(read.rows);
}

Outcome<std::unique_ptr<PropertySet>> TnefMessage::recipient(size_t index) {
  if (index >= recipients_.size()) {
    return Trouble{TroubleKind::Missing, "there is no such recipient"};
  }
  auto set = std::make_unique<TnefProperties>();
  set->readList(recipients_[index], names_);
  return std::unique_ptr<PropertySet>(std::move(set));
}

std::unique_ptr<TnefProperties> TnefMessage::setOfAttachment(size_t index) {
  auto set = std::make_unique<TnefProperties>();
  bool isOle = false;
  for (const Attribute& attribute : attachments_[index]) {
    if (attribute.id == kAttributeAttachment) set->readList(attribute.bytes, names_);
  }
  for (const Attribute& attribute : attachments_[index]) {
    AddAttachmentValue(attribute, *set);
    if (attribute.id == kAttributeAttachRendering) isOle = ReadRendering(attribute.bytes).isOle;
  }
  set->add({kTagAttachMethod, kTypeInteger32},
           Number(static_cast<uint32_t>(MethodOf(*set, isOle))));
  TakeStreamAsBytes(*set);
  return set;
}

Outcome<std::unique_ptr<PropertySet>> TnefMessage::attachment(size_t index) {
  if (index >= attachments_.size()) return NoSuchAttachment();
  return std::unique_ptr<PropertySet>(setOfAttachment(index));
}

Outcome<std::unique_ptr<MapiMessage>> TnefMessage::embedded(size_t index) {
  if (index >= attachments_.size()) return NoSuchAttachment();
  const auto set = setOfAttachment(index);
  const std::optional<std::string_view> bytes = set->view(kTagAttachData);
  if (!bytes) return Trouble{TroubleKind::Missing, "the embedded message is missing"};
  if (!AttributeWalk::IsTnef(*bytes)) {
    return Trouble{TroubleKind::Damaged, "the embedded message does not begin as one"};
  }
  return std::unique_ptr<MapiMessage>(std::make_unique<TnefMessage>(*bytes, codePage_));
}

Outcome<std::unique_ptr<ByteSource>> TnefMessage::object(size_t index) {
  if (index >= attachments_.size()) return NoSuchAttachment();
  const std::optional<std::string_view> bytes = setOfAttachment(index)->view(kTagAttachData);
  if (!bytes) return Trouble{TroubleKind::Missing, "the object is missing"};
  return SourceOf(*bytes);
}

}  // namespace tarn::archive::tnef
