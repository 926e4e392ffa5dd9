// MapiItem.h - an Item of a MapiMessage: which properties are the subject, the sender, a body ...
// (MS-OXOMSG, MS-OXCMSG, MS-OXCICAL and others name them).
#ifndef TARN_ARCHIVE_MAPIITEM_H
#define TARN_ARCHIVE_MAPIITEM_H

#include <functional>
#include <memory>
#include <optional>

#include "archive/mapi/MapiMessage.h"
#include "archive/model/Item.h"

namespace tarn::archive::mapi {

// What a table of the source tells without opening the message.
struct KnownFields {
  std::optional<ItemFields> headline;
  std::optional<uint64_t> size;  // of the item, where neither headline nor message tell it
};

// Opens the message when something is asked for that is not known.
using OpenMessage = std::function<Outcome<std::unique_ptr<MapiMessage>>()>;

// `depth` counts the items that this one is embedded in.
std::unique_ptr<Item> MakeMapiItem(ItemPlace place, OpenMessage open, KnownFields known = {},
                                   int depth = 0);

}  // namespace tarn::archive::mapi

#endif
