#include "archive/mail/HeaderFields.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "archive/mail/AddressList.h"
#include "archive/mail/EncodedWords.h"
#include "archive/mail/GObjectPtr.h"
#include "archive/mail/MailDate.h"
#include "archive/mail/ParseMail.h"
#include "archive/text/AsciiText.h"
#include "archive/text/BodyText.h"

namespace tarn::archive::mail {
namespace {

std::string TextOfAddress(const Address& address) {
  if (address.name.empty() || address.address.empty()) return address.name + address.address;
  return address.name + " <" + address.address + ">";
}

// Who else a mail is from: its sender, and its authors after the first. Several are one name.
std::optional<Address> OthersOf(const std::vector<Address>& from,
                                const std::vector<Address>& sender) {
  std::vector<Address> others(from.begin() + 1, from.end());
  const bool isAuthor =
      !sender.empty() && std::any_of(from.begin(), from.end(), [&](const Address& author) {
        return author.address == sender.front().address;
      });
  if (!sender.empty() && !isAuthor) others.insert(others.begin(), sender.front());
  if (others.empty()) return std::nullopt;
  if (others.size() == 1) return others.front();
  Address all;
  for (const Address& other : others) {
    if (!all.name.empty()) all.name += ", ";
    all.name += TextOfAddress(other);
  }
  return all;
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

// A header with parameters as GMime reads it rightly; none where it does so as it is. Programs
// write backslashes without quoting them, and long names as several words.
std::optional<std::string> MendedParameters(const char* raw) {
  if (raw == nullptr) return std::nullopt;
  std::string mended = WithBase64WordsJoined(raw);
  if (mended.find('\\') != std::string::npos) mended = WithPathsQuoted(mended);
  if (mended == raw) return std::nullopt;
  return mended;
}

// The name of a part whose headers have to be mended for it.
std::optional<std::string> MendedName(GMimeObject* part) {
  if (const auto mended = MendedParameters(RawHeader(part, "Content-Disposition"))) {
    const GObjectPtr<GMimeContentDisposition> disposition(
        g_mime_content_disposition_parse(ReadingOptions(), mended->c_str()));
    const char* name = g_mime_content_disposition_get_parameter(disposition.get(), "filename");
    if (name != nullptr) return TextOf(name);
  }
  if (g_mime_object_get_content_disposition_parameter(part, "filename") != nullptr) {
    return std::nullopt;
  }
  const auto mended = MendedParameters(RawHeader(part, "Content-Type"));
  if (!mended) return std::nullopt;
  const GObjectPtr<GMimeContentType> type(
      g_mime_content_type_parse(ReadingOptions(), mended->c_str()));
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

std::string DecodedText(const std::string& raw) {
  const GText unfolded(g_mime_utils_header_unfold(raw.c_str()));
  const GText decoded(g_mime_utils_header_decode_text(ReadingOptions(), unfolded.get()));
  return std::string(Trimmed(TextOf(decoded.get())));
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
  return raw == nullptr ? std::string() : DecodedText(WithWordsEncoded(raw));
}

void ReadHeadline(GMimeMessage* message, ItemFields& fields) {
  GMimeObject* object = GMIME_OBJECT(message);
  fields.subject = DecodedHeader(object, "Subject");
  const std::vector<Address> from = AddressesOf(object, "From");
  const std::vector<Address> sender = AddressesOf(object, "Sender");
  if (!from.empty()) {
    fields.from = from.front();
    fields.sender = OthersOf(from, sender);
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
  if (const std::optional<std::string> name = MendedName(part)) return *name;
  if (GMIME_IS_PART(part)) return TextOf(g_mime_part_get_filename(GMIME_PART(part)));
  std::string name = TextOf(g_mime_object_get_content_disposition_parameter(part, "filename"));
  if (name.empty()) name = ParameterOf(part, "name");
  return name;
}

}  // namespace tarn::archive::mail
