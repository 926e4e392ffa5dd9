#include "archive/store/FolderRows.h"

#include <string>
#include <utility>

#include "archive/store/StoreTrouble.h"

namespace tarn::archive::store {
namespace {

std::string RowsText(uint64_t first, uint64_t end) {
  const std::string from = std::to_string(first + 1);
  return end == first + 1 ? "row " + from : "rows " + from + " to " + std::to_string(end);
}

}  // namespace

FolderRows::FolderRows(StoreSession& session, const FolderVisit& folder, IdSet& met,
                       std::vector<PlaceTrouble>& troubles)
    : session_(session), folder_(folder), met_(met), troubles_(troubles) {
  open();
  rows_ = table_->rows.rowCount();
}

void FolderRows::open() {
  const uint32_t nid = NodeBeside(folder_.nid, kContentsTableNode);
  table_.emplace(TableRows(session_.context()->lookup_node(nid), session_.blockSize()));
}

void FolderRows::report(uint64_t first, uint64_t end, Trouble trouble) {
  trouble.reason = RowsText(first, end) + " of the folder's list: " + trouble.reason;
  troubles_.push_back({{IdText(folder_.nid), std::nullopt, folder_.path}, std::move(trouble)});
}

std::optional<ListedMessage> FolderRows::next() {
  // Rows in a row that name no message are one trouble.
  const uint64_t first = number_;
  const bool hasGivenBefore = std::exchange(hasGiven_, false);
  for (; number_ < rows_; ++number_) {
    const auto row = Guarded("it cannot be read", [&] {
      if (!table_) open();
      return table_->rows.row(number_);
    });
    if (!row) {
      if (number_ != first) break;
      number_ = table_ ? table_->rows.nextBlock(number_) : rows_;
      report(first, number_, row.trouble());
      return std::nullopt;
    }
    const uint32_t nid = TableRows::IdOf(*row);
    if (IsNodeOf(nid, kMessageNode) && met_.insert(nid)) {
      if (number_ != first) {
        report(first, number_,
               {TroubleKind::Damaged, "it names no message, or one that was listed before"});
      }
      follows_ = hasGivenBefore && number_ == first;
      hasGiven_ = true;
      ++number_;
      // A cell that cannot be read is no trouble: the message has it.
      auto known = Guarded("", [&] { return table_->columns.read(table_->rows, *row); });
      return ListedMessage{nid, known ? std::move(*known) : mapi::KnownFields()};
    }
  }
  if (number_ != first) {
    report(first, number_,
           {TroubleKind::Damaged, "it names no message, or one that was listed before"});
  }
  return std::nullopt;
}

}  // namespace tarn::archive::store
