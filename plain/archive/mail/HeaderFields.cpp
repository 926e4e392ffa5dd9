#include "archive/mail/HeaderFields.h"

#include <algorithm>
#include <utility>

#include "archive/mail/AsciiText.h"
#include "archive/mail/GObjectPtr.h"
#include "archive/mail/MailDate.h"
#include "archive/mail/ParseMail.h"
#include "archive/text/BodyText.h"

namespace tarn::archive::mail {
namespace {

// Groups within groups are no deeper than the parser itself goes, of which StructureWatch takes
// care.
void AddAddresses(InternetAddressList* list, std::vector<Address>& addresses) {
  const int count = internet_address_list_length(list);
  for (int i = 0; i < count; ++i) {
    InternetAddress* entry = internet_address_list_get_address(list, i);
    Address address{TextOf(internet_address_get_name(entry)), ""};
    if (INTERNET_ADDRESS_IS_GROUP(entry)) {
      InternetAddressList* members =
          internet_address_group_get_members(INTERNET_ADDRESS_GROUP(entry));
      if (internet_address_list_length(members) != 0) {
        AddAddresses(members, addresses);
        continue;
      }
    } else {
      address.address = TextOf(internet_address_mailbox_get_addr(INTERNET_ADDRESS_MAILBOX(entry)));
      // "From: Ann" has a name and no address.
      const bool isName = address.name.empty() && address.address.find('@') == std::string::npos;
      if (isName) address.name = std::exchange(address.address, "");
    }
    if (!address.name.empty() || !address.address.empty()) addresses.push_back(std::move(address));
  }
}

std::string WithoutBrackets(std::string text) {
  if (text.starts_with('<')) text.erase(0, 1);
  if (text.ends_with('>')) text.pop_back();
  return text;
}

std::optional<Moment> ReceivedOf(GMimeObject* message) {
  const char* received = RawHeader(message, "Received");
  return received == nullptr ? std::nullopt : MomentOfReceived(received);
}

}  // namespace

std::string TextOf(const char* text) {
  if (text == nullptr) return {};
  std::string all = g_utf8_validate(text, -1, nullptr) != FALSE ? text : Utf8Of(text, "");
  std::erase_if(all, [](char c) { return c == '\r' || c == '\n'; });
  return all;
}

const char* RawHeader(GMimeObject* object, const char* name) {
  GMimeHeaderList* headers = g_mime_object_get_header_list(object);
  const int count = g_mime_header_list_get_count(headers);
  for (int i = 0; i < count; ++i) {
    GMimeHeader* header = g_mime_header_list_get_header_at(headers, i);
    if (EqualsNoCase(g_mime_header_get_name(header), name)) {
      return g_mime_header_get_raw_value(header);
    }
  }
  return nullptr;
}

std::string DecodedHeader(GMimeObject* object, const char* name) {
  const char* raw = RawHeader(object, name);
  if (raw == nullptr) return {};
  const GText unfolded(g_mime_utils_header_unfold(raw));
  const GText decoded(g_mime_utils_header_decode_text(ReadingOptions(), unfolded.get()));
  return std::string(Trimmed(TextOf(decoded.get())));
}

std::vector<Address> AddressesOf(GMimeObject* object, const char* name) {
  std::vector<Address> addresses;
  GMimeHeaderList* headers = g_mime_object_get_header_list(object);
  const int count = g_mime_header_list_get_count(headers);
  for (int i = 0; i < count; ++i) {
    GMimeHeader* header = g_mime_header_list_get_header_at(headers, i);
    if (!EqualsNoCase(g_mime_header_get_name(header), name)) continue;
    const char* raw = g_mime_header_get_raw_value(header);
    if (raw == nullptr) continue;
    const size_t before = addresses.size();
    const GObjectPtr<InternetAddressList> list(internet_address_list_parse(ReadingOptions(), raw));
    if (list != nullptr) AddAddresses(list.get(), addresses);
    if (addresses.size() != before) continue;
    const GText unfolded(g_mime_utils_header_unfold(raw));
    const GText decoded(g_mime_utils_header_decode_text(ReadingOptions(), unfolded.get()));
    std::string text(Trimmed(TextOf(decoded.get())));
    if (!text.empty()) addresses.push_back({std::move(text), ""});
  }
  return addresses;
}

void ReadHeadline(GMimeMessage* message, ItemFields& fields) {
  GMimeObject* object = GMIME_OBJECT(message);
  fields.subject = DecodedHeader(object, "Subject");
  const std::vector<Address> from = AddressesOf(object, "From");
  const std::vector<Address> sender = AddressesOf(object, "Sender");
  if (!from.empty()) {
    fields.from = from.front();
    if (!sender.empty() && sender.front().address != from.front().address) {
      fields.sender = sender.front();
    }
  } else if (!sender.empty()) {
    fields.from = sender.front();
  }
  if (const char* date = RawHeader(object, "Date")) fields.sent = MomentOfDate(date);
  fields.received = ReceivedOf(object);
}

void ReadEnvelope(GMimeMessage* message, ItemFields& fields) {
  GMimeObject* object = GMIME_OBJECT(message);
  fields.to = AddressesOf(object, "To");
  fields.cc = AddressesOf(object, "Cc");
  fields.bcc = AddressesOf(object, "Bcc");
  fields.messageId = WithoutBrackets(TextOf(g_mime_message_get_message_id(message)));
}

std::string MediaTypeOf(GMimeObject* part) {
  GMimeContentType* type = g_mime_object_get_content_type(part);
  if (type == nullptr) return "text/plain";
  const GText name(g_mime_content_type_get_mime_type(type));
  std::string lowered = LoweredAscii(TextOf(name.get()));
  if (lowered != "application/octet-stream") return lowered;
  // This is also what GMime makes of a type that it cannot read.
  const char* raw = RawHeader(part, "Content-Type");
  if (raw == nullptr || ContainsNoCase(raw, "octet-stream")) return lowered;
  return "text/plain";
}

std::string ParameterOf(GMimeObject* part, const char* name) {
  GMimeContentType* type = g_mime_object_get_content_type(part);
  if (type == nullptr) return {};
  return TextOf(g_mime_content_type_get_parameter(type, name));
}

std::string FileNameOf(GMimeObject* part) {
  if (GMIME_IS_PART(part)) return TextOf(g_mime_part_get_filename(GMIME_PART(part)));
  std::string name = TextOf(g_mime_object_get_content_disposition_parameter(part, "filename"));
  if (name.empty()) name = ParameterOf(part, "name");
  return name;
}

}  // namespace tarn::archive::mail
