// BasicTable.h - a table context: a heap with the table's description, an index of its rows, and
// the rows themselves (MS-PST, 2.3.4).
//
//   description, the heap's root allocation
//      0  1  heap_sig_tc, 0x7C
//      1  1  cCols, the number of columns
//      2  2  rgib[0], end of the cells of 4 and 8 bytes
//      4  2  rgib[1], end of the cells of 2 bytes
//      6  2  rgib[2], end of the cells of 1 byte, where the existence bitmap starts
//      8  2  rgib[3], end of the bitmap, the size of a row
//     10  4  hidRowIndex: the header of the row index, a BTH from row id to row number
//     14  4  hnidRows: an allocation, or a subnode of the heap's node; 0 when there are no rows
//     18  4  not read
//     22     columns, 8 bytes each; of two for one property the last one counts:
//              0  2  wPropType, the property type
//              2  2  property id
//              4  2  ibData, offset of the cell in a row
//              6  1  cbData, width of the cell
//              7  1  iBit, the cell's bit in the bitmap; bit 0 is the top bit of the first byte
//
// Rows follow each other without gaps, the row id in the first 4 bytes of each. In a subnode every
// page but the last holds as many whole rows as the first, and no row crosses a page.
//
// Fields are believed as far as the rows reach: a cell or bitmap that does not fit the size of a
// row raises database_corrupt when it is read, and so does a row of no size.
#ifndef TARN_PSTSTORE_BASICTABLE_H
#define TARN_PSTSTORE_BASICTABLE_H

#include <array>
#include <functional>
#include <memory>
#include <unordered_map>

#include "pststore/Bth.h"
#include "pststore/Table.h"
#include "pststore/Types.h"

namespace pststore {

namespace disk {

struct column_desc {
  ushort wPropType = 0;
  ushort id = 0;
  ushort ibData = 0;
  unsigned char cbData = 0;
  unsigned char iBit = 0;
};

}  // namespace disk

// T, ushort or ulong, is what the row index holds.
template <typename T>
class basic_table final : public table_impl {
 public:
  explicit basic_table(const node& data);

  const node& get_node() const override { return get_heap().get_node(); }
  ulonglong get_cell_value(ulong row, ushort prop) const override;
  byte_vector read_cell(ulong row, ushort prop) const override;
  hnid_stream_device open_cell_stream(ulong row, ushort prop) const override;
  ushort get_prop_type(ushort prop) const override;
  ulong get_row_id(ulong row) const override;
  ulonglong size() const override;
  bool prop_exists(ulong row, ushort prop) const override;
  ulonglong row_prop_size(ulong row, ushort prop) const override;

  // Not used by the filter.
  ulong lookup_row(ulong row_id) const override;
  vector<ushort> get_prop_list() const override;
  node& get_node() override { return get_heap().get_node(); }

 private:
  // What follows from the sizes of the pages that hold the rows; these never change.
  struct row_layout {
    bool known = false;
    size_t rows_per_page = 0;  // only of rows in a subnode
    ulonglong rows = 0;
  };
  using column_map =
      std::unordered_map<ushort, disk::column_desc, std::hash<ushort>, std::equal_to<ushort>,
                         kernel_allocator<std::pair<const ushort, disk::column_desc>>>;

  heap_impl& get_heap() const { return *row_index_->get_heap(); }
  void open_rows(ulong hnidRows);
  const disk::column_desc& get_column(ushort prop) const;
  size_t row_size() const { return rgib_[3]; }
  const row_layout& get_layout() const;
  void check_row(ulong row) const;
  template <typename Value>
  Value read_at(ulong row, size_t offset) const;
  // What a cell says of a value that is somewhere else.
  ulong get_cell_hnid(ulong row, ushort prop) const;
  bool read_bit(ulong row, unsigned iBit) const;
  unsigned char read_bitmap(ulong row, size_t byte) const;

  std::shared_ptr<bth_node<ulong, T>> row_index_;
  byte_vector inline_rows_;
  std::shared_ptr<node> row_node_;
  column_map columns_;
  std::array<ushort, 4> rgib_ = {};
  mutable row_layout layout_;  // found at the first need, and kept
};

extern template class basic_table<ulong>;
extern template class basic_table<ushort>;

}  // namespace pststore

#endif
