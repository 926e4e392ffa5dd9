// ShownItem.h - an item as a person reads it on a terminal.
#ifndef TARN_ARCHIVE_SHOWNITEM_H
#define TARN_ARCHIVE_SHOWNITEM_H

#include <cstddef>
#include <string>
#include <vector>

#include "archive/model/Item.h"

namespace tarn::archive {

struct ShownItem {
  std::string text;  // lines ended by LF; nothing in it is more than text to a terminal
  std::vector<Trouble> troubles;  // of the bodies
};

// Header, details, the best text, and the list of attachments. `command` is what shows an embedded
// item when its id comes after it.
ShownItem ShowItem(Item& item, size_t width, const std::string& command);

}  // namespace tarn::archive

#endif
