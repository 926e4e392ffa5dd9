// Table.h - rows of cells: the messages of a folder, the attachments of a message (MS-PST, 2.3.4).
//
//   table_impl        what a table offers; BasicTable.h reads it from a node
//   const_table_row   one row as properties
//   table             the value that users hold; a copy reads the table anew and shares nothing
//
// A table never changes. It keeps its heap, node and store open, and rows and iterators keep it.
// Rows are counted from 0 with 32 bits.
//
// Operations throw
//   key_not_found<ushort>   the row has no such cell, or the table no such column;
//   std::out_of_range       "row >= size()";
//   database_corrupt        a row or cell does not fit its place.
#ifndef TARN_PSTSTORE_TABLE_H
#define TARN_PSTSTORE_TABLE_H

#include <memory>

#include "pststore/HnidStream.h"
#include "pststore/Node.h"
#include "pststore/PropertyObject.h"
#include "pststore/Types.h"

namespace pststore {

class table_impl : public std::enable_shared_from_this<table_impl> {
 public:
  table_impl() = default;
  table_impl(const table_impl&) = delete;
  table_impl& operator=(const table_impl&) = delete;
  virtual ~table_impl() = default;

  virtual const node& get_node() const = 0;

  virtual ulonglong get_cell_value(ulong row, ushort prop) const = 0;
  // What the cell refers to.
  virtual byte_vector read_cell(ulong row, ushort prop) const = 0;
  virtual hnid_stream_device open_cell_stream(ulong row, ushort prop) const = 0;

  virtual ushort get_prop_type(ushort prop) const = 0;

  virtual ulong get_row_id(ulong row) const = 0;
  virtual ulonglong size() const = 0;

  // Whether the row has that cell; false for what is no column.
  virtual bool prop_exists(ulong row, ushort prop) const = 0;
  // The bytes of what the cell refers to.
  virtual ulonglong row_prop_size(ulong row, ushort prop) const = 0;

  // Not used by the filter: the number of the row with an id (key_not_found<ulong> when there is
  // none), the properties that are columns, and the node to change it.
  virtual ulong lookup_row(ulong row_id) const = 0;
  virtual vector<ushort> get_prop_list() const = 0;
  virtual node& get_node() = 0;
};

// Reads the table of a node. Throws
//   sig_mismatch      the node is no table;
//   not_implemented   the table is of a kind that this store does not read.
std::shared_ptr<table_impl> open_table(const node& data);

class const_table_row final : public const_property_object {
 public:
  const_table_row(ulong row, std::shared_ptr<table_impl> table)
      : row_(row), table_(std::move(table)) {}

  ulong get_row() const { return row_; }

  vector<ushort> get_prop_list() const override;
  ushort get_prop_type(ushort id) const override;
  bool prop_exists(ushort id) const override;
  ulonglong size(ushort id) const override;
  hnid_stream_device open_prop_stream(ushort id) const override;
  // All four are the cell's value, cut to the width of the result.
  unsigned char get_value_1(ushort id) const override;
  ushort get_value_2(ushort id) const override;
  ulong get_value_4(ushort id) const override;
  ulonglong get_value_8(ushort id) const override;
  byte_vector get_value_variable(ushort id) const override;

 private:
  ulong row_;
  std::shared_ptr<table_impl> table_;
};

struct const_table_row_iter {
  ulong row = 0;
  std::shared_ptr<table_impl> table;

  const_table_row operator*() const { return const_table_row(row, table); }
  const_table_row_iter& operator++() {
    ++row;
    return *this;
  }
  friend bool operator==(const const_table_row_iter&, const const_table_row_iter&) = default;
};

class table {
 public:
  explicit table(const node& data) : impl_(open_table(data)) {}
  table(const table& other) : impl_(open_table(other.get_impl().get_node())) {}
  table& operator=(const table& other);
  table(table&&) noexcept = default;
  table& operator=(table&&) noexcept = default;
  ~table() = default;

  ulonglong size() const { return impl_->size(); }
  const_table_row_iter begin() const { return {0, impl_}; }
  const_table_row_iter end() const { return {static_cast<ulong>(size()), impl_}; }

  const table_impl& get_impl() const { return *impl_; }

 private:
  std::shared_ptr<table_impl> impl_;
};

}  // namespace pststore

#endif
