#include "pststore/Heap.h"

#include <gtest/gtest.h>

#include "pststore/Blocks.h"
#include "pststore/HeapBytes.h"
#include "pststore/HnidStream.h"
#include "pststore/StoreHarness.h"

namespace tarn::test {
namespace {

using pststore::byte_vector;
using pststore::database_corrupt;
using pststore::heap_ptr;
using pststore::open_heap;
using pststore::sig_mismatch;

// "abc" under 0x20, nothing under 0x40, "defgh" under 0x60; the page map is at 20.
std::string ThreeAllocations() { return HeapPage(kPropertyContext, 0x60, {"abc", "", "defgh"}); }

heap_ptr Open(const NodeStore& store) { return open_heap(store.node()); }

TEST(HeapOpen, HandBytes) {
  // The page that the tests below use, drawn out once.
  const std::string expected(
      "\x14\x00\xEC\xBC\x60\x00\x00\x00\x00\x00\x00\x00"
      "abcdefgh"
      "\x03\x00\x00\x00\x0C\x00\x0F\x00\x0F\x00\x14\x00",
      32);
  EXPECT_EQ(ThreeAllocations(), expected);
}

TEST(HeapOpen, GivesRootAndNode) {
  const NodeStore store({ThreeAllocations()});
  const heap_ptr heap = open_heap(store.node(), kPropertyContext);
  EXPECT_EQ(heap->get_root_id(), 0x60U);
  EXPECT_EQ(heap->get_node().get_id(), NodeStore::kNid);
}

TEST(HeapOpen, RefusesNodesWithoutAHeader) {
  const NodeStore empty(PstNodeParts{});
  EXPECT_EQ(Thrown<std::out_of_range>([&] { Open(empty); }), "offset >= size()");
  const NodeStore eleven({ThreeAllocations().substr(0, 11)});
  EXPECT_EQ(Thrown<std::out_of_range>([&] { Open(eleven); }), "sizeof(T) + offset >= size()");
  EXPECT_EQ(Thrown<std::out_of_range>([&] { open_heap(eleven.node(), kTableContext); }),
            "sizeof(T) + offset >= size()");
  const NodeStore twelve({ThreeAllocations().substr(0, 12)});
  EXPECT_EQ(Open(twelve)->get_root_id(), 0x60U);
}

TEST(HeapOpen, RefusesSignatures) {
  std::string page = ThreeAllocations();
  page[2] = '\xEB';
  const NodeStore wrong({page});
  try {
    // The heap's own signature comes first.
    open_heap(wrong.node(), kTableContext);
    FAIL();
  } catch (const sig_mismatch& caught) {
    EXPECT_STREQ(caught.what(), "invalid heap_sig");
    EXPECT_EQ(caught.address, 0U);
    EXPECT_EQ(caught.id, NodeStore::kNid);
    EXPECT_EQ(caught.first, 0xEBU);
    EXPECT_EQ(caught.second, 0xECU);
  }

  const NodeStore properties({ThreeAllocations()});
  try {
    open_heap(properties.node(), kTableContext);
    FAIL();
  } catch (const sig_mismatch& caught) {
    EXPECT_STREQ(caught.what(), "invalid client_sig");
    EXPECT_EQ(caught.address, 0U);
    EXPECT_EQ(caught.id, NodeStore::kNid);
    EXPECT_EQ(caught.first, 0xBCU);
    EXPECT_EQ(caught.second, 0x7CU);
  }
  EXPECT_NO_THROW(open_heap(properties.node()));
}

TEST(Heap, TheEmptyAllocation) {
  const NodeStore store({ThreeAllocations()});
  const heap_ptr heap = Open(store);
  EXPECT_EQ(heap->size(0), 0U);
  byte_vector buffer;
  EXPECT_EQ(heap->read(buffer, 0, 0), 0U);
  EXPECT_TRUE(heap->read(0).empty());
  EXPECT_EQ(Thrown<std::length_error>([&] { heap->read(buffer, 0, 1); }), "offset > size()");
  buffer.resize(1, '?');
  EXPECT_EQ(Thrown<std::length_error>([&] { heap->read(buffer, 0, 0); }), "buffer.size() > size()");
}

TEST(Heap, ReadsAllocations) {
  for (const PstLayout layout : {PstLayout::Ansi, PstLayout::Unicode}) {
    const NodeStore store(PstNodeParts::Stream(ThreeAllocations(), 8176), layout);
    const heap_ptr heap = Open(store);
    EXPECT_EQ(heap->size(0x20), 3U);
    EXPECT_EQ(heap->size(0x40), 0U);
    EXPECT_EQ(heap->size(0x60), 5U);
    EXPECT_EQ(Text(heap->read(0x20)), "abc");
    EXPECT_EQ(Text(heap->read(0x40)), "");
    EXPECT_EQ(Text(heap->read(0x60)), "defgh");
    byte_vector buffer(2);
    EXPECT_EQ(heap->read(buffer, 0x60, 1), 2U);
    EXPECT_EQ(Text(buffer), "ef");
    EXPECT_EQ(heap->read(buffer, 0x60, 3), 2U);
    EXPECT_EQ(Text(buffer), "gh");
  }
}

TEST(Heap, ReadsOtherPages) {
  const NodeStore store(
      {HeapPage(kPropertyContext, 0, {"first"}), NextHeapPage({"second", "third"})});
  const heap_ptr heap = Open(store);
  EXPECT_EQ(Text(heap->read(0x20)), "first");
  EXPECT_EQ(Text(heap->read(0x10020)), "second");
  EXPECT_EQ(Text(heap->read(0x10040)), "third");
  EXPECT_EQ(Thrown<std::out_of_range>([&] { heap->size(0x20020); }),
            "index >= m_child_blocks.size()");
}

TEST(Heap, RefusesPagesBeyondALonePage) {
  const NodeStore store({ThreeAllocations()});
  EXPECT_EQ(Thrown<std::out_of_range>([&] { Open(store)->read(0x10020); }), "index > 0");
}

TEST(Heap, RefusesReadsBeyondAnAllocationInOrder) {
  const NodeStore store({ThreeAllocations()});
  const heap_ptr heap = Open(store);
  byte_vector six(6, '?');
  EXPECT_EQ(Thrown<std::length_error>([&] { heap->read(six, 0x60, 9); }), "buffer.size() > size()");
  EXPECT_EQ(Text(six), "??????");
  byte_vector five(5, '?');
  EXPECT_EQ(Thrown<std::length_error>([&] { heap->read(five, 0x60, 6); }), "offset > size()");
  EXPECT_EQ(Thrown<std::length_error>([&] { heap->read(five, 0x60, 1); }),
            "size + offset > size()");
  EXPECT_EQ(Thrown<std::length_error>([&] { heap->read(five, 0x60, 0xFFFFFFFF); }),
            "offset > size()");
  EXPECT_EQ(Text(five), "?????");
  byte_vector none;
  EXPECT_EQ(heap->read(none, 0x60, 5), 0U);
  EXPECT_EQ(Thrown<std::length_error>([&] { heap->read(none, 0x60, 6); }), "offset > size()");
}

TEST(Heap, PageMapAtOrAfterTheEndOfItsPage) {
  std::string page = ThreeAllocations();
  PutLe(page, 0, page.size() + 1, 2);
  EXPECT_EQ(Thrown<std::length_error>([&] { Open(NodeStore({page}))->size(0x20); }),
            "page_map_offset > node size");
  // At the end it passes that test, and then there is nothing to read.
  PutLe(page, 0, page.size(), 2);
  EXPECT_EQ(Thrown<database_corrupt>([&] { Open(NodeStore({page}))->size(0x20); }),
            "heap page map cut short");
  PutLe(page, 0, page.size() - 1, 2);
  EXPECT_EQ(Thrown<database_corrupt>([&] { Open(NodeStore({page}))->read(0x20); }),
            "heap page map cut short");
}

// The number of allocations is looked at before the array after it.
TEST(Heap, PageMapsOfLittleMoreThanTheirNumberOfAllocations) {
  for (const std::string& map : {std::string("\x01\x00", 2), std::string("\x01\x00\x00", 3)}) {
    std::string page = ThreeAllocations();
    PutLe(page, 0, page.size(), 2);
    const NodeStore store({page + map});
    EXPECT_EQ(Thrown<database_corrupt>([&] { Open(store)->size(0x20); }),
              "heap page map runs beyond its page");
    EXPECT_EQ(Thrown<database_corrupt>([&] { Open(store)->size(0x40); }),
              "heap page map runs beyond its page");
    EXPECT_EQ(Thrown<std::length_error>([&] { Open(store)->size(0x60); }), "index > num_allocs");
  }
}

TEST(Heap, PagesWithoutRoomForTheOffsetOfTheirMap) {
  const NodeStore one({ThreeAllocations(), "x"});
  EXPECT_EQ(Thrown<std::out_of_range>([&] { Open(one)->size(0x10020); }),
            "sizeof(T) + offset >= size()");
  PstFileBuilder file;
  const std::array<uint64_t, 2> ids = {file.block(ThreeAllocations()), file.block("")};
  file.node(NodeStore::kNid, file.extendedBlock(1, ids, 32), 0);
  const WrittenStore store(file.bytes());
  EXPECT_EQ(Thrown<std::out_of_range>(
                [&] { open_heap(store.context()->lookup_node(NodeStore::kNid))->size(0x10020); }),
            "offset >= size()");
}

TEST(Heap, IndexesAboveTheNumberOfAllocations) {
  const NodeStore store({ThreeAllocations() + LeBytes(0x0016, 2)});
  const heap_ptr heap = Open(store);
  // The index may be the number of allocations: the 16 bits after the array are the end then.
  EXPECT_EQ(heap->size(0x80), 2U);
  EXPECT_EQ(Text(heap->read(0x80)), std::string("\x03\x00", 2));
  EXPECT_EQ(Thrown<std::length_error>([&] { heap->size(0xA0); }), "index > num_allocs");
  // Without an allocation number the index is the greatest one.
  EXPECT_EQ(Thrown<std::length_error>([&] { heap->size(0x1F); }), "index > num_allocs");
  EXPECT_EQ(Thrown<std::length_error>([&] { heap->size(0xFFE0); }), "index > num_allocs");
}

TEST(Heap, PageMapsThatRunBeyondTheirPage) {
  std::string page = ThreeAllocations();
  const NodeStore after({page});
  EXPECT_EQ(Thrown<database_corrupt>([&] { Open(after)->size(0x80); }),
            "heap page map runs beyond its page");
  PutLe(page, 20, 0xFFFF, 2);
  const NodeStore believed({page});
  EXPECT_EQ(Open(believed)->size(0x60), 5U);
  EXPECT_EQ(Thrown<database_corrupt>([&] { Open(believed)->size(0xFFE0); }),
            "heap page map runs beyond its page");
}

TEST(Heap, NegativeSizes) {
  std::string page = ThreeAllocations();
  PutLe(page, 26, 0x0B, 2);  // the end of "abc", one below its start
  const NodeStore store({page});
  EXPECT_EQ(Thrown<database_corrupt>([&] { Open(store)->size(0x20); }),
            "heap allocation of negative size");
  EXPECT_EQ(Open(store)->size(0x40), 4U);
}

TEST(Heap, AllocationsThatLeaveTheirPage) {
  std::string page = ThreeAllocations();
  PutLe(page, 30, 40, 2);  // "defgh" ends 8 bytes after the page
  const NodeStore ends({page});
  EXPECT_EQ(Open(ends)->size(0x60), 25U);
  byte_vector buffer(25, '?');
  EXPECT_EQ(Open(ends)->read(buffer, 0x60, 0), 17U);
  EXPECT_EQ(Text(buffer), page.substr(15) + "????????");
  EXPECT_EQ(Text(Open(ends)->read(0x60)), page.substr(15) + std::string(8, '\0'));

  PutLe(page, 28, 32, 2);  // and starts there, too
  const NodeStore starts({page});
  EXPECT_EQ(Open(starts)->size(0x60), 8U);
  EXPECT_EQ(Thrown<std::out_of_range>([&] { Open(starts)->read(0x60); }), "offset >= size()");
  byte_vector none;
  EXPECT_EQ(Open(starts)->read(none, 0x60, 8), 0U);
}

TEST(Heap, OpensStreams) {
  const NodeStore store({ThreeAllocations()});
  pststore::hnid_stream_device device = Open(store)->open_stream(0x60);
  std::string bytes(10, '?');
  EXPECT_EQ(device.read(bytes.data(), 10), 5);
  EXPECT_EQ(bytes, "defgh?????");
}

TEST(Heap, KeepsTheStoreOpen) {
  NodeStore store({ThreeAllocations()});
  const heap_ptr heap = Open(store);
  store.store().release();
  EXPECT_EQ(Text(heap->read(0x20)), "abc");
}

TEST(Heap, WithoutMemory) {
  const NodeStore store({ThreeAllocations()});
  FailEachAllocation([&] { EXPECT_EQ(Text(Open(store)->read(0x20)), "abc"); });
}

}  // namespace
}  // namespace tarn::test
