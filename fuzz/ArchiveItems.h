// ArchiveItems.h - reads everything of what a reader of the archive gives, and holds it to what the
// readers promise: a run that breaks a promise aborts.
#ifndef TARN_FUZZ_ARCHIVEITEMS_H
#define TARN_FUZZ_ARCHIVEITEMS_H

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <variant>

#include "archive/model/ItemReader.h"
#include "host/Expect.h"

namespace tarn::fuzz {

// The bytes there are, which are not kept; none where a trouble ends them.
inline std::optional<uint64_t> LengthOf(archive::ByteSource& source) {
  std::array<char, 4096> buffer;
  uint64_t length = 0;
  for (;;) {
    const auto count = source.read(buffer);
    if (!count) return std::nullopt;
    if (*count == 0) return length;
    Expect(*count <= buffer.size(), "more bytes than there is room for");
    length += *count;
  }
}

// How much of an input is read.
struct ItemBudget {
  int items = 200;
  int attachments = 500;
};

void ReadItem(archive::Item& item, int depth, ItemBudget& budget);

inline void ReadAttachment(archive::Item& item, size_t index, int depth, ItemBudget& budget) {
  const archive::Attachment attachment = item.attachments()[index];
  if (const auto source = item.open(index)) {
    Expect(!attachment.trouble, "an attachment with a trouble opens");
    const auto length = LengthOf(**source);
    Expect(!length || !attachment.size || *length == *attachment.size,
           "an attachment of another size");
  }
  const auto embedded = item.embedded(index);
  if (!embedded) return;
  Expect(attachment.kind == archive::AttachmentKind::Item, "an item in an attachment that is none");
  Expect((*embedded)->place().parent == item.place().id, "an embedded item of another parent");
  Expect((*embedded)->place().id == item.place().id + "/" + std::to_string(index + 1),
         "an embedded item of another id");
  ReadItem(**embedded, depth + 1, budget);
}

inline void ReadItem(archive::Item& item, int depth, ItemBudget& budget) {
  if (--budget.items < 0) return;
  Expect(depth <= archive::kDeepestItem, "an item that is too deep");
  Expect(item.place().folder != nullptr, "an item without a folder");
  item.fields(archive::Detail::Headline);
  const archive::ItemFields fields = item.fields(archive::Detail::Envelope);
  item.bodies();
  item.originalHeaders();
  if (const auto original = item.original(); original && *original != nullptr) LengthOf(**original);
  const size_t count = item.attachments().size();
  Expect(fields.hasAttachments == (fields.attachmentCount != 0), "attachments of no count");
  Expect(!item.troubles().empty() || fields.attachmentCount == count,
         "another count of attachments");
  for (size_t i = 0; i < count && --budget.attachments >= 0; ++i) {
    ReadAttachment(item, i, depth, budget);
  }
  item.properties();
}

// All entries, and each item once more by its id.
inline void ReadAllItems(archive::ItemReader& reader) {
  ItemBudget budget;
  while (budget.items > 0 && budget.attachments > 0) {
    auto entry = reader.next();
    if (!entry) return;
    auto* const item = std::get_if<std::unique_ptr<archive::Item>>(&*entry);
    if (item == nullptr) continue;
    ReadItem(**item, 0, budget);
    const auto again = reader.find((*item)->place().id);
    Expect(again.ok() && (*again)->place().id == (*item)->place().id, "an item that is not found");
  }
}

}  // namespace tarn::fuzz

#endif
