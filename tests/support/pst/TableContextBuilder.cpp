#include "support/pst/TableContextBuilder.h"

#include <algorithm>
#include <stdexcept>

#include "support/pst/PropertyContextBuilder.h"
#include "support/pst/PstBytes.h"

namespace tarn::test {
namespace {

// 0: 4 and 8 bytes, 1: 2 bytes, 2: all others.
size_t GroupOf(const TableColumn& column) {
  if (column.width == 4 || column.width == 8) return 0;
  return column.width == 2 ? 1 : 2;
}

uint32_t TagOf(const TableColumn& column) { return (uint32_t{column.id} << 16) | column.type; }

}  // namespace

TableContextBuilder::TableContextBuilder(PstLayout layout, const TableShape& shape)
    : layout_(layout), shape_(shape), heap_(layout, kTableContext) {}

TableContextBuilder& TableContextBuilder::column(uint16_t id, uint16_t type, uint8_t width) {
  if (isLaidOut_) throw std::logic_error("column after a row");
  columns_.push_back({id, type, width == 0 ? CellWidth(type) : width, 0, 0});
  return *this;
}

void TableContextBuilder::layOut() {
  if (isLaidOut_) return;
  isLaidOut_ = true;
  uint16_t end = 4;
  uint8_t bits = 0;
  if (shape_.hasRowColumns) {
    columns_.insert(columns_.begin(),
                    {{kPropRowId, kTypeInt32, 4, 0, 0}, {kPropRowVersion, kTypeInt32, 4, 4, 0}});
    end = 0;
  }
  std::stable_sort(columns_.begin(), columns_.end(),
                   [](const auto& a, const auto& b) { return GroupOf(a) < GroupOf(b); });
  for (size_t group = 0; group < 3; ++group) {
    for (TableColumn& column : columns_) {
      if (GroupOf(column) != group) continue;
      column.offset = end;
      column.bit = bits++;
      end = static_cast<uint16_t>(end + column.width);
    }
    rgib_[group] = end;
  }
  rgib_[3] = static_cast<uint16_t>(end + (columns_.size() + 7) / 8);
  infoHid_ = heap_.reserve(22 + 8 * columns_.size());
  heap_.setRoot(infoHid_);
}

const std::vector<TableColumn>& TableContextBuilder::columns() {
  layOut();
  return columns_;
}

size_t TableContextBuilder::rowSize() {
  layOut();
  return rgib_[3];
}

const TableColumn& TableContextBuilder::find(uint16_t id) const {
  const auto found = std::find_if(columns_.begin(), columns_.end(),
                                  [id](const TableColumn& column) { return column.id == id; });
  if (found == columns_.end()) throw std::logic_error("no such column");
  return *found;
}

TableContextBuilder::Row TableContextBuilder::row(uint32_t rowId) {
  const size_t size = rowSize();
  const size_t start = matrix_.size();
  matrix_.resize(start + size);
  PutLe(matrix_, start, rowId, 4);
  rowIds_.push_back(rowId);
  Row result(*this, start);
  if (shape_.hasRowColumns) {
    result.cell(kPropRowId, rowId);
    result.cell(kPropRowVersion, uint64_t{rowIds_.size()});
  }
  return result;
}

uint32_t TableContextBuilder::store(std::string_view bytes) {
  if (bytes.size() <= kMaxHeapAllocation) return heap_.add(bytes);
  const uint32_t nid = ValueSubnode(static_cast<uint32_t>(subnodes_.size()));
  const size_t pageSize = OffsetsOf(layout_).maxBlockData;
  subnodes_.push_back({nid, PstNodeParts::Stream(bytes, pageSize)});
  return nid;
}

void TableContextBuilder::Row::put(const TableColumn& column, std::string_view bytes) {
  std::string& matrix = table_.matrix_;
  std::string cell(bytes);
  cell.resize(column.width);
  PutBytes(matrix, start_ + column.offset, cell);
  const size_t at = start_ + table_.rgib_[2] + column.bit / 8;
  PutLe(matrix, at, GetLe(matrix, at, 1) | (0x80U >> (column.bit % 8)), 1);
}

TableContextBuilder::Row& TableContextBuilder::Row::cell(uint16_t id, uint64_t value) {
  const TableColumn& column = table_.find(id);
  put(column, LeBytes(value, column.width));
  return *this;
}

TableContextBuilder::Row& TableContextBuilder::Row::cell(uint16_t id, std::string_view bytes) {
  const TableColumn& column = table_.find(id);
  if (IsFixedType(column.type)) {
    put(column, bytes);
  } else {
    put(column, LeBytes(table_.store(bytes), 4));
  }
  return *this;
}

TableContextBuilder::Row& TableContextBuilder::Row::streamed(uint16_t id, PstNodeParts parts) {
  const uint32_t nid = ValueSubnode(static_cast<uint32_t>(table_.subnodes_.size()));
  table_.subnodes_.push_back({nid, std::move(parts)});
  put(table_.find(id), LeBytes(nid, 4));
  return *this;
}

TableContextBuilder::Row& TableContextBuilder::Row::absent(uint16_t id) {
  const TableColumn& column = table_.find(id);
  std::string& matrix = table_.matrix_;
  const size_t at = start_ + table_.rgib_[2] + column.bit / 8;
  PutLe(matrix, at, GetLe(matrix, at, 1) & ~uint64_t{0x80U >> (column.bit % 8)}, 1);
  return *this;
}

uint32_t TableContextBuilder::storeRows() {
  if (shape_.hnidRows) return *shape_.hnidRows;
  if (matrix_.empty()) return 0;
  const bool fits = matrix_.size() <= kMaxHeapAllocation;
  if (shape_.rows == TableShape::Rows::Heap || (shape_.rows == TableShape::Rows::Auto && fits)) {
    return heap_.add(matrix_);
  }
  const size_t pageSize = OffsetsOf(layout_).maxBlockData;
  const size_t rowsPerPage = pageSize / rowSize();
  if (rowsPerPage == 0) throw std::length_error("row beyond a block");
  PstNodeParts rows = PstNodeParts::Stream(matrix_, rowsPerPage * rowSize());
  for (size_t i = 0; i + 1 < rows.pages.size(); ++i) rows.pages[i].resize(pageSize);
  const uint32_t nid = ValueSubnode(static_cast<uint32_t>(subnodes_.size()));
  subnodes_.push_back({nid, std::move(rows)});
  return nid;
}

std::string TableContextBuilder::info(uint32_t rowIndexHid, uint32_t hnidRows) const {
  std::string bytes;
  AppendLe(bytes, kTableContext, 1);
  AppendLe(bytes, columns_.size(), 1);
  for (uint16_t end : shape_.rgib.value_or(rgib_)) AppendLe(bytes, end, 2);
  AppendLe(bytes, rowIndexHid, 4);
  AppendLe(bytes, hnidRows, 4);
  AppendLe(bytes, 0, 4);
  std::vector<TableColumn> sorted = columns_;
  std::stable_sort(sorted.begin(), sorted.end(),
                   [](const auto& a, const auto& b) { return TagOf(a) < TagOf(b); });
  for (const TableColumn& column : sorted) {
    AppendLe(bytes, TagOf(column), 4);
    AppendLe(bytes, column.offset, 2);
    AppendLe(bytes, column.width, 1);
    AppendLe(bytes, column.bit, 1);
  }
  return bytes;
}

PstNodeParts TableContextBuilder::build() {
  layOut();
  const uint8_t usual = layout_ == PstLayout::Ansi ? 2 : 4;
  const uint8_t width = shape_.rowIndexWidth == 0 ? usual : shape_.rowIndexWidth;
  std::vector<std::pair<uint32_t, size_t>> order;
  for (size_t i = 0; i < rowIds_.size(); ++i) order.emplace_back(rowIds_[i], i);
  std::stable_sort(order.begin(), order.end(),
                   [](const auto& a, const auto& b) { return a.first < b.first; });
  BthBuilder index(4, width, shape_.rowIndex);
  for (const auto& [rowId, position] : order) index.add(rowId, LeBytes(position, width));
  const uint32_t indexHid = heap_.reserve(8);
  index.write(heap_, indexHid);
  const uint32_t hnidRows = storeRows();
  heap_.set(infoHid_, info(indexHid, hnidRows));
  PstNodeParts parts;
  parts.pages = heap_.pages();
  parts.subnodes = std::move(subnodes_);
  return parts;
}

}  // namespace tarn::test
