#include "archive/mapi/Addresses.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "archive/text/AsciiText.h"

namespace tarn::archive::mapi {
namespace {

constexpr size_t kOneOffHeader = 24;
constexpr std::string_view kOneOffProvider(
    "\x81\x2B\x1F\xA4\xBE\xA3\x10\x19\x9D\x6E\x00\xDD\x01\x0F\x54\x02", 16);
constexpr uint8_t kOneOffUnicode = 0x80;  // in the last byte of the header

// The next of the texts that end with NUL; what is not ended reaches to the end.
std::string TakeText(std::string_view& bytes, bool wide, std::optional<uint32_t> codePage) {
  const size_t width = wide ? 2 : 1;
  size_t end = 0;
  const auto isEnd = [&] { return bytes[end] == 0 && (!wide || bytes[end + 1] == 0); };
  while (bytes.size() - end >= width && !isEnd()) end += width;
  const std::string_view text = bytes.substr(0, end);
  bytes.remove_prefix(std::min(end + width, bytes.size()));
  return wide ? Utf8OfText16(text) : Utf8OfText8(text, codePage);
}

// The internet address in a one-off entry id; empty for other entry ids.
std::string OneOffAddress(std::string_view entryId, std::optional<uint32_t> codePage) {
  if (entryId.size() < kOneOffHeader || entryId.substr(4, 16) != kOneOffProvider) return {};
  const bool wide = (static_cast<uint8_t>(entryId[kOneOffHeader - 1]) & kOneOffUnicode) != 0;
  std::string_view texts = entryId.substr(kOneOffHeader);
  TakeText(texts, wide, codePage);
  const std::string type = TakeText(texts, wide, codePage);
  std::string address = TakeText(texts, wide, codePage);
  return EqualsNoCase(type, "SMTP") ? address : std::string();
}

}  // namespace

bool IsInternetAddress(std::string_view address) {
  const size_t at = address.find('@');
  return at != address.npos && at != 0 && address.front() != '/';
}

std::string AddressInName(std::string_view name) {
  const bool isQuoted = name.size() > 2 && name.front() == '\'' && name.back() == '\'';
  if (isQuoted) name = name.substr(1, name.size() - 2);
  const bool isOne = IsInternetAddress(name) && name.find_first_of(" \t,;<>\"") == name.npos;
  return isOne ? std::string(name) : std::string();
}

Address ReadAddress(PropertyValues& values, const AddressTags& tags) {
  Address person;
  person.name = values.firstText({tags.name});
  person.address = values.firstText({tags.smtp});
  if (IsInternetAddress(person.address)) return person;
  std::string own = values.firstText({tags.address});
  const std::string type = values.firstText({tags.type});
  const bool isSmtp = EqualsNoCase(type, "SMTP") || (type.empty() && IsInternetAddress(own));
  if (!isSmtp || own.empty()) {
    const std::optional<std::string> entryId = values.binary(tags.entryId);
    const std::string found = entryId ? OneOffAddress(*entryId, values.codePage()) : std::string();
    if (!found.empty()) own = found;
  }
  if (!own.empty()) person.address = std::move(own);
  if (person.address.empty()) person.address = AddressInName(person.name);
  return person;
}

bool IsSamePerson(const Address& left, const Address& right) {
  if (!left.address.empty() && !right.address.empty()) {
    return EqualsNoCase(left.address, right.address);
  }
  return left.name == right.name;
}

}  // namespace tarn::archive::mapi
