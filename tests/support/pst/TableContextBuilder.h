// TableContextBuilder.h - writes a table context: rows of fixed-width cells (MS-PST 2.3.4).
//
//   TableContextBuilder table(PstLayout::Unicode);
//   table.column(0x3001, kTypeString);
//   table.row(0x8025).cell(0x3001, std::string_view("a\0", 2));
//   file.node(nid, table.build());
//
// The row id and the row version are the first two columns. Cells of 8 and 4 bytes come first in a
// row, then those of 2, then those of 1 and of every other width, then the bitmap of the cells that
// exist. Rows never cross a block: as many whole rows are in a block as fit, and every block but
// the last is filled up with zeros.
#ifndef TARN_TESTS_SUPPORT_PST_TABLECONTEXTBUILDER_H
#define TARN_TESTS_SUPPORT_PST_TABLECONTEXTBUILDER_H

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/pst/BthBuilder.h"
#include "support/pst/PropertyTypes.h"
#include "support/pst/PstNodeParts.h"

namespace tarn::test {

struct TableColumn {
  uint16_t id = 0;
  uint16_t type = 0;
  uint8_t width = 0;
  uint16_t offset = 0;
  uint8_t bit = 0;
};

struct TableShape {
  enum class Rows { Auto, Heap, Subnode };
  // Auto: in the heap up to 3580 bytes, else in a subnode.
  Rows rows = Rows::Auto;
  // Width of the values in the row index; 0 is 4 in the Unicode layout and 2 in the ANSI layout.
  uint8_t rowIndexWidth = 0;
  BthShape rowIndex = {};
  // Deviating: a table without the columns of row id and version; its rows still begin with the
  // row id.
  bool hasRowColumns = true;
  // Deviating: this rgib; rows are laid out as without.
  std::optional<std::array<uint16_t, 4>> rgib = {};
  // Deviating: this hnidRows; the rows are written nowhere.
  std::optional<uint32_t> hnidRows = {};
};

class TableContextBuilder {
 public:
  class Row {
   public:
    // A number in as many bytes as the column is wide.
    Row& cell(uint16_t id, uint64_t value);
    // A value of a fixed type as it is; another in the heap, or in a subnode beyond 3580 bytes.
    Row& cell(uint16_t id, std::string_view bytes);
    // In a subnode of the table, whatever its size.
    Row& streamed(uint16_t id, PstNodeParts parts);
    // Clears the bit that says that a cell exists, and leaves its bytes.
    Row& absent(uint16_t id);

   private:
    friend class TableContextBuilder;
    Row(TableContextBuilder& table, size_t start) : table_(table), start_(start) {}
    void put(const TableColumn& column, std::string_view bytes);

    TableContextBuilder& table_;
    size_t start_;
  };

  explicit TableContextBuilder(PstLayout layout, const TableShape& shape = {});

  // Columns come before the first row. Width 0 is that of the type. A width that a number does not
  // have (3, say) is possible, and so is the same id twice, of which cells name the first.
  TableContextBuilder& column(uint16_t id, uint16_t type, uint8_t width = 0);
  Row row(uint32_t rowId);
  size_t rowCount() const { return rowIds_.size(); }
  TableShape& shape() { return shape_; }

  // Offsets and bits as they are written; no column can be added afterwards.
  const std::vector<TableColumn>& columns();
  size_t rowSize();

  // Ends the table; to be called once.
  PstNodeParts build();

 private:
  void layOut();
  const TableColumn& find(uint16_t id) const;
  uint32_t store(std::string_view bytes);
  uint32_t storeRows();
  std::string info(uint32_t rowIndexHid, uint32_t hnidRows) const;

  PstLayout layout_;
  TableShape shape_;
  HeapBuilder heap_;
  std::vector<TableColumn> columns_;
  bool isLaidOut_ = false;
  std::array<uint16_t, 4> rgib_ = {};
  uint32_t infoHid_ = 0;
  std::string matrix_;
  std::vector<uint32_t> rowIds_;
  std::vector<PstSubnode> subnodes_;
};

}  // namespace tarn::test

#endif
