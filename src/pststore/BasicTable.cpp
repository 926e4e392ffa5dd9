#include "pststore/BasicTable.h"

#include "pststore/Disk.h"
#include "pststore/Errors.h"
#include "pststore/Heap.h"
#include "pststore/HnidStream.h"

namespace pststore {

namespace {

constexpr ulong gust_table_id = 0x730;

// Where the fields are in the description.
constexpr size_t description_heap_sig_tc = 0;
constexpr size_t description_cCols = 1;
constexpr size_t description_rgib = 2;
constexpr size_t description_hidRowIndex = 10;
constexpr size_t description_hnidRows = 14;
constexpr size_t description_size = 22;

// And in the description of a column.
constexpr size_t column_wPropType = 0;
constexpr size_t column_id = 2;
constexpr size_t column_ibData = 4;
constexpr size_t column_cbData = 6;
constexpr size_t column_iBit = 7;
constexpr size_t column_size = 8;

constexpr size_t bth_header_entry_size = 2;

disk::column_desc load_column(bytes_view bytes) {
  return {disk::load<ushort>(bytes, column_wPropType), disk::load<ushort>(bytes, column_id),
          disk::load<ushort>(bytes, column_ibData), bytes[column_cbData], bytes[column_iBit]};
}

// The width of the values in the row index; 0 when there is no such field. Reading that table
// fails.
unsigned char row_index_entry_size(const heap_impl& heap) {
  const byte_vector description = heap.read(heap.get_root_id());
  if (description.size() < description_hidRowIndex + sizeof(ulong)) return 0;
  const byte_vector header = heap.read(disk::load<ulong>(description, description_hidRowIndex));
  return header.size() > bth_header_entry_size ? header[bth_header_entry_size] : 0;
}

}  // namespace

std::shared_ptr<table_impl> open_table(const node& data) {
  if (data.get_id() == gust_table_id) throw not_implemented("gust table");
  const heap_ptr heap = open_heap(data);
  // The heap's copy of the node has its data loaded already.
  const node& loaded = heap->get_node();
  if (row_index_entry_size(*heap) == sizeof(ulong))
    return make_kernel_shared<basic_table<ulong>>(loaded);
  return make_kernel_shared<basic_table<ushort>>(loaded);
}

template <typename T>
basic_table<T>::basic_table(const node& data) {
  const heap_ptr heap = open_heap(data, heap_sig_tc);
  const byte_vector description = heap->read(heap->get_root_id());
  if (!description.empty() && description[description_heap_sig_tc] != heap_sig_tc) {
    throw sig_mismatch("heap_sig_tc expected", 0, data.get_id(),
                       description[description_heap_sig_tc], heap_sig_tc);
  }
  if (description.size() < description_size) throw database_corrupt("table description cut short");
  row_index_ = open_bth<ulong, T>(heap, disk::load<ulong>(description, description_hidRowIndex));

  const size_t cCols = description[description_cCols];
  if (description.size() < description_size + cCols * column_size) {
    throw database_corrupt("table columns cut short");
  }
  columns_.reserve(cCols);
  for (size_t i = 0; i < cCols; ++i) {
    const disk::column_desc column =
        load_column(bytes_view(description).subspan(description_size + i * column_size));
    columns_[column.id] = column;
  }
  for (size_t i = 0; i < rgib_.size(); ++i) {
    rgib_[i] = disk::load<ushort>(description, description_rgib + i * sizeof(ushort));
  }
  open_rows(disk::load<ulong>(description, description_hnidRows));
}

template <typename T>
void basic_table<T>::open_rows(ulong hnidRows) {
  if (hnidRows == 0) return;
  if (is_heap_id(hnidRows)) {
    inline_rows_ = get_heap().read(hnidRows);
  } else {
    row_node_ = make_kernel_shared<node>(get_node().lookup(hnidRows));
  }
}

template <typename T>
auto basic_table<T>::get_layout() const -> const row_layout& {
  if (layout_.known) return layout_;
  if (row_size() == 0) throw database_corrupt("table of rows without a size");
  row_layout layout;
  if (row_node_ == nullptr) {
    layout.rows = inline_rows_.size() / row_size();
  } else {
    const size_t last = row_node_->get_page_count() - 1;
    layout.rows_per_page = row_node_->get_page_size(0) / row_size();
    layout.rows = last * layout.rows_per_page + row_node_->get_page_size(last) / row_size();
  }
  layout.known = true;
  layout_ = layout;
  return layout_;
}

template <typename T>
ulonglong basic_table<T>::size() const {
  return get_layout().rows;
}

template <typename T>
void basic_table<T>::check_row(ulong row) const {
  if (row >= size()) throw std::out_of_range("row >= size()");
  if (row_node_ != nullptr && layout_.rows_per_page == 0) {
    throw database_corrupt("table row larger than its page");
  }
}

template <typename T>
template <typename Value>
Value basic_table<T>::read_at(ulong row, size_t offset) const {
  check_row(row);
  if (offset + sizeof(Value) > row_size()) throw database_corrupt("table cell beyond its row");
  if (row_node_ != nullptr) {
    // NOLINTNEXTLINE(clang-analyzer-core.DivideZero): check_row refuses pages without a row
    const size_t in_page = row_size() * (row % layout_.rows_per_page) + offset;
    return row_node_->read<Value>(row / layout_.rows_per_page, in_page);
  }
  return disk::load<Value>(inline_rows_, row_size() * row + offset);
}

// A byte of the existence bitmap. In a subnode the bitmap is cut at the end of its page, and what
// is cut off reads as zeros.
template <typename T>
unsigned char basic_table<T>::read_bitmap(ulong row, size_t byte) const {
  if (row_node_ == nullptr) return inline_rows_[row_size() * row + rgib_[2] + byte];
  const size_t page = row / layout_.rows_per_page;
  const size_t bitmap = row_size() * (row % layout_.rows_per_page) + rgib_[2];
  const ulonglong page_size = row_node_->get_page_size(page);
  if (bitmap >= page_size) throw std::out_of_range("offset >= size()");
  if (bitmap + byte >= page_size) return 0;
  return row_node_->read<unsigned char>(page, bitmap + byte);
}

template <typename T>
bool basic_table<T>::read_bit(ulong row, unsigned iBit) const {
  check_row(row);
  const size_t byte = iBit >> 3;
  const unsigned mask = 0x80U >> (iBit & 7);
  if (rgib_[3] < rgib_[2]) throw database_corrupt("existence bitmap of negative size");
  if (rgib_[2] + byte >= rgib_[3]) throw database_corrupt("bit beyond the existence bitmap");
  return (read_bitmap(row, byte) & mask) != 0;
}

template <typename T>
bool basic_table<T>::prop_exists(ulong row, ushort prop) const {
  const auto column = columns_.find(prop);
  return column != columns_.end() && read_bit(row, column->second.iBit);
}

template <typename T>
const disk::column_desc& basic_table<T>::get_column(ushort prop) const {
  const auto column = columns_.find(prop);
  if (column == columns_.end()) throw key_not_found<ushort>(prop);
  return column->second;
}

template <typename T>
ulonglong basic_table<T>::get_cell_value(ulong row, ushort prop) const {
  const disk::column_desc& column = get_column(prop);
  if (!read_bit(row, column.iBit)) throw key_not_found<ushort>(prop);
  switch (column.cbData) {
    case 1:
      return read_at<unsigned char>(row, column.ibData);
    case 2:
      return read_at<ushort>(row, column.ibData);
    case 4:
      return read_at<ulong>(row, column.ibData);
    case 8:
      return read_at<ulonglong>(row, column.ibData);
    default:
      throw database_corrupt("get_cell_value: invalid cell size");
  }
}

template <typename T>
ulong basic_table<T>::get_row_id(ulong row) const {
  return read_at<ulong>(row, 0);
}

template <typename T>
ulong basic_table<T>::get_cell_hnid(ulong row, ushort prop) const {
  return static_cast<ulong>(get_cell_value(row, prop));
}

template <typename T>
byte_vector basic_table<T>::read_cell(ulong row, ushort prop) const {
  return read_hnid(get_heap(), get_cell_hnid(row, prop));
}

template <typename T>
hnid_stream_device basic_table<T>::open_cell_stream(ulong row, ushort prop) const {
  return open_hnid(get_heap(), get_cell_hnid(row, prop));
}

template <typename T>
ulonglong basic_table<T>::row_prop_size(ulong row, ushort prop) const {
  return hnid_size(get_heap(), get_cell_hnid(row, prop));
}

template <typename T>
ulong basic_table<T>::lookup_row(ulong row_id) const {
  return row_index_->lookup(row_id);
}

template <typename T>
vector<ushort> basic_table<T>::get_prop_list() const {
  vector<ushort> ids;
  ids.reserve(columns_.size());
  for (const auto& column : columns_) ids.push_back(column.first);
  return ids;
}

template <typename T>
ushort basic_table<T>::get_prop_type(ushort prop) const {
  return get_column(prop).wPropType;
}

template class basic_table<ulong>;
template class basic_table<ushort>;

}  // namespace pststore
