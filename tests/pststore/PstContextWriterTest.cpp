// What the writers of heaps, trees on heaps, property contexts and tables write.
#include <gtest/gtest.h>

#include <initializer_list>
#include <stdexcept>

#include "NaivePst.h"
#include "support/pst/BthBuilder.h"
#include "support/pst/HeapBuilder.h"
#include "support/pst/PropertyContextBuilder.h"
#include "support/pst/PstBytes.h"
#include "support/pst/PstFileBuilder.h"
#include "support/pst/TableContextBuilder.h"

namespace tarn::test {
namespace {

using namespace std::string_literals;

constexpr PstLayout kBoth[] = {PstLayout::Ansi, PstLayout::Unicode};

TEST(HeapBuilder, PageHasHeaderAllocationsAndMap) {
  HeapBuilder heap(PstLayout::Unicode, kPropertyContext);
  EXPECT_EQ(heap.add(""), 0U);
  EXPECT_EQ(heap.add("abc"), 0x20U);
  EXPECT_EQ(heap.reserve(2), 0x40U);
  heap.set(0x40, "xy");
  heap.setRoot(0x40);
  ASSERT_EQ(heap.pages().size(), 1U);
  // The map starts on an even offset, and ends with the end of the last allocation. Level 0: more
  // than 3584 bytes are free.
  EXPECT_EQ(heap.pages()[0],
            "\x12\x00\xEC\xBC\x40\0\0\0\0\0\0\0abcxy\0\x02\0\0\0\x0C\0\x0F\0\x11\0"s);
}

TEST(HeapBuilder, RefusesWhatIsNoAllocation) {
  HeapBuilder heap(PstLayout::Unicode, kTableContext);
  EXPECT_THROW(heap.add(std::string(3581, 'a')), std::length_error);
  EXPECT_EQ(heap.add(std::string(3580, 'a')), 0x20U);
  EXPECT_THROW(heap.set(0x20, std::string(3581, 'a')), std::out_of_range);
  EXPECT_THROW(heap.set(0x40, "a"), std::out_of_range);
}

TEST(HeapBuilder, FilledPagesHaveTheFullSize) {
  for (PstLayout layout : kBoth) {
    const size_t full = layout == PstLayout::Ansi ? 8180 : 8176;
    HeapBuilder heap(layout, kTableContext);
    heap.add(std::string(3580, 'a'));
    heap.add(std::string(3580, 'b'));
    // Header 12, map 4 + 2 * 4: the page is full to the last byte.
    EXPECT_EQ(heap.add(std::string(full - 7160 - 12 - 12, 'c')), 0x60U);
    EXPECT_EQ(heap.add("d"), 0x10020U);
    const auto pages = heap.pages();
    ASSERT_EQ(pages.size(), 2U);
    EXPECT_EQ(pages[0].size(), full);
    EXPECT_EQ(GetLe(pages[0], 0, 2), full - 12);
    EXPECT_EQ(pages[0].substr(8, 4), "\x0F\0\0\0"s);
    EXPECT_EQ(pages[1], "\x04\0d\0\x01\0\0\0\x02\0\x03\0"s);
  }
}

TEST(HeapBuilder, SinglePageFillsUpByLevels) {
  const auto level = [](size_t free) {
    HeapBuilder heap(PstLayout::Unicode, kTableContext);
    heap.add(std::string(3580, 'a'));
    const size_t rest = 8176 - 12 - 3580 - 4 - 2 * 3 - free;
    heap.add(std::string(rest < 3580 ? rest : 0, 'b'));
    return GetLe(heap.pages()[0], 8, 4);
  };
  EXPECT_EQ(level(2560), 1U);
  EXPECT_EQ(level(2558), 2U);
  EXPECT_EQ(level(1024), 6U);
  EXPECT_EQ(level(1022), 7U);
}

TEST(HeapBuilder, EighthPageAndEach128thAfterItHoldFillLevels) {
  HeapBuilder heap(PstLayout::Unicode, kTableContext);
  std::vector<uint32_t> hids;
  for (int i = 0; i < 137; ++i) {
    heap.add(std::string(3580, 'a'));
    hids.push_back(heap.add(std::string(3580, 'b')));
  }
  const auto pages = heap.pages();
  ASSERT_EQ(pages.size(), 137U);
  EXPECT_EQ(hids[136], 136U << 16 | 0x40);
  // 8176 - 7160 - 10 for the map, less the header of 12, 2 or 66: level 8 is 512 to 767, 7 768 on.
  EXPECT_EQ(pages[0].substr(8, 4), "\x77\x77\x77\x77");
  EXPECT_EQ(pages[7].substr(2, 2), "aa");
  EXPECT_EQ(pages[8].substr(2, 65), std::string(64, '\x77') + "a");
  EXPECT_EQ(pages[9].substr(2, 2), "aa");
  EXPECT_EQ(pages[72].substr(2, 2), "aa");
  EXPECT_EQ(pages[136].substr(2, 65), "\x07"s + std::string(63, '\0') + "a");
}

TEST(BthBuilder, LeafRecordsHaveNoGaps) {
  HeapBuilder heap(PstLayout::Unicode, kTableContext);
  const uint32_t header = heap.reserve(8);
  BthBuilder tree(4, 2);
  tree.add(5, "\x01\x02");
  tree.add(7, "\x03\x04");
  tree.write(heap, header);
  EXPECT_EQ(heap.pages()[0].substr(12, 20),
            "\xB5\x04\x02\x00\x40\0\0\0\x05\0\0\0\x01\x02\x07\0\0\0\x03\x04"s);
}

TEST(BthBuilder, EmptyTreeHasNoRoot) {
  HeapBuilder heap(PstLayout::Unicode, kTableContext);
  const uint32_t header = heap.reserve(8);
  BthBuilder(2, 6).write(heap, header);
  EXPECT_EQ(heap.pages()[0].substr(12, 8), "\xB5\x02\x06\x00\0\0\0\0"s);
}

std::string ThreeRecords(const BthShape& shape) {
  HeapBuilder heap(PstLayout::Unicode, kTableContext);
  const uint32_t header = heap.reserve(8);
  BthBuilder tree(2, 2, shape);
  for (uint32_t key = 1; key <= 3; ++key) tree.add(key, "vw");
  tree.write(heap, header);
  const std::string page = heap.pages()[0];
  return page.substr(12, GetLe(page, 0, 2) - 12);
}

TEST(BthBuilder, IndexRecordsAreAKeyAndAHeapId) {
  EXPECT_EQ(ThreeRecords({.fanOut = 2}),
            "\xB5\x02\x02\x01\x80\0\0\0"
            "\x01\0vw\x02\0vw"
            "\x03\0vw"
            "\x01\0\x40\0\0\0\x03\0\x60\0\0\0"s);
  EXPECT_EQ(ThreeRecords({.minIndexLevels = 1}),
            "\xB5\x02\x02\x01\x60\0\0\0"
            "\x01\0vw\x02\0vw\x03\0vw"
            "\x01\0\x40\0\0\0"s);
}

TEST(BthBuilder, StrideOf8FillsUpAllRecordsAndCountsTheLeaves) {
  BthShape shape = BthShape::StrideOf8();
  shape.fanOut = 2;
  EXPECT_EQ(ThreeRecords(shape),
            "\xB5\x02\x02\x02\x80\0\0\0"
            "\x01\0vw\0\0\0\0\x02\0vw\0\0\0\0"
            "\x03\0vw\0\0\0\0"
            "\x01\0\0\0\x40\0\0\0\x03\0\0\0\x60\0\0\0"s);
  shape.fanOut = 0;
  EXPECT_EQ(ThreeRecords(shape)[3], '\0');
  shape.levels = 9;
  EXPECT_EQ(ThreeRecords(shape)[3], '\x09');
}

TEST(PropertyContext, SmallNumbersAreInTheRecord) {
  PropertyContextBuilder bag(PstLayout::Unicode);
  bag.number(0x3602, kTypeInt32, 7).number(0x360A, kTypeBoolean, 1).text(0x3001, u"ab");
  bag.text(0x001A, "").number(0x0017, kTypeInt16, 0x1234).raw(0x6000, kTypeString, 0x8E5);
  EXPECT_EQ(bag.build().pages.at(0).substr(0, 72),
            "\x48\x00\xEC\xBC\x20\0\0\0\0\0\0\0"
            "\xB5\x02\x06\x00\x60\0\0\0"
            "a\0b\0"
            "\x17\0\x02\0\x34\x12\0\0"
            "\x1A\0\x1E\0\0\0\0\0"
            "\x01\x30\x1F\0\x40\0\0\0"
            "\x02\x36\x03\0\x07\0\0\0"
            "\x0A\x36\x0B\0\x01\0\0\0"
            "\x00\x60\x1F\0\xE5\x08\0\0"s);
}

TEST(PropertyContext, LongValuesAreInSubnodes) {
  PropertyContextBuilder bag(PstLayout::Ansi);
  bag.binary(0x3701, std::string(3580, 'a'));
  bag.binary(0x3702, std::string(3581, 'b'));
  bag.streamed(0x3703, kTypeBinary, PstNodeParts::OfPages({"c"}));
  const PstNodeParts parts = bag.build();
  ASSERT_EQ(parts.subnodes.size(), 2U);
  EXPECT_EQ(parts.subnodes[0].nid, 0x81FU);
  EXPECT_EQ(parts.subnodes[1].nid, 0x83FU);
  PstFileBuilder file({.layout = PstLayout::Ansi});
  file.node(0x24, parts);
  const NaivePst read(file.bytes());
  const auto properties = read.properties(read.nodes().at(0x24));
  EXPECT_EQ(properties.at(0x3701), std::string(3580, 'a'));
  EXPECT_EQ(properties.at(0x3702), std::string(3581, 'b'));
  EXPECT_EQ(properties.at(0x3703), "c");
  EXPECT_EQ(read.problems(), "");
}

TEST(PropertyContext, ReplacesLeavesOutAndFinds) {
  PropertyContextBuilder bag(PstLayout::Unicode);
  bag.text(0x37, "first").text(0x37, u"x").text(0x38, "gone").without(0x38);
  EXPECT_FALSE(bag.has(0x38));
  ASSERT_NE(bag.find(0x37), nullptr);
  EXPECT_EQ(bag.find(0x37)->first, kTypeString);
  EXPECT_EQ(bag.find(0x37)->second, "x\0"s);
  EXPECT_EQ(bag.raw(0x37, 3, 1).find(0x37), nullptr);
}

TEST(PropertyContext, ThousandsOfPropertiesMakeATreeOfSeveralLevels) {
  for (PstLayout layout : kBoth) {
    PropertyContextBuilder bag(layout);
    for (uint16_t id = 1; id <= 3000; ++id) bag.binary(id, "value " + std::to_string(id));
    PstFileBuilder file({.layout = layout, .encoding = PstEncoding::Permute});
    file.node(0x24, bag.build());
    bag.shape({.fanOut = 8});
    file.node(0x44, bag.build());
    const NaivePst read(file.bytes());
    EXPECT_EQ(read.problems(), "");
    EXPECT_EQ(read.allocation(read.nodes().at(0x24), 0x20)[3], '\x01');
    EXPECT_EQ(read.allocation(read.nodes().at(0x44), 0x20)[3], '\x03');
    for (uint32_t nid : {0x24U, 0x44U}) {
      const auto properties = read.properties(read.nodes().at(nid));
      EXPECT_EQ(properties.size(), 3000U);
      EXPECT_EQ(properties.at(2500), "value 2500");
    }
  }
}

TEST(TableContext, RowsBeginWithRowIdAndEndWithTheBitmap) {
  TableContextBuilder table(PstLayout::Unicode);
  table.column(0x360A, kTypeBoolean).column(0x3001, kTypeString).column(0x3007, kTypeTime);
  table.column(0x7000, kTypeInt16).column(0x7001, kTypeInt32, 3);
  auto row = table.row(0x8025);
  row.cell(0x360A, 1).cell(0x3001, "ab").cell(0x7000, 0x1234).cell(0x7001, 0x563412);
  table.row(0x8005).cell(0x3007, "12345678").absent(0x3007);
  EXPECT_EQ(table.rowSize(), 27U);
  const std::string page = table.build().pages.at(0);
  EXPECT_EQ(page.substr(0, 12), "\xAA\x00\xEC\x7C\x20\0\0\0\0\0\0\0"s);
  EXPECT_EQ(page.substr(12, 22 + 56),
            "\x7C\x07\x14\x00\x16\x00\x1A\x00\x1B\x00\x60\0\0\0\xA0\0\0\0\0\0\0\0"
            "\x1F\0\x01\x30\x08\0\x04\x02"
            "\x40\0\x07\x30\x0C\0\x08\x03"
            "\x0B\0\x0A\x36\x16\0\x01\x05"
            "\x03\0\xF2\x67\x00\0\x04\x00"
            "\x03\0\xF3\x67\x04\0\x04\x01"
            "\x02\0\x00\x70\x14\0\x02\x04"
            "\x03\0\x01\x70\x17\0\x03\x06"s);
  EXPECT_EQ(page.substr(90, 2 + 8), "ab\xB5\x04\x04\x00\x80\0\0\0"s);
  EXPECT_EQ(page.substr(100, 16), "\x05\x80\0\0\x01\0\0\0\x25\x80\0\0\0\0\0\0"s);
  EXPECT_EQ(page.substr(116, 27),
            "\x25\x80\0\0\x01\0\0\0\x40\0\0\0\0\0\0\0\0\0\0\0\x34\x12\x01"
            "\x12\x34\x56\xEE"s);
  EXPECT_EQ(page.substr(143, 27),
            "\x05\x80\0\0\x02\0\0\0\0\0\0\0"
            "12345678"
            "\0\0\0\0\0\0\xC0"s);
}

TEST(TableContext, WithoutRowsHasNeitherMatrixNorIndexRecords) {
  TableContextBuilder table(PstLayout::Ansi, {.hasRowColumns = false});
  const std::string page = table.build().pages.at(0);
  EXPECT_EQ(page.substr(12, 22),
            "\x7C\x00\x04\x00\x04\x00\x04\x00\x04\x00\x40\0\0\0\0\0\0\0\0\0\0\0"s);
  EXPECT_EQ(page.substr(34, 8), "\xB5\x04\x02\x00\0\0\0\0"s);
}

TEST(TableContext, RowIndexHasTheWidthAskedFor) {
  for (uint8_t width : std::initializer_list<uint8_t>{0, 2, 4}) {
    TableContextBuilder table(PstLayout::Ansi, {.rowIndexWidth = width});
    table.row(0x24);
    const std::string page = table.build().pages.at(0);
    const std::string wide = "\xB5\x04\x04\x00\x60\0\0\0\x24\0\0\0\0\0\0\0"s;
    const std::string narrow = "\xB5\x04\x02\x00\x60\0\0\0\x24\0\0\0\0\0"s;
    EXPECT_EQ(page.substr(50, width == 4 ? 16 : 14), width == 4 ? wide : narrow);
  }
}

TEST(TableContext, BitEightIsTheTopBitOfTheSecondByte) {
  TableContextBuilder table(PstLayout::Unicode);
  for (uint16_t id = 1; id <= 7; ++id) table.column(id, kTypeBoolean);
  table.row(1).cell(7, 1);
  EXPECT_EQ(table.columns().back().bit, 8);
  PstFileBuilder file;
  file.node(0x24, table.build());
  const NaivePst read(file.bytes());
  EXPECT_EQ(read.rows(read.nodes().at(0x24)).at(0).second,
            "\x01\0\0\0\x01\0\0\0\0\0\0\0\0\0\x01\xC0\x80"s);
}

TEST(TableContext, RowsNeverCrossABlock) {
  for (PstLayout layout : kBoth) {
    const size_t full = layout == PstLayout::Ansi ? 8180 : 8176;
    TableContextBuilder table(layout);
    for (uint16_t id = 1; id <= 24; ++id) table.column(id, kTypeInt32);
    ASSERT_EQ(table.rowSize(), 108U);  // 75 rows and a rest of 76 or 80 bytes
    for (uint32_t i = 0; i < 151; ++i) table.row(1000 - i).cell(24, i);
    PstFileBuilder file({.layout = layout, .encoding = PstEncoding::Cyclic});
    file.node(0x24, table.build());
    const NaivePst read(file.bytes());
    EXPECT_EQ(read.problems(), "");
    const NaiveNode& node = read.nodes().at(0x24);
    const auto pages = read.pages(read.subnodes(node.subnodeBid).at(0x81F).dataBid);
    ASSERT_EQ(pages.size(), 3U);
    EXPECT_EQ(pages[0].size(), full);
    EXPECT_EQ(pages[1].size(), full);
    EXPECT_EQ(pages[2].size(), 108U);
    EXPECT_EQ(GetLe(pages[1], 0, 4), 925U);
    EXPECT_EQ(GetLe(pages[1], 100, 4), 75U);
    EXPECT_EQ(read.rows(node).size(), 151U);
  }
}

TEST(TableContext, OneRowMayBeInASubnode) {
  TableContextBuilder table(PstLayout::Unicode, {.rows = TableShape::Rows::Subnode});
  table.row(0x24);
  const PstNodeParts parts = table.build();
  ASSERT_EQ(parts.subnodes.size(), 1U);
  EXPECT_EQ(parts.subnodes[0].parts.pages.at(0), "\x24\0\0\0\x01\0\0\0\xC0"s);
  TableContextBuilder full(PstLayout::Unicode, {.rows = TableShape::Rows::Heap});
  for (uint32_t i = 0; i < 398; ++i) full.row(i);
  EXPECT_THROW(full.build(), std::length_error);
}

TEST(TableContext, LongCellsAreInSubnodes) {
  TableContextBuilder table(PstLayout::Unicode);
  table.column(0x3001, kTypeBinary).column(0x3002, kTypeBinary);
  table.row(1).cell(0x3001, std::string(3581, 'a')).streamed(0x3002, PstNodeParts::OfPages({"b"}));
  const PstNodeParts parts = table.build();
  ASSERT_EQ(parts.subnodes.size(), 2U);
  EXPECT_EQ(parts.subnodes[0].nid, 0x81FU);
  EXPECT_EQ(parts.subnodes[0].parts.pages.at(0), std::string(3581, 'a'));
  EXPECT_EQ(parts.subnodes[1].parts.pages.at(0), "b");
}

TEST(TableContext, DeviatingFieldsAreAsGiven) {
  TableShape shape;
  shape.rgib = {1, 2, 3, 0};
  shape.hnidRows = 0x12345;
  TableContextBuilder table(PstLayout::Unicode, shape);
  table.row(1);
  const std::string page = table.build().pages.at(0);
  EXPECT_EQ(page.substr(14, 8), "\x01\0\x02\0\x03\0\0\0"s);
  EXPECT_EQ(page.substr(26, 4), "\x45\x23\x01\0"s);
  EXPECT_THROW(table.column(1, 2), std::logic_error);
}

}  // namespace
}  // namespace tarn::test
