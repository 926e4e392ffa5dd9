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

// Where an item is among those of its reader.
struct ReadingPlace {
  uint64_t folder = 0;   // the reader's own number of it
  uint64_t row = 0;      // in the folder
  bool follows = false;  // right after the item that was given before it, without anything between
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

  // Of the item that next() gave last; none where reading cannot begin at it.
  virtual std::optional<ReadingPlace> place() const { return std::nullopt; }

  // next() goes on with the item of a place of the same file, and then with those that follow it,
  // without reading what is before them. `folder` is that of the item; nothing is known of others.
  virtual std::optional<Trouble> goTo(const ReadingPlace& place,
                                      std::shared_ptr<const std::vector<std::string>> folder);
};

inline std::optional<Trouble> ItemReader::goTo(const ReadingPlace&,
                                               std::shared_ptr<const std::vector<std::string>>) {
  return Trouble{TroubleKind::Unsupported, "cannot be read from the middle"};
}

}  // namespace tarn::archive

#endif
