// TableRows.h - a table (MS-PST 2.3.4) read row by row, from the first to the last: what has been
// passed of the rows is let go. The index of the rows is not needed and not read.
#ifndef TARN_ARCHIVE_STORE_TABLEROWS_H
#define TARN_ARCHIVE_STORE_TABLEROWS_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "archive/store/StoredProperties.h"
#include "pststore/Node.h"

namespace tarn::archive::store {

struct TableColumn {
  uint16_t id = 0;
  uint16_t type = 0;
  uint16_t offset = 0;
  uint8_t width = 0;
  uint8_t bit = 0;
};

// What all rows of a table have in common.
class TableShape {
 public:
  // Of the table's description; throws database_corrupt for one that is damaged.
  explicit TableShape(pststore::bytes_view description);

  // In the order of their ids.
  const std::vector<TableColumn>& columns() const { return columns_; }
  const TableColumn* column(uint16_t id) const;
  size_t rowSize() const { return rowSize_; }
  // Whether that row has a value in the column.
  bool has(std::string_view row, const TableColumn& column) const;
  // The value; none where the row has none.
  std::optional<StoredValue> value(std::string_view row, const TableColumn& column) const;

 private:
  std::vector<TableColumn> columns_;
  size_t bitmap_ = 0;  // where it begins in a row
  size_t rowSize_ = 0;
};

// Throws what the store throws.
class TableRows {
 public:
  // `blockSize` is that of a full block of the store.
  TableRows(const pststore::node& data, size_t blockSize);

  uint64_t rowCount() const { return rowCount_; }
  // The row's bytes, valid until the next call.
  std::string_view row(uint64_t number);
  // The first row that is in another block than this one.
  uint64_t nextBlock(uint64_t number) const;

  static uint32_t IdOf(std::string_view row);

  const std::shared_ptr<const TableShape>& shape() const { return shape_; }
  const pststore::heap_ptr& heap() const { return heap_; }

 private:
  void layOut(uint32_t rows);

  pststore::heap_ptr heap_;
  std::shared_ptr<const TableShape> shape_;
  std::optional<pststore::node> rowNode_;  // unless the rows are in the heap
  size_t blockSize_;
  uint64_t rowCount_ = 0;
  uint64_t rowsPerBlock_ = 0;  // of rows in a subnode
  std::string loaded_;         // all rows of the heap, or those of one block
  std::optional<uint64_t> loadedBlock_;
};

struct ListedRow {
  uint64_t number = 0;
  uint32_t id = 0;
};

struct ListedRows {
  std::vector<ListedRow> all;
  bool isWhole = true;
};

// The rows that can be read, each id once: rows that a damaged table only seems to have take no
// memory.
ListedRows ListRows(TableRows& table);

// One row as a set of properties.
class RowProperties final : public StoredProperties {
 public:
  RowProperties(const TableRows& table, std::string_view row)
      : StoredProperties(table.heap()), shape_(table.shape()), row_(row) {}

  std::vector<mapi::PropertyTag> tags() override;
  std::optional<StoredValue> find(uint16_t id) const override;
  bool isWhole() const override { return true; }

 private:
  std::shared_ptr<const TableShape> shape_;
  std::string row_;
};

}  // namespace tarn::archive::store

#endif
