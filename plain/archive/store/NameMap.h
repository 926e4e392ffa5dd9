// NameMap.h - the named properties of a store: which id has which name (MS-PST 2.4.7).
#ifndef TARN_ARCHIVE_STORE_NAMEMAP_H
#define TARN_ARCHIVE_STORE_NAMEMAP_H

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "archive/mapi/MapiMessage.h"
#include "archive/store/StoreSession.h"

namespace tarn::archive::store {

class NameMap {
 public:
  // Of a store without one, or whose names cannot be read, no id has a name.
  static std::shared_ptr<NameMap> Read(StoreSession& session);

  // Why names are missing that the store may have.
  const std::optional<Trouble>& trouble() const { return trouble_; }

  std::optional<uint16_t> idOf(const mapi::PropertyName& name);
  std::optional<mapi::PropertyName> nameOf(uint16_t id) const;

 private:
  struct Entry {
    uint32_t number = 0;  // or the place of the name among the names
    uint16_t set = 0;     // with bit 0 for a name
    uint16_t index = 0;   // from 0x8000 on
  };

  size_t entryCount() const { return entries_.size() / kEntrySize; }
  Entry entry(size_t position) const;
  std::optional<mapi::PropertyName> nameOfEntry(const Entry& entry) const;
  std::optional<uint16_t> search(const mapi::PropertyName& name) const;

  static constexpr size_t kEntrySize = 8;

  std::optional<Trouble> trouble_;
  // As in the store: names are looked at when they are asked for.
  std::string sets_;
  std::string entries_;
  std::string names_;
  std::map<uint16_t, size_t> positions_;  // of the entry of an id
  std::map<std::pair<std::string, std::u16string>, std::optional<uint16_t>> asked_;
};

}  // namespace tarn::archive::store

#endif
