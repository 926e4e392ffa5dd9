// ItemWalk.h - the items of a reader with those that are embedded in them.
#ifndef TARN_ARCHIVE_ITEMWALK_H
#define TARN_ARCHIVE_ITEMWALK_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "archive/model/ItemReader.h"

namespace tarn::archive {

enum class EmbeddedItems : uint8_t { Leave, Walk };

// The item lives until the next step.
using WalkStep = std::variant<Item*, FolderStart, PlaceTrouble>;

// Each item, then those embedded in it in the order of its attachments, down to kDeepestItem; then,
// as PlaceTroubles of the item's place, what its troubles() have become. The items themselves, not
// their headlines, tell whether they have attachments. Holds no more than the items from an
// outermost one down to the present.
class ItemWalk {
 public:
  ItemWalk(ItemReader& reader, EmbeddedItems embedded) : reader_(reader), embedded_(embedded) {}
  ItemWalk(const ItemWalk&) = delete;
  ItemWalk& operator=(const ItemWalk&) = delete;
  ~ItemWalk();

  // None at the end.
  std::optional<WalkStep> next();

 private:
  struct Level {
    std::unique_ptr<Item> item;
    size_t nextAttachment = 0;
    size_t troublesTold = 0;
    bool isDone = false;  // its attachments are through
  };

  std::optional<WalkStep> nextWithin(Level& level);
  PlaceTrouble embeddedTrouble(const Item& parent, size_t index, Trouble trouble) const;

  ItemReader& reader_;
  const EmbeddedItems embedded_;
  std::vector<Level> levels_;
};

// An item with those that it is embedded in, which outlive it.
class ItemChain {
 public:
  ItemChain() = default;
  ItemChain(ItemChain&&) = default;
  ItemChain& operator=(ItemChain&&) = default;
  ~ItemChain();

  // Within the last one; the first is within none.
  void add(std::unique_ptr<Item> item) { items_.push_back(std::move(item)); }
  // The innermost.
  Item& item() const { return *items_.back(); }

 private:
  std::vector<std::unique_ptr<Item>> items_;
};

// The item of an id, embedded ones too. Missing for an id that the source does not have.
Outcome<ItemChain> FindItem(ItemReader& reader, std::string_view id);

}  // namespace tarn::archive

#endif
