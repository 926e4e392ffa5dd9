#include "pststore/Table.h"

namespace pststore {

vector<ushort> const_table_row::get_prop_list() const {
  vector<ushort> ids;
  for (const ushort id : table_->get_prop_list()) {
    if (prop_exists(id)) ids.push_back(id);
  }
  return ids;
}

ushort const_table_row::get_prop_type(ushort id) const { return table_->get_prop_type(id); }

bool const_table_row::prop_exists(ushort id) const { return table_->prop_exists(row_, id); }

ulonglong const_table_row::size(ushort id) const { return table_->row_prop_size(row_, id); }

hnid_stream_device const_table_row::open_prop_stream(ushort id) const {
  return table_->open_cell_stream(row_, id);
}

unsigned char const_table_row::get_value_1(ushort id) const {
  return static_cast<unsigned char>(table_->get_cell_value(row_, id));
}

ushort const_table_row::get_value_2(ushort id) const {
  return static_cast<ushort>(table_->get_cell_value(row_, id));
}

ulong const_table_row::get_value_4(ushort id) const {
  return static_cast<ulong>(table_->get_cell_value(row_, id));
}

ulonglong const_table_row::get_value_8(ushort id) const { return table_->get_cell_value(row_, id); }

byte_vector const_table_row::get_value_variable(ushort id) const {
  return table_->read_cell(row_, id);
}

table& table::operator=(const table& other) {
  if (this != &other) *this = table(other);
  return *this;
}

}  // namespace pststore
