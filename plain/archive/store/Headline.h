// Headline.h - what a row of a contents table tells of its message.
#ifndef TARN_ARCHIVE_STORE_HEADLINE_H
#define TARN_ARCHIVE_STORE_HEADLINE_H

#include <optional>
#include <string_view>

#include "archive/mapi/MapiItem.h"
#include "archive/model/Item.h"
#include "archive/store/TableRows.h"

namespace tarn::archive::store {

class HeadlineColumns {
 public:
  explicit HeadlineColumns(const TableShape& shape);

  // The headline, unless the row does not have all of it: a column that is missing, 8-bit text
  // that needs the message's code page, no class, no subject (an item may have a name in its place)
  // or no sender. The size in any case. Throws what the store throws.
  mapi::KnownFields read(const TableRows& table, std::string_view row) const;

 private:
  std::optional<ItemFields> readHeadline(const TableRows& table, std::string_view row) const;

  const TableColumn* messageClass_;
  const TableColumn* subject_;
  const TableColumn* from_;
  const TableColumn* sent_;
  const TableColumn* received_;
  const TableColumn* size_;
  const TableColumn* flags_;
};

}  // namespace tarn::archive::store

#endif
