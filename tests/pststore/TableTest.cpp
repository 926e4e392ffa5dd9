#include "pststore/Table.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>

#include "pststore/BasicTable.h"
#include "pststore/StoreHarness.h"
#include "support/pst/TableContextBuilder.h"

namespace tarn::test {
namespace {

using pststore::const_table_row;
using pststore::table;

constexpr std::array<PstLayout, 2> kLayouts = {PstLayout::Ansi, PstLayout::Unicode};

// Columns of all widths.
TableContextBuilder Columns(PstLayout layout, const TableShape& shape) {
  TableContextBuilder builder(layout, shape);
  builder.column(kPropDisplayName, kTypeString)
      .column(kPropCreationTime, kTypeTime)
      .column(kPropMessageFlags, kTypeInt16);
  builder.column(0x0E1F, kTypeBoolean);
  return builder;
}

PstNodeParts ThreeRows(PstLayout layout, const TableShape& shape = {}) {
  TableContextBuilder builder = Columns(layout, shape);
  builder.row(0x8025).cell(kPropDisplayName, "one").cell(kPropCreationTime, 0x1122334455667788U);
  builder.row(0x8045).cell(kPropMessageFlags, 0xABCD).cell(0x0E1F, 1);
  builder.row(0x8065).cell(kPropDisplayName, std::string(5000, 'x'));
  return builder.build();
}

void ExpectThreeRows(const table& read) {
  const pststore::table_impl& impl = read.get_impl();
  ASSERT_EQ(read.size(), 3U);
  EXPECT_EQ(impl.get_row_id(0), 0x8025U);
  EXPECT_EQ(impl.get_row_id(1), 0x8045U);
  EXPECT_EQ(impl.get_row_id(2), 0x8065U);
  EXPECT_EQ(Text(impl.read_cell(0, kPropDisplayName)), "one");
  EXPECT_EQ(impl.row_prop_size(0, kPropDisplayName), 3U);
  EXPECT_EQ(impl.get_cell_value(0, kPropCreationTime), 0x1122334455667788U);
  EXPECT_FALSE(impl.prop_exists(0, kPropMessageFlags));
  EXPECT_FALSE(impl.prop_exists(1, kPropDisplayName));
  EXPECT_EQ(impl.get_cell_value(1, kPropMessageFlags), 0xABCDU);
  EXPECT_EQ(impl.get_cell_value(1, 0x0E1F), 1U);
  EXPECT_EQ(impl.row_prop_size(2, kPropDisplayName), 5000U);
  EXPECT_EQ(Text(impl.read_cell(2, kPropDisplayName)), std::string(5000, 'x'));
  pststore::prop_stream stream(impl.open_cell_stream(2, kPropDisplayName));
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(stream), {}), std::string(5000, 'x'));
}

TEST(Table, ReadsRowsFromAHeapAndFromASubnode) {
  for (const PstLayout layout : kLayouts) {
    for (const auto rows : {TableShape::Rows::Heap, TableShape::Rows::Subnode}) {
      const NodeStore store(ThreeRows(layout, {.rows = rows}), layout);
      ExpectThreeRows(table(store.node()));
    }
  }
}

TEST(Table, CopiesReadAnew) {
  std::optional<NodeStore> store(std::in_place, ThreeRows(PstLayout::Unicode));
  std::optional<table> read(std::in_place, store->node());
  const table copy(*read);
  EXPECT_NE(&copy.get_impl(), &read->get_impl());
  table assigned(copy);
  assigned = *read;
  read.reset();
  store->store().release();
  ExpectThreeRows(copy);
  ExpectThreeRows(assigned);
  const table moved(std::move(assigned));
  ExpectThreeRows(moved);
}

TEST(Table, AnAssignedTableHasTheRowsOfTheOther) {
  TableContextBuilder builder = Columns(PstLayout::Unicode, {});
  builder.row(0x9025).cell(kPropDisplayName, "other");
  const NodeStore one(builder.build());
  const NodeStore three(ThreeRows(PstLayout::Unicode));
  const table source(three.node());
  table assigned(one.node());
  ASSERT_EQ(assigned.size(), 1U);
  assigned = source;
  ExpectThreeRows(assigned);
}

TEST(Table, RowsReadAsProperties) {
  const NodeStore store(ThreeRows(PstLayout::Unicode));
  const table read(store.node());
  const const_table_row row = *read.begin();
  pststore::vector<uint16_t> ids = row.get_prop_list();
  std::sort(ids.begin(), ids.end());
  EXPECT_EQ(
      std::vector<uint16_t>(ids.begin(), ids.end()),
      (std::vector<uint16_t>{kPropDisplayName, kPropCreationTime, kPropRowId, kPropRowVersion}));
  EXPECT_EQ(row.get_prop_type(kPropDisplayName), kTypeString);
  EXPECT_EQ(row.get_prop_type(kPropMessageFlags), kTypeInt16);
  EXPECT_TRUE(row.prop_exists(kPropCreationTime));
  EXPECT_FALSE(row.prop_exists(kPropMessageFlags));
  EXPECT_FALSE(row.prop_exists(0x4444));
  EXPECT_EQ(row.size(kPropDisplayName), 3U);
  EXPECT_EQ(row.get_value_1(kPropCreationTime), 0x88);
  EXPECT_EQ(row.get_value_2(kPropCreationTime), 0x7788);
  EXPECT_EQ(row.get_value_4(kPropCreationTime), 0x55667788U);
  EXPECT_EQ(row.get_value_8(kPropCreationTime), 0x1122334455667788U);
  EXPECT_EQ(row.get_value_8(kPropRowId), 0x8025U);
  EXPECT_EQ(Text(row.get_value_variable(kPropDisplayName)), "one");
  EXPECT_EQ(row.read_prop<pststore::wstring>(kPropDisplayName), u"\u6E6F");
  pststore::prop_stream stream(row.open_prop_stream(kPropDisplayName));
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(stream), {}), "one");
}

TEST(Table, IteratorsAreAPlaceInATable) {
  const NodeStore store(ThreeRows(PstLayout::Unicode));
  const table read(store.node());
  uint32_t row = 0;
  for (auto at = read.begin(); at != read.end(); ++at) {
    EXPECT_EQ((*at).get_row(), row);
    EXPECT_EQ(at.row, row);
    ++row;
  }
  EXPECT_EQ(row, 3U);
  const table other(store.node());
  EXPECT_EQ(read.begin(), read.begin());
  EXPECT_NE(read.begin(), other.begin());
}

TEST(Table, RowsKeepTheirTable) {
  std::optional<NodeStore> store(std::in_place, ThreeRows(PstLayout::Unicode));
  std::optional<table> read(std::in_place, store->node());
  const const_table_row row = *read->begin();
  read.reset();
  store->store().release();
  EXPECT_EQ(Text(row.get_value_variable(kPropDisplayName)), "one");
}

TEST(Table, MissingColumnsCellsAndRows) {
  const NodeStore store(ThreeRows(PstLayout::Unicode));
  const table read(store.node());
  const pststore::table_impl& impl = read.get_impl();
  const auto missing = [](auto&& action) { return MissingKey<uint16_t>(action); };
  EXPECT_EQ(missing([&] { impl.get_prop_type(0x4444); }), 0x4444);
  EXPECT_EQ(missing([&] { impl.get_cell_value(0, 0x4444); }), 0x4444);
  EXPECT_EQ(missing([&] { impl.get_cell_value(0, kPropMessageFlags); }), kPropMessageFlags);
  EXPECT_EQ(missing([&] { impl.read_cell(1, kPropDisplayName); }), kPropDisplayName);
  EXPECT_EQ(missing([&] { impl.open_cell_stream(1, kPropDisplayName); }), kPropDisplayName);
  EXPECT_EQ(missing([&] { impl.row_prop_size(1, kPropDisplayName); }), kPropDisplayName);
  // What is no column is missing in rows that do not exist, too.
  EXPECT_FALSE(impl.prop_exists(3, 0x4444));
  EXPECT_EQ(missing([&] { impl.get_cell_value(3, 0x4444); }), 0x4444);
  const auto beyond = [](auto&& action) { return Thrown<std::out_of_range>(action); };
  EXPECT_EQ(beyond([&] { impl.prop_exists(3, kPropDisplayName); }), "row >= size()");
  EXPECT_EQ(beyond([&] { impl.get_cell_value(3, kPropDisplayName); }), "row >= size()");
  EXPECT_EQ(beyond([&] { impl.get_row_id(3); }), "row >= size()");
  EXPECT_EQ(beyond([&] { impl.get_row_id(0xFFFFFFFF); }), "row >= size()");
}

TEST(Table, WithoutRows) {
  for (const PstLayout layout : kLayouts) {
    const NodeStore store(Columns(layout, {}).build(), layout);
    const table read(store.node());
    EXPECT_EQ(read.size(), 0U);
    EXPECT_EQ(read.begin(), read.end());
    EXPECT_EQ(MissingKey<uint32_t>([&] { read.get_impl().lookup_row(0x8025); }), 0x8025U);
  }
}

TEST(Table, CellsInSubnodesOfTheTable) {
  TableContextBuilder builder(PstLayout::Unicode);
  builder.column(kPropDisplayName, kTypeBinary);
  builder.row(1).streamed(kPropDisplayName, PstNodeParts::Stream("streamed", 8176));
  builder.row(2).cell(kPropDisplayName, 0);
  builder.row(3).cell(kPropDisplayName, 0x8FF);
  const NodeStore store(builder.build());
  const table read(store.node());
  const pststore::table_impl& impl = read.get_impl();
  EXPECT_EQ(Text(impl.read_cell(0, kPropDisplayName)), "streamed");
  EXPECT_EQ(impl.row_prop_size(0, kPropDisplayName), 8U);
  EXPECT_EQ(Text(impl.read_cell(1, kPropDisplayName)), "");
  EXPECT_EQ(impl.row_prop_size(1, kPropDisplayName), 0U);
  EXPECT_EQ(MissingKey<uint32_t>([&] { impl.read_cell(2, kPropDisplayName); }), 0x8FFU);
  EXPECT_EQ(MissingKey<uint32_t>([&] { impl.open_cell_stream(2, kPropDisplayName); }), 0x8FFU);
  EXPECT_EQ(MissingKey<uint32_t>([&] { impl.row_prop_size(2, kPropDisplayName); }), 0x8FFU);
}

TEST(Table, LooksRowsUpByTheirId) {
  for (const uint8_t width : std::initializer_list<uint8_t>{2, 4}) {
    TableShape shape = {.rowIndexWidth = width};
    shape.rowIndex = BthShape::StrideOf8();
    const NodeStore store(ThreeRows(PstLayout::Unicode, shape));
    const table read(store.node());
    EXPECT_EQ(dynamic_cast<const pststore::basic_table<uint16_t>*>(&read.get_impl()) != nullptr,
              width == 2);
    EXPECT_EQ(read.get_impl().lookup_row(0x8025), 0U);
    EXPECT_EQ(read.get_impl().lookup_row(0x8045), 1U);
    EXPECT_EQ(read.get_impl().lookup_row(0x8065), 2U);
    EXPECT_EQ(MissingKey<uint32_t>([&] { read.get_impl().lookup_row(0x8085); }), 0x8085U);
  }
}

// Six bytes a record, as published: the index is read with a stride of 8 all the same, and rows do
// not go through it.
TEST(Table, PackedRowIndexesDoNotDisturbTheRows) {
  const NodeStore store(ThreeRows(PstLayout::Unicode, {.rowIndexWidth = 2}));
  const table read(store.node());
  ExpectThreeRows(read);
  EXPECT_EQ(read.get_impl().lookup_row(0x8025), 0U);
  EXPECT_EQ(MissingKey<uint32_t>([&] { read.get_impl().lookup_row(0x8045); }), 0x8045U);
}

TEST(Table, RowsOfTwoPages) {
  for (const PstLayout layout : kLayouts) {
    const size_t pageSize = layout == PstLayout::Ansi ? 8180 : 8176;
    TableContextBuilder builder(layout);
    builder.column(kPropMessageFlags, kTypeInt16);
    const size_t rowSize = builder.rowSize();
    ASSERT_EQ(rowSize, 11U);  // two numbers of 4 bytes, one of 2, a bitmap of 1
    const auto rowsPerPage = static_cast<uint32_t>(pageSize / rowSize);
    for (uint32_t row = 0; row < rowsPerPage + 2; ++row) {
      builder.row(1000 + row).cell(kPropMessageFlags, row);
    }
    const NodeStore store(builder.build(), layout);
    const table read(store.node());
    EXPECT_EQ(read.size(), rowsPerPage + 2);
    for (const uint32_t row : {0U, rowsPerPage - 1, rowsPerPage, rowsPerPage + 1}) {
      EXPECT_EQ(read.get_impl().get_row_id(row), 1000 + row);
      EXPECT_EQ(read.get_impl().get_cell_value(row, kPropMessageFlags), row);
    }
    EXPECT_EQ(Thrown<std::out_of_range>([&] { read.get_impl().get_row_id(rowsPerPage + 2); }),
              "row >= size()");
  }
}

TEST(Table, WithoutMemory) {
  const NodeStore store(ThreeRows(PstLayout::Unicode, {.rows = TableShape::Rows::Subnode}));
  FailEachAllocation([&] {
    const table read(store.node());
    const table copy(read);
    EXPECT_EQ(Text(copy.get_impl().read_cell(0, kPropDisplayName)), "one");
    EXPECT_EQ((*copy.begin()).get_prop_list().size(), 4U);
  });
}

}  // namespace
}  // namespace tarn::test
