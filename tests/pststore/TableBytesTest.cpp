// Tables byte by byte: the description, the index and the rows, sound and damaged.

#include <gtest/gtest.h>

#include "pststore/BasicTable.h"
#include "pststore/HeapBytes.h"
#include "pststore/StoreHarness.h"
#include "pststore/Table.h"

namespace tarn::test {
namespace {

using pststore::database_corrupt;
using pststore::open_table;
using pststore::sig_mismatch;
using pststore::table_impl;

constexpr uint32_t kRowNode = 0x81F;

std::string Column(uint16_t id, uint16_t offset, uint8_t width, uint8_t bit) {
  return LeBytes(0x03, 2) + LeBytes(id, 2) + LeBytes(offset, 2) + LeBytes(width, 1) +
         LeBytes(bit, 1);
}

// The allocation 0x20 of a table's heap; 0x40 is the header of the row index, 0x60 the rows.
struct Description {
  std::array<uint16_t, 4> ends = {4, 4, 4, 5};
  std::vector<std::string> columns = {};
  uint32_t rows = 0x60;
  uint8_t signature = 0x7C;
  uint32_t rowIndex = 0x40;

  std::string bytes() const {
    std::string all = LeBytes(signature, 1) + LeBytes(columns.size(), 1);
    for (const uint16_t end : ends) AppendLe(all, end, 2);
    all += LeBytes(rowIndex, 4) + LeBytes(rows, 4) + LeBytes(0xEEEEEEEE, 4);
    for (const std::string& column : columns) all += column;
    return all;
  }
};

// Rows in the heap.
NodeStore InHeap(const Description& description, const std::string& rows) {
  return NodeStore(
      {HeapPage(kTableContext, 0x20, {description.bytes(), BthHeader(4, 4, 0, 0), rows})});
}

// Rows in pages of a subnode.
NodeStore InPages(Description description, std::vector<std::string> pages) {
  description.rows = kRowNode;
  PstNodeParts parts;
  parts.pages = {HeapPage(kTableContext, 0x20, {description.bytes(), BthHeader(4, 4, 0, 0)})};
  PstNodeParts rows;
  rows.pages = std::move(pages);
  parts.subnode(kRowNode, std::move(rows));
  return NodeStore(parts);
}

std::string OpenError(const NodeStore& store) {
  return Thrown<database_corrupt>([&] { open_table(store.node()); });
}

TEST(TableBytes, TwoRows) {
  // Columns: 0x67F2 of 4 bytes at 0, bit 0; 0x0E07 of 2 at 4, bit 1; 0x0E1F of 1 at 6, bit 2.
  const std::string description(
      "\x7C\x03\x04\x00\x06\x00\x07\x00\x08\x00"
      "\x40\x00\x00\x00\x60\x00\x00\x00\x00\x00\x00\x00"
      "\x03\x00\xF2\x67\x00\x00\x04\x00"
      "\x02\x00\x07\x0E\x04\x00\x02\x01"
      "\x0B\x00\x1F\x0E\x06\x00\x01\x02",
      46);
  const std::string rows(
      "\x25\x80\x00\x00\xCD\xAB\x01\xE0"
      "\x45\x80\x00\x00\xEE\xEE\xEE\x80",
      16);
  const std::string index = Record4(0x8025, 0) + Record4(0x8045, 1);
  const NodeStore store(
      {HeapPage(kTableContext, 0x20, {description, BthHeader(4, 4, 1, 0x80), rows, index})});
  const auto table = open_table(store.node());
  EXPECT_NE(dynamic_cast<pststore::basic_table<uint32_t>*>(table.get()), nullptr);
  EXPECT_EQ(table->size(), 2U);
  EXPECT_EQ(table->get_row_id(0), 0x8025U);
  EXPECT_EQ(table->get_row_id(1), 0x8045U);
  EXPECT_EQ(table->get_cell_value(0, 0x67F2), 0x8025U);
  EXPECT_EQ(table->get_cell_value(0, 0x0E07), 0xABCDU);
  EXPECT_EQ(table->get_cell_value(0, 0x0E1F), 1U);
  EXPECT_TRUE(table->prop_exists(1, 0x67F2));
  EXPECT_FALSE(table->prop_exists(1, 0x0E07));
  EXPECT_FALSE(table->prop_exists(1, 0x0E1F));
  EXPECT_EQ(table->get_prop_type(0x0E1F), 0x0B);
  EXPECT_EQ(table->get_prop_list().size(), 3U);
  EXPECT_EQ(table->lookup_row(0x8045), 1U);
  EXPECT_EQ(table->get_node().get_id(), NodeStore::kNid);
}

TEST(TableOpen, RefusesOneNode) {
  PstNodeParts parts;
  parts.pages = {"not even a heap"};
  const NodeStore store(parts, PstLayout::Unicode, 0x730);
  EXPECT_EQ(Thrown<pststore::not_implemented>([&] { open_table(store.node()); }), "gust table");
}

TEST(TableOpen, RefusesNodesWithoutAHeader) {
  const NodeStore empty(PstNodeParts{});
  EXPECT_EQ(Thrown<std::out_of_range>([&] { open_table(empty.node()); }), "offset >= size()");
  const NodeStore eleven({std::string(11, '\xEC')});
  EXPECT_EQ(Thrown<std::out_of_range>([&] { open_table(eleven.node()); }),
            "sizeof(T) + offset >= size()");
}

TEST(TableOpen, RefusesSignatures) {
  const NodeStore none({std::string(12, '\0')});
  EXPECT_EQ(Thrown<sig_mismatch>([&] { open_table(none.node()); }), "invalid heap_sig");

  const Description good;
  const std::vector<std::string> allocations = {good.bytes(), BthHeader(4, 4, 0, 0), ""};
  const NodeStore bag({HeapPage(kPropertyContext, 0x20, allocations)});
  EXPECT_EQ(Thrown<sig_mismatch>([&] { open_table(bag.node()); }), "invalid client_sig");

  Description wrong;
  wrong.signature = 0x7D;
  try {
    open_table(InHeap(wrong, "").node());
    FAIL();
  } catch (const sig_mismatch& caught) {
    EXPECT_STREQ(caught.what(), "heap_sig_tc expected");
    EXPECT_EQ(caught.address, 0U);
    EXPECT_EQ(caught.id, NodeStore::kNid);
    EXPECT_EQ(caught.first, 0x7DU);
    EXPECT_EQ(caught.second, 0x7CU);
  }
}

TEST(TableOpen, LooksAtTheIndexBeforeTheSignatures) {
  Description description;
  description.signature = 0;
  description.rowIndex = 0xA0;
  EXPECT_EQ(Thrown<std::length_error>([&] { open_table(InHeap(description, "").node()); }),
            "index > num_allocs");
  const NodeStore bag({HeapPage(kPropertyContext, 0x20, {description.bytes(), ""})});
  EXPECT_EQ(Thrown<std::length_error>([&] { open_table(bag.node()); }), "index > num_allocs");
}

// What is wrong with a table comes to light in the order in which it is read.
TEST(TableOpen, RefusesInOrder) {
  Description description;
  description.signature = 0x7D;
  description.columns = {Column(1, 0, 4, 0)};
  std::string bytes = description.bytes().substr(0, 29);  // the column is cut short
  const auto store = [&](uint8_t client) {
    return NodeStore({HeapPage(client, 0x20, {bytes, std::string(8, '\x04')})});
  };
  const NodeStore bag = store(kPropertyContext);
  EXPECT_EQ(Thrown<sig_mismatch>([&] { open_table(bag.node()); }), "invalid client_sig");
  const NodeStore other = store(kTableContext);
  EXPECT_EQ(Thrown<sig_mismatch>([&] { open_table(other.node()); }), "heap_sig_tc expected");
  bytes[0] = '\x7C';
  const NodeStore index = store(kTableContext);
  EXPECT_EQ(Thrown<sig_mismatch>([&] { open_table(index.node()); }), "bth_signature expected");
}

// A description too short to name its row index is no reason to skip the signatures.
TEST(TableOpen, LooksAtTheSignaturesOfShortDescriptions) {
  Description description;
  description.signature = 0x7D;
  const std::string bytes = description.bytes();
  for (size_t size = 1; size < 22; ++size) {
    const std::vector<std::string> allocations = {bytes.substr(0, size), BthHeader(4, 4, 0, 0)};
    const NodeStore table({HeapPage(kTableContext, 0x20, allocations)});
    EXPECT_EQ(Thrown<sig_mismatch>([&] { open_table(table.node()); }), "heap_sig_tc expected");
    const NodeStore bag({HeapPage(kPropertyContext, 0x20, allocations)});
    EXPECT_EQ(Thrown<sig_mismatch>([&] { open_table(bag.node()); }), "invalid client_sig");
  }
}

TEST(TableOpen, RefusesShortDescriptions) {
  const auto open = [](const std::string& description) {
    return OpenError(
        NodeStore({HeapPage(kTableContext, 0x20, {description, BthHeader(4, 4, 0, 0)})}));
  };
  Description description;
  description.rows = 0;
  const std::string bytes = description.bytes();
  EXPECT_EQ(open(bytes), "no exception");
  EXPECT_EQ(open(bytes.substr(0, 21)), "table description cut short");
  EXPECT_EQ(open(bytes.substr(0, 13)), "table description cut short");
  EXPECT_EQ(open(bytes.substr(0, 1)), "table description cut short");
  EXPECT_EQ(open(""), "table description cut short");
  description.columns = {Column(1, 0, 4, 0), Column(2, 0, 4, 0)};
  EXPECT_EQ(open(description.bytes()), "no exception");
  EXPECT_EQ(open(description.bytes() + "more"), "no exception");
  EXPECT_EQ(open(description.bytes().substr(0, 37)), "table columns cut short");
  const NodeStore rootless({HeapPage(kTableContext, 0, {bytes})});
  EXPECT_EQ(OpenError(rootless), "table description cut short");
}

TEST(TableOpen, RowIndexes) {
  const auto open = [](const std::string& header) {
    return NodeStore({HeapPage(kTableContext, 0x20, {Description().bytes(), header, ""})});
  };
  const auto kind = [&](uint8_t width) {
    const NodeStore store = open(BthHeader(4, width, 0, 0));
    const auto table = open_table(store.node());
    return dynamic_cast<pststore::basic_table<uint32_t>*>(table.get()) != nullptr ? 4 : 2;
  };
  EXPECT_EQ(kind(4), 4);
  EXPECT_EQ(kind(2), 2);
  // Everything but 4 is taken for 2.
  for (const uint8_t width : std::initializer_list<uint8_t>{0, 1, 3, 6, 8}) {
    EXPECT_EQ(Thrown<std::logic_error>([&] { kind(width); }), "invalid entry size");
  }
  EXPECT_EQ(Thrown<std::logic_error>([&] { open_table(open(BthHeader(2, 4, 0, 0)).node()); }),
            "invalid key size");
  EXPECT_EQ(Thrown<sig_mismatch>([&] { open_table(open(std::string(8, '\x04')).node()); }),
            "bth_signature expected");
  for (const std::string header : {"", "\xB5\x04", "\xB5\x04\x04"}) {
    EXPECT_EQ(Thrown<std::length_error>([&] { open_table(open(header).node()); }),
              "buffer.size() > size()");
  }
}

TEST(TableOpen, RowsThatDoNotExist) {
  Description description;
  description.rows = kRowNode;
  EXPECT_EQ(MissingKey<uint32_t>([&] { open_table(InHeap(description, "").node()); }), kRowNode);
  description.rows = 0xA0;
  EXPECT_EQ(Thrown<std::length_error>([&] { open_table(InHeap(description, "").node()); }),
            "index > num_allocs");
}

TEST(TableBytes, TheSecondByteOfTheBitmap) {
  Description description;
  description.ends = {4, 4, 4, 6};
  description.columns = {Column(7, 0, 4, 7), Column(8, 0, 4, 8), Column(15, 0, 4, 15),
                         Column(16, 0, 4, 16)};
  const std::string rows(
      "\0\0\0\0\x01\x00"
      "\0\0\0\0\x00\x80"
      "\0\0\0\0\x00\x01",
      18);
  const NodeStore heap = InHeap(description, rows);
  const NodeStore pages = InPages(description, {rows});
  for (const auto& table : {open_table(heap.node()), open_table(pages.node())}) {
    EXPECT_TRUE(table->prop_exists(0, 7));
    EXPECT_FALSE(table->prop_exists(0, 8));
    EXPECT_FALSE(table->prop_exists(1, 7));
    EXPECT_TRUE(table->prop_exists(1, 8));
    EXPECT_FALSE(table->prop_exists(1, 15));
    EXPECT_TRUE(table->prop_exists(2, 15));
    EXPECT_EQ(Thrown<database_corrupt>([&] { table->prop_exists(0, 16); }),
              "bit beyond the existence bitmap");
    EXPECT_EQ(Thrown<database_corrupt>([&] { table->get_cell_value(0, 16); }),
              "bit beyond the existence bitmap");
    EXPECT_EQ(Thrown<std::out_of_range>([&] { table->prop_exists(3, 16); }), "row >= size()");
  }
}

TEST(TableBytes, CellsOfOtherWidths) {
  Description description;
  description.ends = {4, 4, 8, 9};
  description.columns = {Column(3, 4, 3, 0), Column(4, 4, 3, 1), Column(5, 4, 0, 0)};
  const NodeStore store = InHeap(description, std::string("\0\0\0\0abcd\x80", 9));
  const auto table = open_table(store.node());
  EXPECT_EQ(Thrown<database_corrupt>([&] { table->get_cell_value(0, 3); }),
            "get_cell_value: invalid cell size");
  EXPECT_EQ(Thrown<database_corrupt>([&] { table->get_cell_value(0, 5); }),
            "get_cell_value: invalid cell size");
  EXPECT_EQ(MissingKey<uint16_t>([&] { table->get_cell_value(0, 4); }), 4);
}

TEST(TableBytes, CellsThatLeaveTheirRow) {
  Description description;
  description.ends = {8, 8, 8, 9};
  description.columns = {Column(1, 8, 1, 0), Column(2, 8, 2, 0),      Column(3, 6, 4, 0),
                         Column(4, 2, 8, 0), Column(5, 0xFFFF, 8, 0), Column(6, 1, 8, 0)};
  const std::string rows("\0\1\2\3\4\5\6\7\x80\0\1\2\3\4\5\6\7\x80", 18);
  const NodeStore heap = InHeap(description, rows);
  const NodeStore pages = InPages(description, {rows});
  for (const auto& table : {open_table(heap.node()), open_table(pages.node())}) {
    EXPECT_EQ(table->get_cell_value(1, 1), 0x80U);
    EXPECT_EQ(table->get_cell_value(1, 6), 0x8007060504030201U);
    for (const uint16_t prop : std::initializer_list<uint16_t>{2, 3, 4, 5}) {
      EXPECT_EQ(Thrown<database_corrupt>([&] { table->get_cell_value(0, prop); }),
                "table cell beyond its row");
      EXPECT_EQ(Thrown<database_corrupt>([&] { table->read_cell(0, prop); }),
                "table cell beyond its row");
    }
  }
}

TEST(TableBytes, ARepeatedColumnCountsAsTheLastOneSays) {
  Description description;
  description.ends = {8, 8, 8, 9};
  description.columns = {Column(1, 0, 4, 1), Column(1, 4, 2, 0)};
  const NodeStore store = InHeap(description, std::string("\1\0\0\0\2\0\3\0\x80", 9));
  const auto table = open_table(store.node());
  EXPECT_EQ(table->get_prop_list().size(), 1U);
  EXPECT_EQ(table->get_cell_value(0, 1), 2U);
}

TEST(TableBytes, WhatDoesNotFillARowIsNone) {
  Description description;
  const NodeStore store = InHeap(description, std::string("\1\0\0\0\0\2\0\0\0", 9));
  EXPECT_EQ(open_table(store.node())->size(), 1U);
}

TEST(TableBytes, RowsWithoutASize) {
  Description description;
  description.ends = {0, 0, 0, 0};
  description.columns = {Column(1, 0, 4, 0)};
  const std::string text = "table of rows without a size";
  for (const uint32_t rows : {0U, 0x60U}) {
    description.rows = rows;
    const NodeStore store = InHeap(description, "1234");
    const auto table = open_table(store.node());
    EXPECT_EQ(Thrown<database_corrupt>([&] { table->size(); }), text);
    EXPECT_EQ(Thrown<database_corrupt>([&] { table->get_row_id(0); }), text);
    EXPECT_EQ(Thrown<database_corrupt>([&] { table->prop_exists(0, 1); }), text);
    EXPECT_FALSE(table->prop_exists(0, 2));
  }
  EXPECT_EQ(
      Thrown<database_corrupt>([&] { open_table(InPages(description, {"12"}).node())->size(); }),
      text);
}

TEST(TableBytes, RowsWithoutRoomForTheirId) {
  Description description;
  description.ends = {0, 0, 2, 3};
  const auto table = open_table(InHeap(description, "123456").node());
  EXPECT_EQ(table->size(), 2U);
  EXPECT_EQ(Thrown<database_corrupt>([&] { table->get_row_id(0); }), "table cell beyond its row");
}

TEST(TableBytes, BitmapsOfNegativeSize) {
  Description description;
  description.ends = {4, 4, 6, 5};
  description.columns = {Column(1, 0, 4, 0)};
  const auto table = open_table(InHeap(description, "12345").node());
  EXPECT_EQ(Thrown<database_corrupt>([&] { table->prop_exists(0, 1); }),
            "existence bitmap of negative size");
  EXPECT_EQ(table->get_row_id(0), 0x34333231U);
}

TEST(TableBytes, RowsLargerThanTheirPages) {
  Description description;
  description.ends = {4, 4, 4, 9};
  description.columns = {Column(1, 0, 4, 0)};
  const auto none = open_table(InPages(description, {"12345678"}).node());
  EXPECT_EQ(none->size(), 0U);
  EXPECT_EQ(Thrown<std::out_of_range>([&] { none->get_row_id(0); }), "row >= size()");
  // The last page counts by its own size, the place of a row by that of the first.
  const auto last = open_table(InPages(description, {"12345678", std::string(8169, 'x')}).node());
  EXPECT_EQ(last->size(), 907U);
  EXPECT_EQ(Thrown<database_corrupt>([&] { last->get_row_id(0); }),
            "table row larger than its page");
  EXPECT_EQ(Thrown<database_corrupt>([&] { last->prop_exists(0, 1); }),
            "table row larger than its page");
}

// Rows 0 and 1 in the first page, 2 and 3 in the second, which is too short for its bitmaps.
TEST(TableBytes, PagesShorterThanTheirRows) {
  Description description;
  description.ends = {4, 4, 4, 6};
  description.columns = {Column(1, 0, 4, 0), Column(8, 0, 4, 8)};
  const std::string row("\1\0\0\0\xFF\xFF", 6);
  PstFileBuilder file;
  description.rows = kRowNode;
  // 8176 / 6 rows would fit; the stream claims three pages and the tests look at the second.
  std::string first;
  for (int i = 0; i < 1362; ++i) first += row;
  const std::string third = row;
  const std::array<uint64_t, 3> ids = {file.block(first), file.block(row.substr(0, 5)),
                                       file.block(third)};
  const std::array<SubnodeEntry, 1> entries = {
      {{kRowNode, file.extendedBlock(1, ids, 2 * 8176 + 6), 0}}};
  const uint64_t heap =
      file.block(HeapPage(kTableContext, 0x20, {description.bytes(), BthHeader(4, 4, 0, 0)}));
  file.node(NodeStore::kNid, heap, file.subnodes(entries));
  const WrittenStore store(file.bytes());
  const auto table = open_table(store.context()->lookup_node(NodeStore::kNid));
  EXPECT_EQ(table->size(), 2U * 1362 + 1);
  EXPECT_TRUE(table->prop_exists(1361, 8));
  EXPECT_EQ(table->get_row_id(1362), 1U);
  EXPECT_TRUE(table->prop_exists(1362, 1));
  // The bitmap is read up to the end of the page, and the rest of it is zeros.
  EXPECT_FALSE(table->prop_exists(1362, 8));
  EXPECT_EQ(Thrown<std::out_of_range>([&] { table->prop_exists(1363, 1); }), "offset >= size()");
  EXPECT_EQ(Thrown<std::out_of_range>([&] { table->get_row_id(1363); }), "offset >= size()");
  EXPECT_TRUE(table->prop_exists(2724, 8));
}

// A page of holes for every id: the file is small, the table is not, and only what is asked for is
// looked at.
TEST(TableBytes, MillionsOfRowsInASmallFile) {
  Description description;
  description.ends = {1, 1, 1, 1};
  description.rows = kRowNode;
  PstFileBuilder file;
  const std::vector<uint64_t> holes(1021, 0);
  const uint32_t size = 1021 * 8176;
  const std::array<SubnodeEntry, 1> entries = {{{kRowNode, file.extendedBlock(1, holes, size), 0}}};
  const uint64_t heap =
      file.block(HeapPage(kTableContext, 0x20, {description.bytes(), BthHeader(4, 4, 0, 0)}));
  file.node(NodeStore::kNid, heap, file.subnodes(entries));
  const WrittenStore store(file.bytes());
  PlainKernelUsageRecord before;
  PlainKernelUsage(&before);
  const auto table = open_table(store.context()->lookup_node(NodeStore::kNid));
  EXPECT_EQ(table->size(), size);
  EXPECT_FALSE(table->prop_exists(size - 1, 1));
  PlainKernelUsageRecord after;
  PlainKernelUsage(&after);
  EXPECT_LT(after.liveBytes - before.liveBytes, 100000U);
}

}  // namespace
}  // namespace tarn::test
