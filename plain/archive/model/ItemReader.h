// ItemReader.h - the items of one mail file, one after the other.
#ifndef TARN_ARCHIVE_ITEMREADER_H
#define TARN_ARCHIVE_ITEMREADER_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "archive/model/Item.h"
#include "archive/model/Trouble.h"

namespace tarn::archive {

// A folder as the walk enters it, before its items.
struct FolderStart {
  std::shared_ptr<const std::vector<std::string>> path;  // names from the root down
  std::optional<uint64_t> declaredItems;                 // as the folder itself claims
};

// Something of the file that cannot be read, and is no item: a page, a folder, a row.
struct PlaceTrouble {
  ItemPlace place;  // its id is empty where nothing can be named
  Trouble trouble;
};

using Entry = std::variant<std::unique_ptr<Item>, FolderStart, PlaceTrouble>;

struct ReaderOptions {
  bool recover = false;  // of stores: also items that no table names
};

// Memory does not grow with the file. One thread.
class ItemReader {
 public:
  ItemReader() = default;
  ItemReader(const ItemReader&) = delete;
  ItemReader& operator=(const ItemReader&) = delete;
  virtual ~ItemReader() = default;

  // The next entry, in an order that is the same for the same file; none at the end. The item
  // before it must be gone. Embedded items are not among them: their parents give them.
  virtual std::optional<Entry> next() = 0;

  // The item of an id that next() gives (no embedded one), without reading what is before it.
  // Missing for an id that the file does not have.
  virtual Outcome<std::unique_ptr<Item>> find(std::string_view id) = 0;

  // The same, for one who knows from next() in which folder the item is: that is its place then,
  // also where the folder can no longer be read, or the way to it is another from the item on.
  virtual Outcome<std::unique_ptr<Item>> findIn(
      const std::shared_ptr<const std::vector<std::string>>& folder, std::string_view id) {
    (void)folder;
    return find(id);
  }
};

}  // namespace tarn::archive

#endif
