#include "archive/store/NameMap.h"

#include <algorithm>
#include <cstring>

#include "archive/store/NodeScan.h"
#include "archive/store/PropertyContext.h"
#include "archive/store/StoreTrouble.h"
#include "pststore/Disk.h"

namespace tarn::archive::store {
namespace {

using mapi::PropertyName;

constexpr uint16_t kSets = 0x0002;
constexpr uint16_t kEntries = 0x0003;
constexpr uint16_t kNames = 0x0004;

// There are no more ids than these entries name.
constexpr size_t kMostEntryBytes = 8 * 0x8000;
constexpr size_t kMostSetBytes = 16 * 0x8000;
constexpr size_t kMostNameBytes = size_t{4} << 20;

constexpr const char* kReason = "the names of named properties cannot be read";

constexpr uint16_t kFirstId = 0x8000;
constexpr uint16_t kNoSet = 0;
constexpr uint16_t kMapiSet = 1;
constexpr uint16_t kPublicStringsSet = 2;
constexpr uint16_t kFirstListedSet = 3;

// PS_MAPI and PS_PUBLIC_STRINGS (MS-OXPROPS 1.3.2).
constexpr std::array<uint8_t, 16> kMapi = {0x28, 0x03, 0x02, 0x00, 0, 0, 0, 0,
                                           0xC0, 0,    0,    0,    0, 0, 0, 0x46};
constexpr std::array<uint8_t, 16> kPublicStrings = {0x29, 0x03, 0x02, 0x00, 0, 0, 0, 0,
                                                    0xC0, 0,    0,    0,    0, 0, 0, 0x46};

template <typename T>
T Load(std::string_view bytes, size_t at) {
  const auto* const begin = reinterpret_cast<const unsigned char*>(bytes.data());
  return pststore::disk::load<T>({begin, bytes.size()}, at);
}

}  // namespace

std::shared_ptr<NameMap> NameMap::Read(StoreSession& session) {
  auto map = std::make_shared<NameMap>();
  const auto read = Guarded(kReason, [&] {
    PropertyContext bag(session.context()->lookup_node(kNameMapNode));
    const auto take = [&](uint16_t id, size_t limit) {
      Outcome<std::string> bytes = bag.bytes(id, limit);
      if (bytes) return std::move(*bytes);
      if (bytes.trouble().kind != TroubleKind::Missing) {
        map->trouble_ = Trouble{bytes.trouble().kind, kReason + (": " + bytes.trouble().reason)};
      }
      return std::string();
    };
    map->sets_ = take(kSets, kMostSetBytes);
    map->entries_ = take(kEntries, kMostEntryBytes);
    map->names_ = take(kNames, kMostNameBytes);
    return true;
  });
  if (!read && read.trouble().kind != TroubleKind::Missing) map->trouble_ = read.trouble();
  for (size_t i = 0; i < map->entryCount(); ++i) map->positions_.emplace(map->entry(i).index, i);
  return map;
}

NameMap::Entry NameMap::entry(size_t position) const {
  const size_t at = position * kEntrySize;
  return {Load<uint32_t>(entries_, at), Load<uint16_t>(entries_, at + 4),
          Load<uint16_t>(entries_, at + 6)};
}

std::optional<PropertyName> NameMap::nameOfEntry(const Entry& entry) const {
  PropertyName name;
  const auto set = static_cast<uint16_t>(entry.set >> 1);
  if (set == kMapiSet) {
    name.set = kMapi;
  } else if (set == kPublicStringsSet) {
    name.set = kPublicStrings;
  } else if (set != kNoSet) {
    const size_t at = size_t{16} * (set - kFirstListedSet);
    if (at + 16 > sets_.size()) return std::nullopt;
    std::memcpy(name.set.data(), sets_.data() + at, 16);
  }
  const bool isNumber = (entry.set & 1) == 0;
  if (isNumber) {
    name.number = entry.number;
    return name;
  }
  const size_t at = entry.number;
  if (at > names_.size() || names_.size() - at < 4) return std::nullopt;
  const size_t size = Load<uint32_t>(names_, at);
  if (size > names_.size() - at - 4) return std::nullopt;
  for (size_t i = 0; i + 2 <= size; i += 2) {
    name.name += static_cast<char16_t>(Load<uint16_t>(names_, at + 4 + i));
  }
  return name;
}

std::optional<uint16_t> NameMap::search(const PropertyName& name) const {
  for (size_t i = 0; i < entryCount(); ++i) {
    const Entry found = entry(i);
    const bool isName = (found.set & 1) != 0;
    if (isName == name.name.empty() || (!isName && found.number != name.number)) continue;
    if (found.index < kFirstId && nameOfEntry(found) == name) {
      return static_cast<uint16_t>(kFirstId + found.index);
    }
  }
  return std::nullopt;
}

std::optional<uint16_t> NameMap::idOf(const PropertyName& name) {
  std::string key(name.set.begin(), name.set.end());
  key += name.name.empty() ? std::to_string(name.number) : std::string();
  const auto [asked, isNew] = asked_.try_emplace({std::move(key), name.name});
  if (isNew) asked->second = search(name);
  return asked->second;
}

std::optional<PropertyName> NameMap::nameOf(uint16_t id) const {
  if (id < kFirstId) return std::nullopt;
  const auto found = positions_.find(static_cast<uint16_t>(id - kFirstId));
  if (found == positions_.end()) return std::nullopt;
  return nameOfEntry(entry(found->second));
}

}  // namespace tarn::archive::store
