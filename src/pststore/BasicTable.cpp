#include "pststore/BasicTable.h"

#include "Common/LittleEndian.h"
#include "pststore/Errors.h"
#include "pststore/Heap.h"
#include "pststore/PropertyBag.h"

namespace pststore {

using tarn::LoadLittleEndian;

namespace {

constexpr ulong gust_table_id = 0x730;
constexpr size_t description_size = 22;
constexpr size_t column_size = 8;

// The part of the heap's root allocation that every table has.
byte_vector read_description(const heap_impl& heap) {
  byte_vector bytes = heap.read(heap.get_root_id());
  if (bytes.size() < description_size) throw database_corrupt("table description cut short");
  return bytes;
}

ulong row_index_id(const byte_vector& description) {
  return LoadLittleEndian<ulong>(&description[10]);
}

disk::column_desc load_column(const unsigned char* bytes) {
  return {LoadLittleEndian<ushort>(bytes), LoadLittleEndian<ushort>(bytes + 2),
          LoadLittleEndian<ushort>(bytes + 4), bytes[6], bytes[7]};
}

}  // namespace

std::shared_ptr<table_impl> open_table(const node& data) {
  if (data.get_id() == gust_table_id) throw not_implemented("gust table");
  const heap_ptr heap = open_heap(data);
  const byte_vector index_header = heap->read(row_index_id(read_description(*heap)));
  if (index_header.size() < 3) throw database_corrupt("row index header cut short");
  // The heap's copy of the node has its data loaded already.
  if (index_header[2] == sizeof(ulong)) return make_tracked<basic_table<ulong>>(heap->get_node());
  return make_tracked<basic_table<ushort>>(heap->get_node());
}

template <typename T>
basic_table<T>::basic_table(const node& data) {
  const heap_ptr heap = open_heap(data, heap_sig_tc);
  const byte_vector description = read_description(*heap);
  if (description[0] != heap_sig_tc) {
    throw sig_mismatch("heap_sig_tc expected", 0, data.get_id(), description[0], heap_sig_tc);
  }
  row_index_ = open_bth<ulong, T>(heap, row_index_id(description));

  const size_t columns = description[1];
  if (description.size() < description_size + columns * column_size) {
    throw database_corrupt("table columns cut short");
  }
  columns_.reserve(columns);
  for (size_t i = 0; i < columns; ++i) {
    const disk::column_desc column = load_column(&description[description_size + i * column_size]);
    columns_[column.id] = column;
  }
  for (size_t i = 0; i < offsets_.size(); ++i) {
    offsets_[i] = LoadLittleEndian<ushort>(&description[2 + 2 * i]);
  }
  open_rows(LoadLittleEndian<ulong>(&description[14]));
}

template <typename T>
void basic_table<T>::open_rows(ulong hnid) {
  if (hnid == 0) return;
  if (is_heap_id(hnid)) {
    inline_rows_ = get_heap().read(hnid);
  } else {
    row_node_ = make_tracked<node>(get_node().lookup(hnid));
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
    const ulong last = row_node_->get_page_count() - 1;
    layout.rows_per_page = static_cast<ulong>(row_node_->get_page_size(0) / row_size());
    layout.rows =
        ulonglong{last} * layout.rows_per_page + row_node_->get_page_size(last) / row_size();
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
Value basic_table<T>::read_at(ulong row, ulong offset) const {
  check_row(row);
  if (offset + sizeof(Value) > row_size()) throw database_corrupt("table cell beyond its row");
  if (row_node_ != nullptr) {
    const ulong in_page = row_size() * (row % layout_.rows_per_page) + offset;
    return row_node_->read<Value>(row / layout_.rows_per_page, in_page);
  }
  return LoadLittleEndian<Value>(&inline_rows_[row_size() * row + offset]);
}

// The bitmap is cut at the end of its page, and what is cut off reads as zeros.
template <typename T>
bool basic_table<T>::read_paged_bit(ulong row, ulong byte, unsigned char mask) const {
  const ulong page = row / layout_.rows_per_page;
  const ulong bitmap = row_size() * (row % layout_.rows_per_page) + offsets_[2];
  const ulonglong page_size = row_node_->get_page_size(page);
  if (bitmap >= page_size) throw std::out_of_range("offset >= size()");
  if (bitmap + byte >= page_size) return false;
  return (row_node_->read<unsigned char>(page, bitmap + byte) & mask) != 0;
}

template <typename T>
bool basic_table<T>::read_bit(ulong row, ulong bit) const {
  check_row(row);
  const ulong byte = bit >> 3;
  const auto mask = static_cast<unsigned char>(0x80 >> (bit & 7));
  if (offsets_[3] < offsets_[2]) throw database_corrupt("existence bitmap of negative size");
  if (byte >= ulong{offsets_[3]} - offsets_[2]) {
    throw database_corrupt("bit beyond the existence bitmap");
  }
  if (row_node_ != nullptr) return read_paged_bit(row, byte, mask);
  return (inline_rows_[row_size() * row + offsets_[2] + byte] & mask) != 0;
}

template <typename T>
bool basic_table<T>::prop_exists(ulong row, ushort prop) const {
  const auto column = columns_.find(prop);
  return column != columns_.end() && read_bit(row, column->second.bit);
}

template <typename T>
ulonglong basic_table<T>::get_cell_value(ulong row, ushort prop) const {
  const auto column = columns_.find(prop);
  if (column == columns_.end() || !read_bit(row, column->second.bit)) {
    throw key_not_found<ushort>(prop);
  }
  const ulong offset = column->second.offset;
  switch (column->second.size) {
    case 1:
      return read_at<unsigned char>(row, offset);
    case 2:
      return read_at<ushort>(row, offset);
    case 4:
      return read_at<ulong>(row, offset);
    case 8:
      return read_at<ulonglong>(row, offset);
    default:
      throw database_corrupt("get_cell_value: invalid cell size");
  }
}

template <typename T>
ulong basic_table<T>::get_row_id(ulong row) const {
  return read_at<ulong>(row, 0);
}

template <typename T>
byte_vector basic_table<T>::read_cell(ulong row, ushort prop) const {
  const auto hnid = static_cast<ulong>(get_cell_value(row, prop));
  if (is_heap_id(hnid)) return get_heap().read(hnid);
  return read_whole(get_node().lookup(hnid));
}

template <typename T>
hnid_stream_device basic_table<T>::open_cell_stream(ulong row, ushort prop) const {
  const auto hnid = static_cast<ulong>(get_cell_value(row, prop));
  if (is_heap_id(hnid)) return get_heap().open_stream(hnid);
  return hnid_stream_device(get_node().lookup(hnid));
}

template <typename T>
ulonglong basic_table<T>::row_prop_size(ulong row, ushort prop) const {
  const auto hnid = static_cast<ulong>(get_cell_value(row, prop));
  if (is_heap_id(hnid)) return get_heap().size(hnid);
  return get_node().lookup(hnid).size();
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
  const auto column = columns_.find(prop);
  if (column == columns_.end()) throw key_not_found<ushort>(prop);
  return column->second.type;
}

template class basic_table<ulong>;
template class basic_table<ushort>;

}  // namespace pststore
