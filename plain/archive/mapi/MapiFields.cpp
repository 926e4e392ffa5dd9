#include "archive/mapi/MapiFields.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "Platform/Utf8.h"
#include "archive/mapi/Addresses.h"
#include "archive/mapi/PropertyValues.h"
#include "archive/mapi/Tags.h"
#include "archive/mapi/TransportHeaders.h"
#include "archive/text/AsciiText.h"

namespace tarn::archive::mapi {
namespace {

constexpr AddressTags kSentRepresenting = {
    kTagSentRepresentingName, kTagSentRepresentingAddressType, kTagSentRepresentingEmailAddress,
    kTagSentRepresentingSmtpAddress, kTagSentRepresentingEntryId};
constexpr AddressTags kSender = {kTagSenderName, kTagSenderAddressType, kTagSenderEmailAddress,
                                 kTagSenderSmtpAddress, kTagSenderEntryId};
constexpr AddressTags kRecipient = {kTagDisplayName, kTagAddressType, kTagEmailAddress,
                                    kTagSmtpAddress, kTagEntryId};

// The lowest bits of PidTagRecipientType; the others tell of sending again.
enum RecipientType : int64_t { kOriginator = 0, kTo = 1, kCc = 2, kBcc = 3, kTypeBits = 0xF };

bool IsNobody(const Address& person) { return person.name.empty() && person.address.empty(); }

std::string SubjectOf(MapiMessage& message, PropertyValues& values) {
  std::string subject = SubjectWithoutMark(values.firstText({kTagSubject}));
  if (!subject.empty()) return subject;
  subject = values.firstText({kTagNormalizedSubject});
  if (!subject.empty()) return values.firstText({kTagSubjectPrefix}) + subject;
  subject = values.firstText({kTagConversationTopic, kTagDisplayName});
  if (!subject.empty()) return subject;
  const std::optional<uint16_t> fileUnder = message.idOf({kAddressSet, kLidFileUnder, {}});
  if (fileUnder) subject = values.firstText({*fileUnder});
  return subject.empty() ? values.firstText({kTagCompanyName}) : subject;
}

// The Date field tells the sender's offset, and when the mail was sent where no property does. One
// that is a day or more off is of another mail.
void ReadSent(PropertyValues& values, const std::string& headers, ItemFields& fields) {
  const std::optional<Moment> told = values.time(kTagClientSubmitTime);
  if (told) fields.sent = told;
  const std::optional<Moment> date = ParseMailDate(HeaderField(headers, "Date"));
  if (!date) return;
  if (!fields.sent) fields.sent = date;
  if (std::abs(fields.sent->seconds - date->seconds) < kSecondsOfDay) {
    fields.sent->offsetMinutes = date->offsetMinutes;
  }
}

void ReadFrom(PropertyValues& values, const std::string& headers, ItemFields& fields) {
  Address from = ReadAddress(values, kSentRepresenting);
  if (IsNobody(from)) from = ReadAddress(values, kSender);
  if (!IsInternetAddress(from.address)) {
    const std::string found = AddressOfField(HeaderField(headers, "From"));
    if (!found.empty()) from.address = found;
  }
  if (!IsNobody(from)) fields.from = std::move(from);
}

void ReadSender(PropertyValues& values, ItemFields& fields) {
  Address sender = ReadAddress(values, kSender);
  if (IsNobody(sender) || IsSamePerson(sender, fields.from)) return;
  // The same name with and without an internet address is one person, told twice.
  const bool isSameName = !sender.name.empty() && sender.name == fields.from.name;
  if (isSameName && !IsInternetAddress(sender.address)) return;
  fields.sender = std::move(sender);
}

void AddRecipient(PropertyValues& values, ItemFields& fields) {
  Address person = ReadAddress(values, kRecipient);
  if (person.name.empty()) {
    person.name = values.firstText({kTagRecipientDisplayName, kTagTransmittableDisplayName});
  }
  if (!IsInternetAddress(person.address)) {
    AddressTags other = kRecipient;
    other.entryId = kTagRecipientEntryId;
    person.address = ReadAddress(values, other).address;
  }
  switch (values.integer(kTagRecipientType).value_or(kTo) & kTypeBits) {
    case kOriginator:
      break;  // whom the mail is from
    case kCc:
      fields.cc.push_back(std::move(person));
      break;
    case kBcc:
      fields.bcc.push_back(std::move(person));
      break;
    default:
      fields.to.push_back(std::move(person));
  }
}

// Names that the message itself lists, for where it has no recipients.
std::vector<Address> ListedNames(PropertyValues& values, uint16_t id) {
  std::vector<Address> people;
  const std::string names = values.firstText({id});
  std::string_view rest = names;
  while (!rest.empty()) {
    const size_t end = std::min(rest.find(';'), rest.size());
    std::string_view name = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    while (!name.empty() && name.front() == ' ') name.remove_prefix(1);
    while (!name.empty() && name.back() == ' ') name.remove_suffix(1);
    if (name.empty()) continue;
    people.push_back({std::string(name), AddressInName(name)});
  }
  return people;
}

void ReadRecipients(MapiMessage& message, std::optional<uint32_t> codePage, ItemFields& fields,
                    std::vector<Trouble>& troubles) {
  const Outcome<size_t> count = message.recipientCount();
  if (!count) {
    troubles.push_back(
        {count.trouble().kind, "the recipients cannot be read: " + count.trouble().reason});
  }
  size_t unread = 0;
  Trouble first;
  for (size_t index = 0; count && index < *count; ++index) {
    const Outcome<std::unique_ptr<PropertySet>> recipient = message.recipient(index);
    if (recipient) {
      std::vector<Trouble> own = (*recipient)->troubles();
      PropertyValues values(**recipient, codePage, &own);
      AddRecipient(values, fields);
      if (!own.empty() && unread++ == 0) first = own.front();
    } else if (unread++ == 0) {
      first = recipient.trouble();
    }
  }
  if (unread != 0) {
    troubles.push_back({first.kind, std::to_string(unread) + " of " + std::to_string(*count) +
                                        " recipients cannot be read whole: " + first.reason});
  }
}

}  // namespace

std::string SubjectWithoutMark(std::string subject) {
  if (subject.empty() || subject[0] != '\x01') return subject;
  subject.erase(0, 1);
  if (!subject.empty()) subject.erase(0, platform::FirstCharacter(std::string_view(subject)).size);
  return subject;
}

void ReadHeadline(MapiMessage& message, std::optional<uint32_t> codePage, ItemFields& fields,
                  std::vector<Trouble>& troubles) {
  PropertyValues values(message.properties(), codePage, &troubles);
  std::string messageClass = values.firstText({kTagMessageClass});
  if (!messageClass.empty()) fields.messageClass = std::move(messageClass);
  std::string subject = SubjectOf(message, values);
  if (!subject.empty()) fields.subject = std::move(subject);
  const std::string headers = values.firstText({kTagTransportMessageHeaders});
  ReadFrom(values, headers, fields);
  ReadSent(values, headers, fields);
  const std::optional<Moment> received = values.time(kTagMessageDeliveryTime);
  if (received) fields.received = received;
  const std::optional<int64_t> size = values.integer(kTagMessageSize);
  if (size && *size > 0) fields.size = static_cast<uint64_t>(*size);
  const Outcome<size_t> attachments = message.attachmentCount();
  if (attachments) {
    fields.attachmentCount = *attachments;
    fields.hasAttachments = *attachments != 0;
  } else {
    troubles.push_back({attachments.trouble().kind,
                        "the attachments cannot be read: " + attachments.trouble().reason});
  }
}

void ReadEnvelope(MapiMessage& message, std::optional<uint32_t> codePage, ItemFields& fields,
                  std::vector<Trouble>& troubles) {
  PropertyValues values(message.properties(), codePage, &troubles);
  ReadSender(values, fields);
  ReadRecipients(message, codePage, fields, troubles);
  if (fields.to.empty() && fields.cc.empty() && fields.bcc.empty()) {
    fields.to = ListedNames(values, kTagDisplayTo);
    fields.cc = ListedNames(values, kTagDisplayCc);
    fields.bcc = ListedNames(values, kTagDisplayBcc);
  }
  fields.messageId = WithoutBrackets(values.firstText({kTagInternetMessageId}));
  if (fields.messageId.empty()) {
    const std::string headers = values.firstText({kTagTransportMessageHeaders});
    fields.messageId = WithoutBrackets(HeaderField(headers, "Message-ID"));
  }
}

}  // namespace tarn::archive::mapi
