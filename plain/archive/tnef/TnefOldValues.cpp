#include "archive/tnef/TnefOldValues.h"

#include <array>
#include <optional>
#include <string>
#include <utility>

#include "archive/mapi/Tags.h"

namespace tarn::archive::tnef {
namespace {

using namespace mapi;

constexpr uint16_t kOleRendering = 2;

std::string LittleEndian(uint64_t number, size_t width) {
  std::string bytes;
  for (size_t at = 0; at < width; ++at) bytes.push_back(static_cast<char>(number >> (8 * at)));
  return bytes;
}

std::string_view TextOf(std::string_view bytes) { return bytes.substr(0, bytes.find('\0')); }

void AddText(TnefProperties& properties, uint16_t id, std::string_view bytes) {
  properties.addView({id, kTypeString8}, TextOf(bytes));
}

// Classes have names of their own in attributes (MS-OXTNEF 2.1.3.3.3).
std::string_view ClassOf(std::string_view name) {
  static constexpr std::pair<std::string_view, std::string_view> kClasses[] = {
      {"IPM.Microsoft Mail.Note", "IPM.Note"},
      {"IPM.Microsoft Mail.Read Receipt", "Report.IPM.Note.IPNRN"},
      {"IPM.Microsoft Mail.Non-Delivery", "Report.IPM.Note.NDR"},
      {"IPM.Microsoft Schedule.MtgReq", "IPM.Schedule.Meeting.Request"},
      {"IPM.Microsoft Schedule.MtgCncl", "IPM.Schedule.Meeting.Canceled"},
      {"IPM.Microsoft Schedule.MtgRespP", "IPM.Schedule.Meeting.Resp.Pos"},
      {"IPM.Microsoft Schedule.MtgRespN", "IPM.Schedule.Meeting.Resp.Neg"},
      {"IPM.Microsoft Schedule.MtgRespA", "IPM.Schedule.Meeting.Resp.Tent"}};
  for (const auto& [old, now] : kClasses) {
    if (name == old) return now;
  }
  return name;
}

int64_t DaysBefore(int64_t year, int64_t month) {  // since 1601, of a month from 1
  static constexpr std::array<int64_t, 12> kDaysBefore = {0,   31,  59,  90,  120, 151,
                                                          181, 212, 243, 273, 304, 334};
  const bool isLeap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
  const int64_t years = year - 1601;
  return years * 365 + years / 4 - years / 100 + years / 400 +
         kDaysBefore[static_cast<size_t>(month - 1)] + (isLeap && month > 2 ? 1 : 0);
}

// Year, month, day, hour, minute, second, day of the week, 2 bytes each; in UTC. Times that are
// none add nothing.
void AddTime(TnefProperties& properties, uint16_t id, std::string_view bytes) {
  ListBytes list(bytes);
  std::array<int64_t, 6> part{};
  for (int64_t& number : part) number = list.number16().value_or(UINT16_MAX);
  const auto [year, month, day, hour, minute, second] = part;
  const bool isDate = year >= 1601 && year <= 9999 && month >= 1 && month <= 12 && day >= 1 &&
                      day <= 31 && hour <= 23 && minute <= 59 && second <= 60;
  if (!isDate) return;
  const int64_t days = DaysBefore(year, month) + day - 1;
  const int64_t seconds = ((days * 24 + hour) * 60 + minute) * 60 + second;
  properties.add({id, kTypeTime}, LittleEndian(static_cast<uint64_t>(seconds) * 10000000, 8));
}

struct PersonTags {
  uint16_t name;
  uint16_t type;
  uint16_t address;
};
constexpr PersonTags kSender = {kTagSenderName, kTagSenderAddressType, kTagSenderEmailAddress};
constexpr PersonTags kRepresented = {kTagSentRepresentingName, kTagSentRepresentingAddressType,
                                     kTagSentRepresentingEmailAddress};

// The address has its type before a colon: "SMTP:ann@example.com".
void AddPerson(TnefProperties& properties, const PersonTags& tags, std::string_view name,
               std::string_view address) {
  name = TextOf(name);
  address = TextOf(address);
  if (!name.empty()) AddText(properties, tags.name, name);
  const size_t colon = address.find(':');
  if (colon != address.npos) {
    AddText(properties, tags.type, address.substr(0, colon));
    address.remove_prefix(colon + 1);
  }
  if (!address.empty()) AddText(properties, tags.address, address);
}

// Kind 2, size 2, sizes of name and address 2 each, name, address.
void AddSender(TnefProperties& properties, std::string_view bytes) {
  constexpr size_t kOldHeaderSize = 8;
  ListBytes list(bytes);
  list.number32();
  const size_t nameSize = list.number16().value_or(0);
  const std::optional<uint16_t> addressSize = list.number16();
  if (!addressSize) return;
  const std::string_view texts = bytes.substr(kOldHeaderSize);
  const std::string_view name = texts.substr(0, nameSize);
  AddPerson(properties, kSender, name, texts.substr(name.size(), *addressSize));
}

// Name and address, each after its size 2.
void AddRepresented(TnefProperties& properties, std::string_view bytes) {
  std::array<std::string_view, 2> texts;
  for (std::string_view& text : texts) {
    const size_t size = ListBytes(bytes).number16().value_or(0);
    bytes.remove_prefix(bytes.size() < 2 ? bytes.size() : 2);
    text = bytes.substr(0, size);
    bytes.remove_prefix(text.size());
  }
  AddPerson(properties, kRepresented, texts[0], texts[1]);
}

// 1 is high, 2 normal, 3 low; of the property the other way round.
void AddImportance(TnefProperties& properties, std::string_view bytes) {
  constexpr uint16_t kTagImportance = 0x0017;
  const std::optional<uint16_t> priority = ListBytes(bytes).number16();
  if (!priority || *priority < 1 || *priority > 3) return;
  properties.add({kTagImportance, kTypeInteger32}, LittleEndian(3u - *priority, 4));
}

void AddStartOrEnd(const Attribute& attribute, TnefProperties& properties) {
  constexpr uint16_t kTagStartDate = 0x0060;
  constexpr uint16_t kTagEndDate = 0x0061;
  if (attribute.type != kDateType) return;
  AddTime(properties, attribute.id == kAttributeDateStart ? kTagStartDate : kTagEndDate,
          attribute.bytes);
}

}  // namespace

void AddMessageValue(const Attribute& attribute, TnefProperties& properties) {
  const std::string_view bytes = attribute.bytes;
  switch (attribute.id) {
    case kAttributeMessageClass:
      return properties.add({kTagMessageClass, kTypeString8}, std::string(ClassOf(TextOf(bytes))));
    case kAttributeSubject:
      return AddText(properties, kTagSubject, bytes);
    case kAttributeBody:
      return AddText(properties, kTagBody, bytes);
    case kAttributeFrom:
      return AddSender(properties, bytes);
    case kAttributeSentFor:
      return AddRepresented(properties, bytes);
    case kAttributeDateSent:
      return AddTime(properties, kTagClientSubmitTime, bytes);
    case kAttributeDateReceived:
      return AddTime(properties, kTagMessageDeliveryTime, bytes);
    case kAttributeDateModified:
      return AddTime(properties, kTagLastModificationTime, bytes);
    case kAttributeDateStart:
    case kAttributeDateEnd:
      return AddStartOrEnd(attribute, properties);
    case kAttributePriority:
      return AddImportance(properties, bytes);
    default:
      return;
  }
}

void AddAttachmentValue(const Attribute& attribute, TnefProperties& properties) {
  const std::string_view bytes = attribute.bytes;
  switch (attribute.id) {
    case kAttributeAttachTitle:
      return AddText(properties, kTagAttachFilename, bytes);
    case kAttributeAttachTransportName:
      return AddText(properties, kTagAttachTransportName, bytes);
    case kAttributeAttachData:
      properties.addView({kTagAttachData, kTypeBinary}, bytes);
      if (attribute.isCutOff) {
        properties.addTrouble({TroubleKind::Damaged, "the bytes of the attachment are cut off"});
      }
      return;
    case kAttributeAttachMetaFile:
      return properties.addView({kTagAttachRendering, kTypeBinary}, bytes);
    case kAttributeAttachCreated:
      return AddTime(properties, kTagCreationTime, bytes);
    case kAttributeAttachModified:
      return AddTime(properties, kTagLastModificationTime, bytes);
    default:
      return;
  }
}

Rendering ReadRendering(std::string_view bytes) {
  return {ListBytes(bytes).number16().value_or(0) == kOleRendering};
}

}  // namespace tarn::archive::tnef
