// ItemKeys.h - what lines of lists and of searches tell alike of an item.
#ifndef TARN_ARCHIVE_ITEMKEYS_H
#define TARN_ARCHIVE_ITEMKEYS_H

#include <string>

#include "archive/common/JsonWriter.h"
#include "archive/model/Item.h"

namespace tarn::archive {

// What a line of JSON tells of an item, into an object that is open.
void PutListKeys(Item& item, const std::string& source, JsonWriter& json);

// When an item was sent, else received, in local time; empty where neither is known.
std::string DateText(const ItemFields& fields);

// Who an item is from: the name, else the address.
const std::string& SenderText(const Address& from);

}  // namespace tarn::archive

#endif
