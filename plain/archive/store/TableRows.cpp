#include "archive/store/TableRows.h"

#include <algorithm>
#include <set>

#include "archive/mapi/Tags.h"
#include "archive/store/StoreTrouble.h"
#include "pststore/Disk.h"
#include "pststore/Errors.h"

namespace tarn::archive::store {
namespace {

using pststore::disk::load;

// The description (pststore/BasicTable.h).
constexpr size_t kColumnCount = 1;
constexpr size_t kBitmapBegin = 6;
constexpr size_t kRowEnd = 8;
constexpr size_t kRows = 14;
constexpr size_t kColumns = 22;
constexpr size_t kColumnSize = 8;

constexpr size_t kRowIdSize = 4;

std::span<unsigned char> AsUnsigned(std::string& bytes) {
  return {reinterpret_cast<unsigned char*>(bytes.data()), bytes.size()};
}

}  // namespace

TableShape::TableShape(pststore::bytes_view description) {
  if (description.size() < kColumns || description[0] != pststore::heap_sig_tc) {
    throw pststore::database_corrupt("table without a description");
  }
  bitmap_ = load<uint16_t>(description, kBitmapBegin);
  rowSize_ = load<uint16_t>(description, kRowEnd);
  for (size_t i = 0; i < description[kColumnCount]; ++i) {
    const size_t at = kColumns + i * kColumnSize;
    columns_.push_back({load<uint16_t>(description, at + 2), load<uint16_t>(description, at),
                        load<uint16_t>(description, at + 4), load<uint8_t>(description, at + 6),
                        load<uint8_t>(description, at + 7)});
  }
  std::stable_sort(columns_.begin(), columns_.end(),
                   [](const TableColumn& a, const TableColumn& b) { return a.id < b.id; });
}

const TableColumn* TableShape::column(uint16_t id) const {
  const auto found = std::lower_bound(columns_.begin(), columns_.end(), id,
                                      [](const TableColumn& a, uint16_t b) { return a.id < b; });
  return found != columns_.end() && found->id == id ? &*found : nullptr;
}

bool TableShape::has(std::string_view row, const TableColumn& column) const {
  const size_t byte = bitmap_ + column.bit / 8U;
  if (byte >= row.size()) throw pststore::database_corrupt("bit outside of its row");
  return (static_cast<unsigned char>(row[byte]) & 0x80U >> column.bit % 8U) != 0;
}

std::optional<StoredValue> TableShape::value(std::string_view row,
                                             const TableColumn& column) const {
  if (!has(row, column)) return std::nullopt;
  const size_t number = mapi::WidthOfNumber(column.type);
  const size_t needed = number != 0 ? number : sizeof(uint32_t);
  if (column.width < needed || size_t{column.offset} + needed > row.size()) {
    throw pststore::database_corrupt("cell outside of its row");
  }
  return MakeStoredValue(column.type, row.substr(column.offset, needed), number);
}

TableRows::TableRows(const pststore::node& data, size_t blockSize)
    : heap_(pststore::open_heap(data, pststore::heap_sig_tc)), blockSize_(blockSize) {
  const pststore::byte_vector description = heap_->read(heap_->get_root_id());
  shape_ = std::make_shared<TableShape>(description);
  layOut(load<uint32_t>(description, kRows));
}

// No row crosses the end of a block.
void TableRows::layOut(uint32_t rows) {
  if (rows == 0) return;
  const size_t rowSize = shape_->rowSize();
  if (rowSize < kRowIdSize || rowSize > blockSize_) {
    throw pststore::database_corrupt("table of rows without a size");
  }
  if (pststore::is_heap_id(rows)) {
    loaded_.resize(heap_->size(rows));
    heap_->read(AsUnsigned(loaded_), rows, 0);
    rowCount_ = loaded_.size() / rowSize;
    loadedBlock_ = 0;
    return;
  }
  rowNode_ = heap_->get_node().lookup(rows);
  const uint64_t size = rowNode_->size();
  rowsPerBlock_ = blockSize_ / rowSize;
  rowCount_ = size / blockSize_ * rowsPerBlock_ + size % blockSize_ / rowSize;
}

std::string_view TableRows::row(uint64_t number) {
  const uint64_t block = rowNode_ ? number / rowsPerBlock_ : 0;
  const uint64_t inBlock = rowNode_ ? number % rowsPerBlock_ : number;
  if (block != loadedBlock_) {
    loadedBlock_ = std::nullopt;
    loaded_.resize(blockSize_);
    loaded_.resize(rowNode_->pass(AsUnsigned(loaded_), block * blockSize_));
    loadedBlock_ = block;
  }
  const size_t size = shape_->rowSize();
  if ((inBlock + 1) * size > loaded_.size())
    throw pststore::database_corrupt("row beyond its block");
  return std::string_view(loaded_).substr(inBlock * size, size);
}

uint64_t TableRows::nextBlock(uint64_t number) const {
  if (!rowNode_) return rowCount_;
  return std::min(rowCount_, (number / rowsPerBlock_ + 1) * rowsPerBlock_);
}

uint32_t TableRows::IdOf(std::string_view row) {
  const auto* const bytes = reinterpret_cast<const unsigned char*>(row.data());
  return load<uint32_t>({bytes, row.size()}, 0);
}

ListedRows ListRows(TableRows& table) {
  ListedRows rows;
  std::set<uint32_t> met;
  for (uint64_t number = 0; number < table.rowCount(); ++number) {
    const auto id = Guarded("", [&] { return TableRows::IdOf(table.row(number)); });
    if (!id) {
      rows.isWhole = false;
      number = table.nextBlock(number) - 1;
    } else if (met.insert(*id).second) {
      rows.all.push_back({number, *id});
    }
  }
  return rows;
}

std::vector<mapi::PropertyTag> RowProperties::tags() {
  std::vector<mapi::PropertyTag> tags;
  for (const TableColumn& column : shape_->columns()) {
    if (typeOf(column.id)) tags.push_back({column.id, column.type});
  }
  return tags;
}

// A cell that does not fit its row is none.
std::optional<StoredValue> RowProperties::find(uint16_t id) const {
  const TableColumn* const column = shape_->column(id);
  if (column == nullptr) return std::nullopt;
  return shape_->value(row_, *column);
}

}  // namespace tarn::archive::store
