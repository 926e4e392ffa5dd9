#include "pststore/Bth.h"

#include <gtest/gtest.h>

#include "pststore/HeapBytes.h"
#include "pststore/StoreHarness.h"

namespace tarn::test {
namespace {

using pststore::database_corrupt;
using pststore::heap_ptr;
using pststore::key_not_found;
using pststore::open_bth;
using pststore::prop_tree;
using pststore::disk::prop_entry;
using index_tree = pststore::bth_node<uint32_t, uint32_t>;
using short_tree = pststore::bth_node<uint32_t, uint16_t>;

// A heap whose allocation 0x20 is a BTH header.
class TreeHeap {
 public:
  explicit TreeHeap(const std::vector<std::string>& allocations)
      : store_({HeapPage(kPropertyContext, 0x20, allocations)}),
        heap_(pststore::open_heap(store_.node())) {}

  const heap_ptr& heap() const { return heap_; }
  std::shared_ptr<prop_tree> properties() const {
    return open_bth<uint16_t, prop_entry>(heap_, 0x20);
  }
  std::shared_ptr<index_tree> index() const { return open_bth<uint32_t, uint32_t>(heap_, 0x20); }
  std::shared_ptr<short_tree> shortIndex() const {
    return open_bth<uint32_t, uint16_t>(heap_, 0x20);
  }

 private:
  NodeStore store_;
  heap_ptr heap_;
};

// Two levels: keys 10, 11 under 0x60 and 20, 21 under 0x80.
std::vector<std::string> TwoLevels() {
  return {BthHeader(4, 4, 2, 0x40), Record4(10, 0x60) + Record4(20, 0x80),
          Record4(10, 100) + Record4(11, 110), Record4(20, 200) + Record4(21, 210)};
}

template <typename K>
std::vector<K> Keys(const pststore::vector<K>& keys) {
  return std::vector<K>(keys.begin(), keys.end());
}

template <typename Tree>
auto AllKeys(const Tree& tree) {
  pststore::vector<decltype(tree.get_key(0))> keys;
  tree.append_keys(keys);
  return Keys(keys);
}

TEST(BthOpen, RefusesAnotherSignature) {
  const TreeHeap tree({std::string("\xB4\x04\x04\x00", 4) + LeBytes(0, 4)});
  try {
    tree.index();
    FAIL();
  } catch (const pststore::sig_mismatch& caught) {
    EXPECT_STREQ(caught.what(), "bth_signature expected");
    EXPECT_EQ(caught.address, 0U);
    EXPECT_EQ(caught.id, 0x20U);
    EXPECT_EQ(caught.first, 0xB4U);
    EXPECT_EQ(caught.second, 0xB5U);
  }
}

// The signature comes before the width of a key, and that before the width of a value.
TEST(BthOpen, RefusesInOrder) {
  std::string header = BthHeader(3, 3, 0, 0);
  header[0] = '\xB4';
  const TreeHeap all({header});
  EXPECT_EQ(Thrown<pststore::sig_mismatch>([&] { all.index(); }), "bth_signature expected");
  const TreeHeap widths({BthHeader(3, 3, 0, 0)});
  EXPECT_EQ(Thrown<std::logic_error>([&] { widths.index(); }), "invalid key size");
}

TEST(BthOpen, RefusesOtherWidths) {
  for (const uint8_t width : std::initializer_list<uint8_t>{0, 1, 3, 4, 255}) {
    const TreeHeap tree({BthHeader(width, 1, 0, 0)});
    EXPECT_EQ(Thrown<std::logic_error>([&] { tree.properties(); }), "invalid key size");
  }
  for (const uint8_t width : std::initializer_list<uint8_t>{0, 1, 2, 3, 8, 255}) {
    const TreeHeap tree({BthHeader(width, 1, 0, 0)});
    EXPECT_EQ(Thrown<std::logic_error>([&] { tree.index(); }), "invalid key size");
    EXPECT_EQ(Thrown<std::logic_error>([&] { tree.shortIndex(); }), "invalid key size");
  }
  for (const uint8_t width : std::initializer_list<uint8_t>{2, 4, 6, 8}) {
    const TreeHeap two({BthHeader(2, width, 0, 0)});
    const TreeHeap four({BthHeader(4, width, 0, 0)});
    const auto text = [](bool fits) { return fits ? "no exception" : "invalid entry size"; };
    EXPECT_EQ(Thrown<std::logic_error>([&] { two.properties(); }), text(width == 6));
    EXPECT_EQ(Thrown<std::logic_error>([&] { four.index(); }), text(width == 4));
    EXPECT_EQ(Thrown<std::logic_error>([&] { four.shortIndex(); }), text(width == 2));
  }
}

TEST(BthOpen, RefusesShortHeaders) {
  const TreeHeap seven({BthHeader(4, 4, 0, 0).substr(0, 7)});
  EXPECT_EQ(Thrown<std::length_error>([&] { seven.index(); }), "buffer.size() > size()");
  const auto none = [&] { open_bth<uint32_t, uint32_t>(seven.heap(), 0); };
  EXPECT_EQ(Thrown<std::length_error>(none), "buffer.size() > size()");
  const TreeHeap nine({BthHeader(4, 4, 0, 0) + "x"});
  EXPECT_EQ(nine.index()->num_values(), 0U);
}

TEST(BthOpen, RaisesForABrokenRoot) {
  const TreeHeap tree({BthHeader(4, 4, 0, 0xA0)});
  EXPECT_EQ(Thrown<std::length_error>([&] { tree.index(); }), "index > num_allocs");
}

TEST(Bth, AnEmptyTree) {
  const TreeHeap tree({BthHeader(2, 6, 0, 0)});
  const auto root = tree.properties();
  EXPECT_EQ(root->get_id(), 0U);
  EXPECT_EQ(root->get_level(), 0U);
  EXPECT_EQ(root->num_values(), 0U);
  for (const uint16_t key : std::initializer_list<uint16_t>{0, 1, 0xFFFF}) {
    EXPECT_EQ(MissingKey<uint16_t>([&] { root->lookup(key); }), key);
    EXPECT_EQ(root->find(key), nullptr);
  }
  EXPECT_TRUE(AllKeys(*root).empty());
}

TEST(Bth, LeafOfProperties) {
  const TreeHeap tree({BthHeader(2, 6, 0, 0x40), std::string("\x37\x00\x1F\x00\x60\x00\x00\x00"
                                                             "\x17\x0E\x03\x00\x78\x56\x34\x12",
                                                             16)});
  const auto root = tree.properties();
  EXPECT_EQ(root->get_id(), 0x40U);
  EXPECT_EQ(root->get_heap(), tree.heap());
  EXPECT_EQ(AllKeys(*root), (std::vector<uint16_t>{0x0037, 0x0E17}));
  EXPECT_EQ(root->lookup(0x0037).wPropType, 0x1F);
  EXPECT_EQ(root->lookup(0x0037).value, 0x60U);
  EXPECT_EQ(root->lookup(0x0E17).wPropType, 0x03);
  EXPECT_EQ(root->lookup(0x0E17).value, 0x12345678U);
  EXPECT_EQ(root->find(0x0E17)->value, 0x12345678U);
  EXPECT_EQ(MissingKey<uint16_t>([&] { root->lookup(0x0038); }), 0x0038);
}

TEST(Bth, RecordsOfTwoByteValuesTakeEightBytes) {
  const TreeHeap tree({BthHeader(4, 2, 0, 0x40), std::string("\x24\x00\x20\x00\x01\x00\xEE\xEE"
                                                             "\x44\x00\x20\x00\x02\x00\xEE\xEE"
                                                             "\x64\x00\x20\x00\x03\x00",
                                                             22)});
  const auto root = tree.shortIndex();
  EXPECT_EQ(AllKeys(*root), (std::vector<uint32_t>{0x200024, 0x200044}));
  EXPECT_EQ(root->lookup(0x200024), 1);
  EXPECT_EQ(root->lookup(0x200044), 2);
}

TEST(Bth, NonLeafRecordsOfTwoByteKeysTakeEightBytes) {
  const TreeHeap tree({BthHeader(2, 6, 2, 0x40),
                       std::string("\x05\x00\xEE\xEE\x60\x00\x00\x00"
                                   "\x09\x00\xEE\xEE\x80\x00\x00\x00",
                                   16),
                       Record2(5, 3, 50), Record2(9, 3, 90)});
  const auto root = tree.properties();
  EXPECT_EQ(root->lookup(5).value, 50U);
  EXPECT_EQ(root->lookup(9).value, 90U);
  EXPECT_EQ(AllKeys(*root), (std::vector<uint16_t>{5, 9}));
}

TEST(Bth, AnAllocationOfTwelveBytesHoldsOneRecord) {
  const TreeHeap tree({BthHeader(4, 4, 0, 0x40), Record4(7, 70) + LeBytes(8, 4)});
  const auto root = tree.index();
  EXPECT_EQ(root->num_values(), 1U);
  EXPECT_EQ(root->lookup(7), 70U);
  EXPECT_EQ(MissingKey<uint32_t>([&] { root->lookup(8); }), 8U);
}

TEST(Bth, OneLevelIsALeafAndTwoAreNot) {
  for (const uint8_t levels : std::initializer_list<uint8_t>{0, 1}) {
    const TreeHeap tree({BthHeader(4, 4, levels, 0x40), Record4(1, 0x60)});
    EXPECT_EQ(tree.index()->get_level(), 0U);
    EXPECT_EQ(tree.index()->lookup(1), 0x60U);
  }
  const TreeHeap two({BthHeader(4, 4, 2, 0x40), Record4(1, 0x60), Record4(1, 10)});
  EXPECT_EQ(two.index()->get_level(), 1U);
  EXPECT_EQ(two.index()->lookup(1), 10U);
  const TreeHeap three(
      {BthHeader(4, 4, 3, 0x40), Record4(1, 0x60), Record4(1, 0x80), Record4(1, 100)});
  EXPECT_EQ(three.index()->get_level(), 2U);
  EXPECT_EQ(three.index()->lookup(1), 100U);
}

TEST(Bth, SearchesNonLeaves) {
  const TreeHeap tree(TwoLevels());
  const auto root = tree.index();
  EXPECT_EQ(root->lookup(10), 100U);
  EXPECT_EQ(root->lookup(11), 110U);
  EXPECT_EQ(root->lookup(20), 200U);
  EXPECT_EQ(root->lookup(21), 210U);
  for (const uint32_t key : {0U, 9U, 12U, 19U, 22U, 0xFFFFFFFFU}) {
    EXPECT_EQ(MissingKey<uint32_t>([&] { root->lookup(key); }), key);
    EXPECT_EQ(root->find(key), nullptr);
  }
  EXPECT_EQ(AllKeys(*root), (std::vector<uint32_t>{10, 11, 20, 21}));
}

TEST(Bth, IteratesAcrossChildren) {
  const TreeHeap tree(TwoLevels());
  const auto root = tree.index();
  pststore::btree_iter_impl<uint32_t, uint32_t> at;
  root->first(at);
  std::vector<uint32_t> values;
  for (; at.leaf_pos != at.leaf->num_values(); at.leaf->next(at)) {
    values.push_back(at.leaf->get_value(at.leaf_pos));
  }
  EXPECT_EQ(values, (std::vector<uint32_t>{100, 110, 200, 210}));
}

TEST(Bth, ChildrenAreLoadedAtTheFirstNeed) {
  std::vector<std::string> allocations = TwoLevels();
  allocations[1] = Record4(10, 0x60) + Record4(20, 0xC0);  // the second child does not exist
  const TreeHeap tree(allocations);
  const auto root = tree.index();
  EXPECT_EQ(root->lookup(11), 110U);
  // Below the first separator no child is looked at, and a child that failed may fail again.
  EXPECT_EQ(MissingKey<uint32_t>([&] { root->lookup(9); }), 9U);
  EXPECT_EQ(Thrown<std::length_error>([&] { root->lookup(20); }), "index > num_allocs");
  EXPECT_EQ(Thrown<std::length_error>([&] { root->lookup(20); }), "index > num_allocs");
  EXPECT_EQ(Thrown<std::length_error>([&] { AllKeys(*root); }), "index > num_allocs");
  EXPECT_EQ(root->lookup(10), 100U);
}

TEST(Bth, ANonLeafWithoutRecords) {
  const TreeHeap tree({BthHeader(4, 4, 2, 0)});
  const auto root = tree.index();
  EXPECT_EQ(MissingKey<uint32_t>([&] { root->lookup(1); }), 1U);
  EXPECT_TRUE(AllKeys(*root).empty());
  pststore::btree_iter_impl<uint32_t, uint32_t> at;
  EXPECT_EQ(Thrown<database_corrupt>([&] { root->first(at); }), "BTH node without children");
}

// Each of 254 levels names the same children over and over.
TEST(Bth, NodesThatContainThemselves) {
  std::string children;
  for (uint16_t key = 0; key < 400; ++key) children += Record2(key, 0, 0x40);
  const TreeHeap tree({BthHeader(2, 6, 255, 0x40), children});
  const auto root = tree.properties();
  EXPECT_EQ(root->get_level(), 254U);
  EXPECT_EQ(Thrown<database_corrupt>([&] { AllKeys(*root); }),
            "BTH of more records than its heap holds");
  EXPECT_EQ(Thrown<database_corrupt>([&] { root->lookup(7); }),
            "BTH of more records than its heap holds");
}

TEST(Bth, ALeafOfManyParents) {
  std::string children;
  std::string leaves;
  for (uint32_t key = 0; key < 100; ++key) children += Record4(key, 0x60);
  for (uint32_t key = 0; key < 100; ++key) leaves += Record4(key, key);
  const TreeHeap tree({BthHeader(4, 4, 2, 0x40), children, leaves});
  const auto root = tree.index();
  EXPECT_EQ(root->lookup(0), 0U);
  EXPECT_EQ(Thrown<database_corrupt>([&] { AllKeys(*root); }),
            "BTH of more records than its heap holds");
}

// A tree whose root names one leaf over and over, in a node that could hold far more records.
PstNodeParts RootOverOneLeaf(uint16_t childCount, uint16_t leafCount) {
  std::string children;
  std::string leaf;
  for (uint16_t key = 0; key < childCount; ++key) children += Record2(key, 0, 0x60);
  for (uint16_t key = 0; key < leafCount; ++key) leaf += Record2(key, 0, 0);
  PstNodeParts parts;
  parts.pages = {HeapPage(kPropertyContext, 0x20, {BthHeader(2, 6, 2, 0x40), children, leaf})};
  parts.pages[0].resize(8176);
  for (int page = 0; page < 300; ++page) parts.pages.emplace_back(8176, '\0');
  return parts;
}

// 256 records of the root and 256 times 511 of the leaf are twice as many as there are keys.
TEST(Bth, AsManyRecordsAsAllKeysNeed) {
  const NodeStore store(RootOverOneLeaf(256, 511));
  const auto root = open_bth<uint16_t, prop_entry>(pststore::open_heap(store.node()), 0x20);
  EXPECT_EQ(AllKeys(*root).size(), 256U * 511U);
}

// No property context has more properties than there are property ids, however large its node is.
TEST(Bth, MoreRecordsThanThereAreKeys) {
  const NodeStore store(RootOverOneLeaf(400, 500));
  const auto root = open_bth<uint16_t, prop_entry>(pststore::open_heap(store.node()), 0x20);
  pststore::vector<uint16_t> keys;
  EXPECT_EQ(Thrown<database_corrupt>([&] { root->append_keys(keys); }),
            "BTH of more records than its heap holds");
  EXPECT_EQ(keys.size(), 130500U);
}

TEST(Bth, WithoutMemory) {
  const TreeHeap tree(TwoLevels());
  FailEachAllocation([&] { EXPECT_EQ(tree.index()->lookup(21), 210U); });
}

// What failed for lack of memory costs the tree nothing.
TEST(Bth, GoesOnWhenMemoryIsBack) {
  const TreeHeap tree(TwoLevels());
  const auto root = tree.index();
  for (int attempt = 0; attempt < 100; ++attempt) {
    PlainKernelFailAt(PlainKernelFaultMemory, 2);
    EXPECT_THROW(root->lookup(21), std::bad_alloc);
  }
  PlainKernelFailAt(PlainKernelFaultMemory, 0);
  EXPECT_EQ(root->lookup(21), 210U);
  EXPECT_EQ(root->lookup(10), 100U);
}

}  // namespace
}  // namespace tarn::test
