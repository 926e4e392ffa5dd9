#include "archive/writers/MimeHeaders.h"

#include <gmime/gmime.h>

#include <algorithm>
#include <map>
#include <memory>

#include "archive/text/AsciiText.h"
#include "archive/writers/ItemText.h"

namespace tarn::archive {
namespace {

struct Unref {
  void operator()(void* object) const { g_object_unref(object); }
};
template <typename T>
using Owned = std::unique_ptr<T, Unref>;

struct FreeText {
  void operator()(char* text) const { g_free(text); }
};
using OwnedText = std::unique_ptr<char, FreeText>;

void StartGMime() {
  static const bool isStarted = (g_mime_init(), true);
  static_cast<void>(isStarted);
}

// Printable ASCII that needs no quotes (RFC 2045 5.1).
bool IsToken(std::string_view text) {
  constexpr std::string_view kSpecial = "()<>@,;:\\\"/[]?=";
  return !text.empty() && std::all_of(text.begin(), text.end(), [&](char c) {
    return c > ' ' && c < 0x7F && kSpecial.find(c) == kSpecial.npos;
  });
}

std::pair<std::string, std::string> TypeOf(std::string_view mediaType) {
  const size_t slash = mediaType.find('/');
  if (slash != mediaType.npos && IsToken(mediaType.substr(0, slash)) &&
      IsToken(mediaType.substr(slash + 1))) {
    return {LoweredAscii(mediaType.substr(0, slash)), LoweredAscii(mediaType.substr(slash + 1))};
  }
  return {"application", "octet-stream"};
}

// What may be between angle brackets.
bool IsAddress(std::string_view address) {
  const size_t at = address.rfind('@');
  return at != address.npos && at != 0 && at + 1 != address.size() &&
         std::all_of(address.begin(), address.end(), [](char c) {
           return static_cast<unsigned char>(c) > ' ' && c != 0x7F && c != '<' && c != '>' &&
                  c != ',' && c != ';' && c != ':' && c != '"' && c != '(' && c != ')' && c != '\\';
         });
}

void AddPerson(InternetAddressList* people, const Address& person) {
  const std::string name = OneLine(person.name);
  if (IsAddress(person.address)) {
    Owned<InternetAddress> mailbox(
        internet_address_mailbox_new(name.c_str(), person.address.c_str()));
    internet_address_set_charset(mailbox.get(), "utf-8");
    internet_address_list_add(people, mailbox.get());
    return;
  }
  const std::string shown = AddressText(person);
  if (shown.empty()) return;
  Owned<InternetAddress> group(internet_address_group_new(shown.c_str()));
  internet_address_set_charset(group.get(), "utf-8");
  internet_address_list_add(people, group.get());
}

std::string WithCrLf(const char* text) {
  std::string lines;
  for (; text != nullptr && *text != '\0'; ++text) {
    if (*text == '\n' && !lines.ends_with('\r')) lines += '\r';
    lines += *text;
  }
  return lines;
}

std::string HeadersOf(GMimeObject* object) {
  const OwnedText text(g_mime_object_get_headers(object, nullptr));
  return WithCrLf(text.get());
}

void SetField(GMimeObject* object, const char* name, const std::string& value) {
  if (!value.empty()) g_mime_object_set_header(object, name, OneLine(value).c_str(), "utf-8");
}

// Ids have no spaces, and end where their bracket does.
std::string IdOf(std::string_view id) {
  std::string kept;
  for (const char c : id) {
    if (static_cast<unsigned char>(c) > ' ' && c != 0x7F && c != '<' && c != '>') kept += c;
  }
  return kept;
}

// What tells apart the headers of texts; empty for a part that has more than type, charset and
// encoding.
std::string KeyOfText(const PartHeaders& headers) {
  constexpr size_t kLongest = 100;
  const bool hasMore = !headers.disposition.empty() || !headers.fileName.empty() ||
                       !headers.contentId.empty() || !headers.contentLocation.empty();
  if (hasMore || headers.parameters.size() > 1) return {};
  if (!headers.parameters.empty() && headers.parameters[0].first != "charset") return {};
  std::string key = headers.mediaType + '\n' + headers.encoding;
  if (!headers.parameters.empty()) key += '\n' + headers.parameters[0].second;
  return key.size() > kLongest ? std::string() : key;
}

std::string MadeText(const PartHeaders& headers) {
  StartGMime();
  const auto [type, subtype] = TypeOf(headers.mediaType);
  const Owned<GMimePart> part(g_mime_part_new_with_type(type.c_str(), subtype.c_str()));
  GMimeObject* const object = GMIME_OBJECT(part.get());
  for (const auto& [name, value] : headers.parameters) {
    g_mime_object_set_content_type_parameter(object, name.c_str(), OneLine(value).c_str());
  }
  const std::string fileName = OneLine(headers.fileName);
  if (!headers.disposition.empty()) {
    g_mime_object_set_disposition(object, headers.disposition.c_str());
    if (!fileName.empty()) {
      g_mime_object_set_content_disposition_parameter(object, "filename", fileName.c_str());
    }
  }
  SetField(object, "Content-Transfer-Encoding", headers.encoding);
  const std::string id = IdOf(headers.contentId);
  if (!id.empty()) SetField(object, "Content-Id", "<" + id + ">");
  SetField(object, "Content-Location", headers.contentLocation);
  return HeadersOf(object) + "\r\n";
}

std::string_view TakeLine(std::string_view& text) {
  const size_t end = std::min(text.find('\n'), text.size());
  std::string_view line = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  while (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  return line;
}

// The name of the field that a line begins; empty where it begins none.
std::string NameOfField(std::string_view line) {
  const size_t colon = line.find(':');
  if (colon == line.npos) return {};
  std::string_view name = line.substr(0, colon);
  while (!name.empty() && (name.back() == ' ' || name.back() == '\t')) name.remove_suffix(1);
  const bool isName =
      std::all_of(name.begin(), name.end(), [](char c) { return c > ' ' && c < 0x7F; });
  return isName ? LoweredAscii(name) : std::string();
}

}  // namespace

std::string MailHeaders(const ItemFields& fields, const ThreadFields& thread,
                        const std::function<bool(std::string_view name)>& isThere) {
  StartGMime();
  const Owned<GMimeMessage> message(g_mime_message_new(FALSE));
  GMimeObject* const object = GMIME_OBJECT(message.get());
  const auto addAll = [&](GMimeAddressType type, const char* name,
                          const std::vector<Address>& people) {
    if (isThere(name)) return;
    // A message writes its field anew whenever its own list changes.
    const Owned<InternetAddressList> list(internet_address_list_new());
    for (const Address& person : people) AddPerson(list.get(), person);
    if (internet_address_list_length(list.get()) == 0) return;
    internet_address_list_append(g_mime_message_get_addresses(message.get(), type), list.get());
  };
  addAll(GMIME_ADDRESS_TYPE_FROM, "from", {fields.from});
  if (fields.sender) addAll(GMIME_ADDRESS_TYPE_SENDER, "sender", {*fields.sender});
  addAll(GMIME_ADDRESS_TYPE_TO, "to", fields.to);
  addAll(GMIME_ADDRESS_TYPE_CC, "cc", fields.cc);
  addAll(GMIME_ADDRESS_TYPE_BCC, "bcc", fields.bcc);
  if (!isThere("subject")) SetField(object, "Subject", fields.subject);
  const std::optional<Moment>& date = fields.sent ? fields.sent : fields.received;
  if (date && !isThere("date")) SetField(object, "Date", DateText(*date, UnknownZone::Minus));
  const auto setIds = [&](const char* name, const std::string& value) {
    if (!isThere(LoweredAscii(name))) SetField(object, name, value);
  };
  const std::string id = IdOf(fields.messageId);
  if (!id.empty()) setIds("Message-ID", "<" + id + ">");
  setIds("In-Reply-To", thread.inReplyTo);
  setIds("References", thread.references);
  return HeadersOf(object);
}

std::string TextOf(const PartHeaders& headers) {
  // Nearly all texts have one of a few, which are made once.
  constexpr size_t kMostKept = 32;
  thread_local std::map<std::string, std::string> kept;
  const std::string key = KeyOfText(headers);
  if (key.empty()) return MadeText(headers);
  const auto found = kept.find(key);
  if (found != kept.end()) return found->second;
  std::string text = MadeText(headers);
  if (kept.size() < kMostKept) kept.emplace(key, text);
  return text;
}

OriginalHeaders KeptHeaders(std::string_view headers) {
  OriginalHeaders kept;
  bool isKept = false;
  bool hasField = false;
  while (!headers.empty()) {
    const std::string_view line = TakeLine(headers);
    if (line.empty() && hasField) break;
    const bool isContinued = !line.empty() && (line[0] == ' ' || line[0] == '\t');
    if (!isContinued) {
      std::string name = NameOfField(line);
      hasField = hasField || !name.empty();
      isKept = !name.empty() && !name.starts_with("content-") && name != "mime-version";
      if (isKept) kept.names.push_back(std::move(name));
    } else if (line.find_first_not_of(" \t") == line.npos) {
      // A line of blanks would end the headers for some readers.
      continue;
    }
    if (!isKept) continue;
    for (const char c : line) kept.text += c == '\0' || c == '\r' ? ' ' : c;
    kept.text += "\r\n";
  }
  return kept;
}

}  // namespace tarn::archive
