#include "archive/mail/HeaderFields.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "archive/mail/AsciiText.h"
#include "archive/mail/GObjectPtr.h"
#include "archive/mail/MailDate.h"
#include "archive/mail/ParseMail.h"
#include "archive/text/BodyText.h"

namespace tarn::archive::mail {
namespace {

bool IsBeyondAscii(char c) { return static_cast<unsigned char>(c) >= 128; }

// Where the text of an encoded word begins that has it in quoted-printable:
// "=?iso-8859-1?Q?text?=". npos where none begins at `at`.
size_t StartOfQuotedWord(std::string_view value, size_t at) {
  constexpr std::string_view kQuoted = "?q?";
  if (!value.substr(at).starts_with("=?")) return std::string_view::npos;
  const size_t charset = value.find_first_of("? \t\r\n", at + 2);
  if (charset == std::string_view::npos) return charset;
  if (!StartsWithNoCase(value.substr(charset), kQuoted)) return std::string_view::npos;
  return charset + kQuoted.size();
}

// Bytes beyond ASCII in encoded words are encoded as they should be: they are in the word's
// charset, and outside of words in none that is told.
std::string WithWordsEncoded(std::string_view value) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  const size_t lastEnd = value.rfind("?=");
  std::string encoded;
  bool inWord = false;
  for (size_t at = 0; at < value.size(); ++at) {
    const size_t start = inWord ? std::string_view::npos : StartOfQuotedWord(value, at);
    if (start != std::string_view::npos && lastEnd != std::string_view::npos && start <= lastEnd) {
      encoded += value.substr(at, start - at);
      at = start - 1;
      inWord = true;
      continue;
    }
    if (inWord && IsBeyondAscii(value[at])) {
      const auto byte = static_cast<unsigned char>(value[at]);
      encoded += {'=', kDigits[byte >> 4], kDigits[byte & 15]};
      continue;
    }
    if (value.substr(at).starts_with("?=")) inWord = false;
    encoded += value[at];
  }
  return encoded;
}

// The value of a header for decoding.
std::string ReadyHeader(const char* raw) {
  const std::string_view value(raw);
  const bool isPlain = value.find("=?") == std::string_view::npos ||
                       std::none_of(value.begin(), value.end(), IsBeyondAscii);
  return isPlain ? std::string(value) : WithWordsEncoded(value);
}

std::string DecodedText(const std::string& raw) {
  const GText unfolded(g_mime_utils_header_unfold(raw.c_str()));
  const GText decoded(g_mime_utils_header_decode_text(ReadingOptions(), unfolded.get()));
  return std::string(Trimmed(TextOf(decoded.get())));
}

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

// Each backslash twice, unless it is before a quote or another one: "C:\\a.png" is meant as a path.
std::string WithPathsQuoted(std::string_view value) {
  std::string quoted;
  for (size_t i = 0; i < value.size(); ++i) {
    quoted += value[i];
    if (value[i] != '\\') continue;
    const char next = i + 1 < value.size() ? value[i + 1] : '"';
    quoted += next == '"' || next == '\\' ? next : '\\';
    if (next == '"' || next == '\\') ++i;
  }
  return quoted;
}

// The name of a part where it has backslashes, which programs write without quoting them.
std::optional<std::string> PathNamed(GMimeObject* part) {
  const char* raw = RawHeader(part, "Content-Disposition");
  if (raw != nullptr && std::string_view(raw).find('\\') != std::string_view::npos) {
    const GObjectPtr<GMimeContentDisposition> disposition(
        g_mime_content_disposition_parse(ReadingOptions(), WithPathsQuoted(raw).c_str()));
    const char* name = g_mime_content_disposition_get_parameter(disposition.get(), "filename");
    if (name != nullptr) return TextOf(name);
  }
  if (g_mime_object_get_content_disposition_parameter(part, "filename") != nullptr) {
    return std::nullopt;
  }
  raw = RawHeader(part, "Content-Type");
  if (raw == nullptr || std::string_view(raw).find('\\') == std::string_view::npos) {
    return std::nullopt;
  }
  const GObjectPtr<GMimeContentType> type(
      g_mime_content_type_parse(ReadingOptions(), WithPathsQuoted(raw).c_str()));
  const char* name = g_mime_content_type_get_parameter(type.get(), "name");
  return name == nullptr ? std::nullopt : std::optional(TextOf(name));
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
  return raw == nullptr ? std::string() : DecodedText(ReadyHeader(raw));
}

std::vector<Address> AddressesOf(GMimeObject* object, const char* name) {
  std::vector<Address> addresses;
  GMimeHeaderList* headers = g_mime_object_get_header_list(object);
  const int count = g_mime_header_list_get_count(headers);
  for (int i = 0; i < count; ++i) {
    GMimeHeader* header = g_mime_header_list_get_header_at(headers, i);
    if (!EqualsNoCase(g_mime_header_get_name(header), name)) continue;
    if (g_mime_header_get_raw_value(header) == nullptr) continue;
    const std::string value = ReadyHeader(g_mime_header_get_raw_value(header));
    const size_t before = addresses.size();
    const GObjectPtr<InternetAddressList> list(
        internet_address_list_parse(ReadingOptions(), value.c_str()));
    if (list != nullptr) AddAddresses(list.get(), addresses);
    if (addresses.size() != before) continue;
    std::string text = DecodedText(value);
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
  if (const std::optional<std::string> path = PathNamed(part)) return *path;
  if (GMIME_IS_PART(part)) return TextOf(g_mime_part_get_filename(GMIME_PART(part)));
  std::string name = TextOf(g_mime_object_get_content_disposition_parameter(part, "filename"));
  if (name.empty()) name = ParameterOf(part, "name");
  return name;
}

}  // namespace tarn::archive::mail
