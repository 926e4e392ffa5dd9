#include "archive/msg/MsgNames.h"

#include <algorithm>
#include <utility>

#include "Common/LittleEndian.h"
#include "archive/mapi/RawBytes.h"
#include "archive/msg/MsgStreamNames.h"

namespace tarn::archive::msg {
namespace {

using mapi::PropertyName;
using Set = std::array<uint8_t, 16>;

constexpr size_t kEntrySize = 8;
constexpr size_t kLargestStream = size_t{1} << 24;
constexpr uint16_t kFirstNamedId = 0x8000;

// Sets that have a number in place of a place among the sets (MS-OXMSG 2.2.3.1.2).
constexpr uint16_t kMapiSet = 1;
constexpr uint16_t kPublicStringsSet = 2;
constexpr uint16_t kFirstListedSet = 3;
constexpr Set kMapi = {0x28, 0x03, 0x02, 0x00, 0x00, 0x00, 0x00, 0x00,
                       0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46};
constexpr Set kPublicStrings = {0x29, 0x03, 0x02, 0x00, 0x00, 0x00, 0x00, 0x00,
                                0xC0, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x46};

std::optional<Set> SetOfIndex(uint16_t index, std::string_view sets) {
  if (index == kMapiSet) return kMapi;
  if (index == kPublicStringsSet) return kPublicStrings;
  Set set{};
  const size_t at = size_t{16} * (index - kFirstListedSet);
  if (index < kFirstListedSet || at + set.size() > sets.size()) return std::nullopt;
  std::copy_n(sets.begin() + static_cast<ptrdiff_t>(at), set.size(), set.begin());
  return set;
}

std::optional<std::u16string> NameAt(size_t offset, std::string_view names) {
  if (offset + 4 > names.size()) return std::nullopt;
  const size_t size = LoadLittleEndian<uint32_t>(mapi::RawBytes(names) + offset);
  if (size > names.size() - offset - 4) return std::nullopt;
  std::u16string name(size / 2, u'\0');
  for (size_t at = 0; at < name.size(); ++at) {
    name[at] = LoadLittleEndian<uint16_t>(mapi::RawBytes(names) + offset + 4 + 2 * at);
  }
  return name;
}

}  // namespace

MsgNames::MsgNames(StorageFile& file) {
  const std::optional<EntryNumber> storage = file.find(kRootEntry, kNamesName);
  if (!storage) return;
  const Streams streams = {readStream(file, *storage, "__substg1.0_00020102"),
                           readStream(file, *storage, "__substg1.0_00030102"),
                           readStream(file, *storage, "__substg1.0_00040102")};
  size_t unread = 0;
  for (size_t at = 0; at + kEntrySize <= streams.entries.size(); at += kEntrySize) {
    if (!addEntry(streams, at)) ++unread;
  }
  if (unread != 0) {
    troubles_.push_back(
        {TroubleKind::Damaged, std::to_string(unread) + " names of properties cannot be read"});
  }
}

std::string MsgNames::readStream(StorageFile& file, EntryNumber storage, std::string_view name) {
  const std::optional<EntryNumber> stream = file.find(storage, name);
  if (!stream) return {};
  Outcome<std::string> bytes = file.read(*stream, kLargestStream);
  if (bytes) return std::move(*bytes);
  troubles_.push_back(
      {bytes.trouble().kind, "the names of properties cannot be read: " + bytes.trouble().reason});
  return {};
}

bool MsgNames::addEntry(const Streams& streams, size_t at) {
  const unsigned char* const entry = mapi::RawBytes(streams.entries) + at;
  const uint32_t numberOrOffset = LoadLittleEndian<uint32_t>(entry);
  const uint16_t setAndKind = LoadLittleEndian<uint16_t>(entry + 4);
  const uint16_t index = LoadLittleEndian<uint16_t>(entry + 6);
  // An entry of zeros is what is left of a name that is gone.
  if (numberOrOffset == 0 && setAndKind == 0) return true;
  const std::optional<Set> set = SetOfIndex(setAndKind >> 1, streams.sets);
  if (!set || index >= 0x10000 - kFirstNamedId) return false;
  PropertyName name{*set, 0, {}};
  if ((setAndKind & 1) == 0) {
    name.number = numberOrOffset;
  } else {
    std::optional<std::u16string> text = NameAt(numberOrOffset, streams.names);
    if (!text) return false;
    name.name = std::move(*text);
  }
  names_.emplace(static_cast<uint16_t>(kFirstNamedId + index), std::move(name));
  return true;
}

std::optional<uint16_t> MsgNames::idOf(const PropertyName& name) const {
  for (const auto& [id, known] : names_) {
    if (known == name) return id;
  }
  return std::nullopt;
}

std::optional<PropertyName> MsgNames::nameOf(uint16_t id) const {
  const auto at = names_.find(id);
  if (at == names_.end()) return std::nullopt;
  return at->second;
}

}  // namespace tarn::archive::msg
