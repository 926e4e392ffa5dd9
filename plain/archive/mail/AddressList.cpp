#include "archive/mail/AddressList.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

#include "archive/mail/EncodedWords.h"
#include "archive/mail/GObjectPtr.h"
#include "archive/mail/HeaderFields.h"
#include "archive/mail/ParseMail.h"
#include "archive/text/AsciiText.h"

namespace tarn::archive::mail {
namespace {

// An address of a list, while it is read.
struct ListedAddress {
  Address address;
  bool isGroup = false;
};

// "Miller, Ann <ann@example.com>" without quotes comes as two: the name is one.
std::vector<Address> WithNamesJoined(std::vector<ListedAddress> list) {
  std::vector<Address> joined;
  std::string name;
  size_t pieces = 0;  // at the end of `joined`, which may begin a name
  for (ListedAddress& entry : list) {
    Address& address = entry.address;
    if (!entry.isGroup && address.address.empty()) {
      name += address.name + ", ";
      ++pieces;
    } else {
      if (!entry.isGroup && !address.name.empty() && pieces != 0) {
        joined.resize(joined.size() - pieces);
        address.name.insert(0, name);
      }
      name.clear();
      pieces = 0;
    }
    joined.push_back(std::move(address));
  }
  return joined;
}

void AddAddresses(InternetAddressList* list, std::vector<Address>& addresses);

// Groups within groups are no deeper than the parser itself goes, of which StructureWatch takes
// care.
void AddListed(InternetAddressList* list, std::vector<ListedAddress>& listed) {
  const int count = internet_address_list_length(list);
  for (int i = 0; i < count; ++i) {
    InternetAddress* entry = internet_address_list_get_address(list, i);
    Address address{TextOf(internet_address_get_name(entry)), ""};
    if (INTERNET_ADDRESS_IS_GROUP(entry)) {
      InternetAddressList* members =
          internet_address_group_get_members(INTERNET_ADDRESS_GROUP(entry));
      std::vector<Address> all;
      AddAddresses(members, all);
      if (all.empty() && !address.name.empty()) all.push_back(std::move(address));
      for (Address& member : all) listed.push_back({std::move(member), true});
      continue;
    }
    address.address = TextOf(internet_address_mailbox_get_addr(INTERNET_ADDRESS_MAILBOX(entry)));
    // "From: Ann" has a name and no address.
    const bool isName = address.name.empty() && address.address.find('@') == std::string::npos;
    if (isName) address.name = std::exchange(address.address, "");
    if (address.name.empty() && address.address.empty()) continue;
    listed.push_back({std::move(address)});
  }
}

void AddAddresses(InternetAddressList* list, std::vector<Address>& addresses) {
  std::vector<ListedAddress> listed;
  AddListed(list, listed);
  // cppcheck-suppress accessMoved ; a range is evaluated once
  for (Address& address : WithNamesJoined(std::move(listed)))
    addresses.push_back(std::move(address));
}

// Cuts a list at its commas and semicolons, outside of quotes, comments and angle brackets.
class ListCutter {
 public:
  explicit ListCutter(std::string_view list) : list_(list) {}

  // Without empty pieces. None of a list with groups, or one where something is not closed.
  std::vector<std::string_view> pieces() {
    for (at_ = 0; at_ < list_.size(); ++at_) {
      if (!take(list_[at_])) return {};
    }
    if (isQuoted_ || comments_ != 0 || inAngles_) return {};
    endPiece();
    return std::move(pieces_);
  }

 private:
  // False for the start of a group.
  bool take(char c) {
    if (c == '\\' && (isQuoted_ || comments_ != 0)) {
      ++at_;
    } else if (isQuoted_) {
      isQuoted_ = c != '"';
    } else if (c == '(') {
      ++comments_;
    } else if (comments_ != 0) {
      if (c == ')') --comments_;
    } else if (c == '"') {
      isQuoted_ = true;
    } else if (inAngles_) {
      inAngles_ = c != '>';
    } else if (c == '<') {
      inAngles_ = true;
    } else if (c == ',' || c == ';') {
      endPiece();
    }
    return c != ':' || isQuoted_ || comments_ != 0 || inAngles_;
  }

  void endPiece() {
    const size_t end = std::min(at_, list_.size());
    const std::string_view piece = Trimmed(list_.substr(start_, end - start_));
    if (!piece.empty()) pieces_.push_back(piece);
    start_ = end + 1;
  }

  std::string_view list_;
  std::vector<std::string_view> pieces_;
  size_t at_ = 0;
  size_t start_ = 0;
  size_t comments_ = 0;
  bool isQuoted_ = false;
  bool inAngles_ = false;
};

std::string_view WithoutQuotes(std::string_view name) {
  const bool isQuoted = name.size() > 1 && name.starts_with('"') && name.ends_with('"');
  return isQuoted ? name.substr(1, name.size() - 2) : name;
}

// What GMime takes for no address: "Ann <ann..miller@a.example>", "Ann <mailto:ann@a.example>".
Address AddressOfText(std::string_view text) {
  constexpr std::string_view kMailTo = "mailto:";
  const size_t open = text.rfind('<');
  if (!text.ends_with('>') || open == std::string_view::npos) {
    const bool isAddress = text.find('@') != std::string_view::npos &&
                           text.find_first_of(" \t\"()<>") == std::string_view::npos;
    std::string decoded = DecodedText(std::string(text));
    return isAddress ? Address{"", std::move(decoded)} : Address{std::move(decoded), ""};
  }
  std::string_view address = Trimmed(text.substr(open + 1, text.size() - open - 2));
  if (StartsWithNoCase(address, kMailTo)) address.remove_prefix(kMailTo.size());
  const std::string_view name = WithoutQuotes(Trimmed(text.substr(0, open)));
  return {DecodedText(std::string(name)), TextOf(std::string(address).c_str())};
}

GObjectPtr<InternetAddressList> Parsed(std::string_view list) {
  return GObjectPtr<InternetAddressList>(
      internet_address_list_parse(ReadingOptions(), std::string(list).c_str()));
}

// GMime passes over what is no address, and takes lists with semicolons to end at the first: then
// each piece is taken alone.
std::vector<ListedAddress> ListOf(std::string_view value) {
  std::vector<ListedAddress> listed;
  const auto parsed = Parsed(value);
  const auto count = parsed == nullptr
                         ? size_t{0}
                         : static_cast<size_t>(internet_address_list_length(parsed.get()));
  const std::vector<std::string_view> pieces = ListCutter(value).pieces();
  if (pieces.size() <= count) {
    if (parsed != nullptr) AddListed(parsed.get(), listed);
    return listed;
  }
  for (const std::string_view piece : pieces) {
    const auto alone = Parsed(piece);
    if (alone != nullptr && internet_address_list_length(alone.get()) != 0) {
      AddListed(alone.get(), listed);
      continue;
    }
    Address address = AddressOfText(piece);
    if (!address.name.empty() || !address.address.empty()) listed.push_back({std::move(address)});
  }
  return listed;
}

// With a blank for each line end and the blank after it.
std::string Unfolded(std::string_view value) {
  std::string line;
  bool isAfterEnd = false;
  for (const char c : value) {
    const bool isEnd = c == '\r' || c == '\n';
    if (!isEnd) line += isAfterEnd && c == '\t' ? ' ' : c;
    isAfterEnd = isEnd;
  }
  return line;
}

}  // namespace

std::vector<Address> AddressesOf(GMimeObject* object, const char* name) {
  std::vector<Address> addresses;
  GMimeHeaderList* headers = g_mime_object_get_header_list(object);
  const int count = g_mime_header_list_get_count(headers);
  for (int i = 0; i < count; ++i) {
    GMimeHeader* header = g_mime_header_list_get_header_at(headers, i);
    if (!EqualsNoCase(g_mime_header_get_name(header), name)) continue;
    if (g_mime_header_get_raw_value(header) == nullptr) continue;
    const std::string value = WithWordsEncoded(Unfolded(g_mime_header_get_raw_value(header)));
    std::vector<Address> listed = WithNamesJoined(ListOf(value));
    if (listed.empty()) {
      std::string text = DecodedText(value);
      if (!text.empty()) listed.push_back({std::move(text), ""});
    }
    std::move(listed.begin(), listed.end(), std::back_inserter(addresses));
  }
  return addresses;
}

}  // namespace tarn::archive::mail
