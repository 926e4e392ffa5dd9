// FolderRows.h - the items that a folder's contents table names.
#ifndef TARN_ARCHIVE_STORE_FOLDERROWS_H
#define TARN_ARCHIVE_STORE_FOLDERROWS_H

#include <cstdint>
#include <optional>
#include <vector>

#include "archive/mapi/MapiItem.h"
#include "archive/model/ItemReader.h"
#include "archive/store/FolderTree.h"
#include "archive/store/Headline.h"
#include "archive/store/IdSet.h"
#include "archive/store/StoreSession.h"
#include "archive/store/TableRows.h"

namespace tarn::archive::store {

struct ListedMessage {
  uint32_t nid = 0;
  mapi::KnownFields known;
};

class FolderRows {
 public:
  // Throws what the store throws for a table that cannot be read. `met` has the messages that were
  // given before; troubles are added to the list.
  FolderRows(StoreSession& session, const FolderVisit& folder, IdSet& met,
             std::vector<PlaceTrouble>& troubles);

  bool isEmpty() const { return rows_ == 0; }
  // The next message that was not given before. None when a trouble was added, and none at the end.
  std::optional<ListedMessage> next();
  bool isAtEnd() const { return number_ >= rows_; }

  // The row of the message that was given last, and whether it is the one after that of the message
  // before.
  uint64_t row() const { return number_ - 1; }
  bool follows() const { return follows_; }
  void goTo(uint64_t row) { number_ = row; }

  // Before the session's context goes: what refers to it goes too, and is read again at the next
  // need.
  void drop() { table_ = std::nullopt; }

 private:
  struct OpenTable {
    explicit OpenTable(TableRows&& opened) : rows(std::move(opened)), columns(*rows.shape()) {}
    TableRows rows;
    HeadlineColumns columns;
  };

  void open();
  void report(uint64_t first, uint64_t end, Trouble trouble);

  StoreSession& session_;
  FolderVisit folder_;
  IdSet& met_;
  std::vector<PlaceTrouble>& troubles_;
  std::optional<OpenTable> table_;
  uint64_t rows_ = 0;
  uint64_t number_ = 0;
  bool hasGiven_ = false;
  bool follows_ = false;
};

}  // namespace tarn::archive::store

#endif
