// The pages of the two trees in a file: their entries, and the loading of children.
#include <gtest/gtest.h>

#include "pststore/StoreHarness.h"

namespace tarn::test {

namespace {

using namespace pststore;

class PstPagesTest : public BothLayouts {};
INSTANTIATE_TEST_SUITE_P(Layouts, PstPagesTest, ::testing::Bool(), LayoutName);

constexpr uint64_t kPages = 0x4000;

uint64_t Page(uint64_t number) { return kPages + 512 * number; }

// An image whose node tree has a non-leaf root over `children` pages; page `i` has the id 0x40 + i
// and the key given.
RawImage WithRoot(bool unicode, const std::vector<std::pair<uint64_t, uint64_t>>& keysAndPages) {
  RawImage image(unicode);
  image.trees();
  std::string entries;
  for (const auto& [key, number] : keysAndPages) {
    entries += image.nonleafEntry(key, {0x40 + number, Page(number)});
  }
  image.page({RawImage::kNbtId, RawImage::kNbtAddress}, RawImage::kNbtPage, 1, keysAndPages.size(),
             entries);
  return image;
}

void AddLeaf(RawImage& image, uint64_t number, const std::vector<uint32_t>& ids) {
  std::string entries;
  for (const uint32_t id : ids) entries += image.nbtEntry({id, 0, id + 1000u, 0});
  image.page({0x40 + number, Page(number)}, RawImage::kNbtPage, 0, ids.size(), entries);
  image.setFileEof(image.file.size());
}

void AddNonleaf(RawImage& image, uint64_t number,
                const std::vector<std::pair<uint64_t, uint64_t>>& keysAndPages) {
  std::string entries;
  for (const auto& [key, page] : keysAndPages) {
    entries += image.nonleafEntry(key, {0x40 + page, Page(page)});
  }
  image.page({0x40 + number, Page(number)}, RawImage::kNbtPage, 1, keysAndPages.size(), entries);
  image.setFileEof(image.file.size());
}

// The ids of all nodes, in the order of the tree.
std::vector<uint32_t> WalkNodes(db_context& context) {
  btree_iter_impl<ulong, node_info> end;
  context.read_nbt_root()->last(end);
  ++end.leaf_pos;
  btree_iter_impl<ulong, node_info> iter;
  context.read_nbt_root()->first(iter);
  std::vector<uint32_t> ids;
  while (iter != end) {
    ids.push_back(iter.leaf->get_value(iter.leaf_pos).id);
    iter.leaf->next(iter);
  }
  return ids;
}

// Entries -------------------------------------------------------------------------------------

TEST(PstPageEntriesTest, NarrowLeaves) {
  RawImage image(false);
  image.page({RawImage::kNbtId, RawImage::kNbtAddress}, RawImage::kNbtPage, 0, 2,
             std::string("\x21\x00\x00\x80\x04\x01\x00\x00\x0A\x02\x00\x00\x22\x01\x00\x00"
                         "\x61\x00\x00\x80\xFF\xFF\xFF\xFF\x00\x00\x00\x00\x00\x00\x00\x00",
                         32));
  image.page({RawImage::kBbtId, RawImage::kBbtAddress}, RawImage::kBbtPage, 0, 2,
             std::string("\x04\x01\x00\x00\x00\x44\x00\x00\x34\x12\x02\x00"
                         "\xFC\xFF\xFF\xFF\x00\x00\x00\x90\xFF\xFF\x01\x80",
                         24));
  image.setFileEof(0x2000);
  const auto context = OpenedImage(image).open();
  const auto nodes = context->read_nbt_leaf_page({RawImage::kNbtId, RawImage::kNbtAddress});
  ASSERT_EQ(2u, nodes->num_values());
  EXPECT_EQ(0x80000021u, nodes->get_key(0));
  EXPECT_EQ(0x80000021u, nodes->get_value(0).id);
  EXPECT_EQ(0x104u, nodes->get_value(0).data_bid);
  EXPECT_EQ(0x20Au, nodes->get_value(0).subnode_bid);
  EXPECT_EQ(0x122u, nodes->get_value(0).parent_id);
  EXPECT_EQ(0xFFFFFFFFu, nodes->get_value(1).data_bid);
  const auto blocks = context->read_bbt_leaf_page({RawImage::kBbtId, RawImage::kBbtAddress});
  ASSERT_EQ(2u, blocks->num_values());
  EXPECT_EQ(0x104u, blocks->get_key(0));
  EXPECT_EQ(0x104u, blocks->get_value(0).id);
  EXPECT_EQ(0x4400u, blocks->get_value(0).address);
  EXPECT_EQ(0x1234, blocks->get_value(0).size);
  EXPECT_EQ(2, blocks->get_value(0).ref_count);
  EXPECT_EQ(0xFFFFFFFCu, blocks->get_key(1));
  EXPECT_EQ(0x90000000u, blocks->get_value(1).address);
  EXPECT_EQ(0xFFFF, blocks->get_value(1).size);
  EXPECT_EQ(0x8001, blocks->get_value(1).ref_count);
}

TEST(PstPageEntriesTest, WideLeaves) {
  RawImage image(true);
  image.page({RawImage::kNbtId, RawImage::kNbtAddress}, RawImage::kNbtPage, 0, 1,
             std::string("\x21\x00\x00\x80\x77\x77\x77\x77\x04\x01\x00\x00\x00\x00\x00\x01"
                         "\x0A\x02\x00\x00\x00\x00\x00\x02\x22\x01\x00\x00\x99\x99\x99\x99",
                         32));
  image.page({RawImage::kBbtId, RawImage::kBbtAddress}, RawImage::kBbtPage, 0, 1,
             std::string("\x04\x01\x00\x00\x00\x00\x00\x03\x00\x44\x00\x00\x00\x00\x00\x04"
                         "\x34\x12\x02\x00\x99\x99\x99\x99",
                         24));
  image.setFileEof(0x2000);
  const auto context = OpenedImage(image).open();
  const auto nodes = context->read_nbt_leaf_page({RawImage::kNbtId, RawImage::kNbtAddress});
  ASSERT_EQ(1u, nodes->num_values());
  EXPECT_EQ(0x80000021u, nodes->get_key(0));  // the lower half
  EXPECT_EQ(0x80000021u, nodes->get_value(0).id);
  EXPECT_EQ(0x0100000000000104u, nodes->get_value(0).data_bid);
  EXPECT_EQ(0x020000000000020Au, nodes->get_value(0).subnode_bid);
  EXPECT_EQ(0x122u, nodes->get_value(0).parent_id);
  const auto blocks = context->read_bbt_leaf_page({RawImage::kBbtId, RawImage::kBbtAddress});
  ASSERT_EQ(1u, blocks->num_values());
  EXPECT_EQ(0x0300000000000104u, blocks->get_key(0));
  EXPECT_EQ(0x0300000000000104u, blocks->get_value(0).id);
  EXPECT_EQ(0x0400000000004400u, blocks->get_value(0).address);
  EXPECT_EQ(0x1234, blocks->get_value(0).size);
  EXPECT_EQ(2, blocks->get_value(0).ref_count);
}

TEST(PstPageEntriesTest, SeparatorsKeepTheWidthOfTheirTree) {
  RawImage image(true);
  const std::string entry(
      "\x21\x00\x00\x80\x01\x00\x00\x00\x40\x00\x00\x00\x00\x00\x00\x00\x00\x44\x00\x00\x00\x00\x00"
      "\x00",
      24);
  image.page({RawImage::kNbtId, RawImage::kNbtAddress}, RawImage::kNbtPage, 3, 1, entry);
  image.page({RawImage::kBbtId, RawImage::kBbtAddress}, RawImage::kBbtPage, 255, 1, entry);
  image.setFileEof(0x2000);
  const auto context = OpenedImage(image).open();
  EXPECT_EQ(0x80000021u, context->read_nbt_root()->get_key(0));
  EXPECT_EQ(3, context->read_nbt_root()->get_level());
  EXPECT_EQ(0x180000021u, context->read_bbt_root()->get_key(0));
  EXPECT_EQ(255, context->read_bbt_root()->get_level());
}

TEST_P(PstPagesTest, EntriesAreTakenAsFarAsThePageReaches) {
  // The counters are no bound: trailer bytes are entries when the page says so.
  const uint8_t nbtRoom = unicode() ? 16 : 32;  // 512 bytes / 32 or 16
  const uint8_t bbtRoom = unicode() ? 21 : 42;  // 512 bytes / 24 or 12
  for (const int more : {0, 1}) {
    RawImage image(unicode());
    const auto add = static_cast<uint8_t>(more);
    image.page({1, Page(0)}, RawImage::kNbtPage, 0, nbtRoom + add, "");
    image.page({2, Page(1)}, RawImage::kBbtPage, 0, bbtRoom + add, "");
    image.page({3, Page(2)}, RawImage::kNbtPage, 1, bbtRoom + add, "");
    image.page({4, Page(3)}, RawImage::kBbtPage, 1, bbtRoom + add, "");
    image.setFileEof(Page(4));
    const auto context = OpenedImage(image).open();
    if (more == 0) {
      EXPECT_EQ(nbtRoom, context->read_nbt_page({1, Page(0)})->num_values());
      EXPECT_EQ(bbtRoom, context->read_bbt_page({2, Page(1)})->num_values());
      EXPECT_EQ(bbtRoom, context->read_nbt_page({3, Page(2)})->num_values());
      EXPECT_EQ(bbtRoom, context->read_bbt_page({4, Page(3)})->num_values());
    } else {
      EXPECT_THROW(context->read_nbt_page({1, Page(0)}), database_corrupt);
      EXPECT_THROW(context->read_bbt_page({2, Page(1)}), database_corrupt);
      EXPECT_THROW(context->read_nbt_page({3, Page(2)}), database_corrupt);
      EXPECT_THROW(context->read_bbt_page({4, Page(3)}), database_corrupt);
    }
  }
}

TEST_P(PstPagesTest, PositionsAfterTheEntriesAreDamage) {
  RawImage image = WithRoot(unicode(), {{1, 0}});
  AddLeaf(image, 0, {1, 2});
  const auto context = OpenedImage(image).open();
  const auto leaf = context->read_nbt_leaf_page({0x40, Page(0)});
  EXPECT_EQ(2u, leaf->get_value(1).id);
  EXPECT_THROW(leaf->get_value(2), database_corrupt);
  EXPECT_THROW(leaf->get_key(2), database_corrupt);
  EXPECT_THROW(leaf->get_value(UINT32_MAX), database_corrupt);
  const auto root = context->read_nbt_nonleaf_page({RawImage::kNbtId, RawImage::kNbtAddress});
  EXPECT_EQ(2u, root->get_child(0).num_values());
  EXPECT_THROW(root->get_child(1), database_corrupt);
  EXPECT_THROW(root->get_key(1), database_corrupt);
}

// Children ------------------------------------------------------------------------------------

TEST_P(PstPagesTest, ALookupReadsThePagesOnItsWayOnce) {
  RawImage image = WithRoot(unicode(), {{10, 0}, {30, 1}});
  AddNonleaf(image, 0, {{10, 2}, {20, 3}});
  AddNonleaf(image, 1, {{30, 4}});
  AddLeaf(image, 2, {10, 11});
  AddLeaf(image, 3, {20});
  AddLeaf(image, 4, {30, 31});
  const OpenedImage file(image);
  const auto reads = [&](const std::vector<ulong>& ids) {
    return CallsOf(PlainKernelFaultRead, file, [&](const auto& context) {
      for (const ulong id : ids) EXPECT_EQ(1000 + id, context->lookup_node_info(id).data_bid);
    });
  };
  EXPECT_EQ(3u, reads({11}));
  EXPECT_EQ(3u, reads({11, 10, 11}));
  EXPECT_EQ(4u, reads({11, 20}));
  EXPECT_EQ(6u, reads({11, 20, 31, 30}));
  EXPECT_EQ(3u, CallsOf(PlainKernelFaultSeek, file,
                        [](const auto& context) { context->lookup_node_info(30); }));
  const auto context = file.open();
  EXPECT_THROW(context->lookup_node_info(12), key_not_found<ulong>);
  EXPECT_EQ((std::vector<uint32_t>{10, 11, 20, 30, 31}), WalkNodes(*context));
  EXPECT_EQ(0u, CallsOf(PlainKernelFaultRead, [&] { WalkNodes(*context); }));
}

TEST_P(PstPagesTest, AKeyBelowTheFirstSeparatorReadsNoChild) {
  RawImage image = WithRoot(unicode(), {{10, 0}});
  const OpenedImage file(image);
  EXPECT_EQ(1u, CallsOf(PlainKernelFaultRead, file, [](const auto& context) {
              try {
                context->lookup_node_info(9);
                ADD_FAILURE();
              } catch (const key_not_found<ulong>& failure) {
                EXPECT_EQ(9u, failure.key);
              }
            }));
}

TEST_P(PstPagesTest, AChildThatFailsIsReadAgain) {
  RawImage image = WithRoot(unicode(), {{10, 0}});
  AddLeaf(image, 0, {10});
  const auto context = OpenedImage(image).open();
  for (int i = 0; i < 3; ++i) {
    PlainKernelFailAt(PlainKernelFaultRead, i == 0 ? 2 : 1);
    EXPECT_EQ(Thrown<std::out_of_range>([&] { context->lookup_node_info(10); }), "fread failed");
  }
  EXPECT_EQ(1010u, context->lookup_node_info(10).data_bid);
}

TEST_P(PstPagesTest, ADamagedChildRaisesFromSearchAndIteration) {
  RawImage image = WithRoot(unicode(), {{10, 0}, {20, 1}});
  AddLeaf(image, 0, {10});
  AddLeaf(image, 1, {20});
  image.put(Page(1) + image.offsets().pageBid, 0x99, image.wide());
  const auto context = OpenedImage(image).open();
  EXPECT_EQ(Thrown<unexpected_page>([&] { context->lookup_node_info(20); }), "wrong page id");
  EXPECT_EQ(1010u, context->lookup_node_info(10).data_bid);
  EXPECT_EQ(Thrown<unexpected_page>([&] { WalkNodes(*context); }), "wrong page id");
}

TEST_P(PstPagesTest, AChildIsWhatItsOwnLevelSays) {
  // The root says 1, its child 9: nobody compares.
  RawImage image = WithRoot(unicode(), {{10, 0}});
  AddNonleaf(image, 0, {{10, 1}});
  image.put(Page(0) + image.offsets().pageCounters + 3, 9, 1);
  AddLeaf(image, 1, {10});
  EXPECT_EQ(1010u, OpenedImage(image).open()->lookup_node_info(10).data_bid);
}

TEST_P(PstPagesTest, ChildrenOfTheOtherTreeAreRefused) {
  RawImage image = WithRoot(unicode(), {{10, 0}});
  image.page({0x40, Page(0)}, RawImage::kBbtPage, 0, 0, "").setFileEof(Page(1));
  const auto context = OpenedImage(image).open();
  EXPECT_EQ(Thrown<unexpected_page>([&] { context->lookup_node_info(10); }),
            "page_type != page_type_nbt");
}

TEST_P(PstPagesTest, APageWithoutItsContextLoadsNothing) {
  RawImage image = WithRoot(unicode(), {{10, 0}, {20, 1}});
  AddLeaf(image, 0, {10});
  AddLeaf(image, 1, {20});
  auto context = OpenedImage(image).open();
  const auto root = context->read_nbt_root();
  EXPECT_EQ(1010u, root->lookup(10).data_bid);
  context.reset();
  EXPECT_EQ(1010u, root->lookup(10).data_bid);
  EXPECT_THROW(root->lookup(20), std::bad_weak_ptr);
}

// Damage --------------------------------------------------------------------------------------

TEST_P(PstPagesTest, APageThatIsItsOwnChild) {
  RawImage image = WithRoot(unicode(), {{10, 0}});
  AddNonleaf(image, 0, {{10, 0}});
  const auto context = OpenedImage(image).open();
  EXPECT_THROW(context->lookup_node_info(10), database_corrupt);
  EXPECT_THROW(WalkNodes(*context), database_corrupt);
  // Nothing of the failure is kept: it is the same at the next time.
  EXPECT_EQ(1u, CallsOf(PlainKernelFaultRead, [&] {
              try {
                context->lookup_node_info(10);
                ADD_FAILURE();
              } catch (const database_corrupt&) {
              }
            }));
}

TEST_P(PstPagesTest, ARootThatIsItsOwnChild) {
  RawImage image(unicode());
  image.trees();
  image.page({RawImage::kNbtId, RawImage::kNbtAddress}, RawImage::kNbtPage, 1, 1,
             image.nonleafEntry(10, {RawImage::kNbtId, RawImage::kNbtAddress}));
  const auto context = OpenedImage(image).open();
  // Known at the first time that it turns up again: there is no third read, which would fail.
  PlainKernelFailAt(PlainKernelFaultRead, 3);
  EXPECT_THROW(context->lookup_node_info(10), database_corrupt);
}

TEST_P(PstPagesTest, AnAncestorAsAChild) {
  RawImage image = WithRoot(unicode(), {{10, 0}});
  AddNonleaf(image, 0, {{10, 1}});
  AddNonleaf(image, 1, {{10, 0}});
  const auto context = OpenedImage(image).open();
  EXPECT_THROW(context->lookup_node_info(10), database_corrupt);
  EXPECT_THROW(WalkNodes(*context), database_corrupt);
}

TEST_P(PstPagesTest, APageWithTwoParents) {
  RawImage image = WithRoot(unicode(), {{10, 0}, {20, 1}});
  AddNonleaf(image, 0, {{10, 2}});
  AddNonleaf(image, 1, {{20, 2}});
  AddLeaf(image, 2, {10, 20});
  const auto context = OpenedImage(image).open();
  EXPECT_EQ(1010u, context->lookup_node_info(10).data_bid);
  EXPECT_THROW(context->lookup_node_info(20), database_corrupt);
  EXPECT_THROW(WalkNodes(*context), database_corrupt);
}

TEST_P(PstPagesTest, PagesThatFanOutIntoEachOtherCostWhatTheFileHolds) {
  // Twenty levels of twenty references to the same next page would be 20 to the 20th leaves.
  RawImage image = WithRoot(unicode(), {{1, 0}});
  for (uint64_t level = 0; level < 20; ++level) {
    AddNonleaf(image, level, std::vector<std::pair<uint64_t, uint64_t>>(20, {1, level + 1}));
  }
  AddLeaf(image, 20, {1});
  const auto context = OpenedImage(image).open();
  EXPECT_THROW(WalkNodes(*context), database_corrupt);
}

TEST_P(PstPagesTest, TreesAreAsDeepAsALevelCanSay) {
  // The root, 254 further non-leaves and the leaf are 256 pages; one more is too many.
  for (const uint64_t between : {254u, 255u}) {
    RawImage image = WithRoot(unicode(), {{1, 0}});
    for (uint64_t i = 0; i < between; ++i) AddNonleaf(image, i, {{1, i + 1}});
    AddLeaf(image, between, {1});
    const auto context = OpenedImage(image).open();
    if (between == 254) {
      EXPECT_EQ(1001u, context->lookup_node_info(1).data_bid);
      EXPECT_EQ(1u, WalkNodes(*context).size());
    } else {
      EXPECT_THROW(context->lookup_node_info(1), database_corrupt);
      EXPECT_THROW(WalkNodes(*context), database_corrupt);
    }
  }
}

TEST_P(PstPagesTest, NonleavesWithoutEntries) {
  RawImage image = WithRoot(unicode(), {{10, 0}});
  AddNonleaf(image, 0, {});
  const auto context = OpenedImage(image).open();
  EXPECT_THROW(context->lookup_node_info(10), key_not_found<ulong>);
  EXPECT_THROW(WalkNodes(*context), database_corrupt);
}

TEST_P(PstPagesTest, EmptyLeaves) {
  RawImage image = WithRoot(unicode(), {{10, 0}, {20, 1}, {30, 2}});
  AddLeaf(image, 0, {10});
  AddLeaf(image, 1, {});
  AddLeaf(image, 2, {30});
  EXPECT_THROW(WalkNodes(*OpenedImage(image).open()), database_corrupt);
  AddLeaf(image, 1, {20});
  AddLeaf(image, 2, {});
  EXPECT_EQ((std::vector<uint32_t>{10, 20}), WalkNodes(*OpenedImage(image).open()));
}

TEST_P(PstPagesTest, ManyPagesAreTakenForWhatTheyAre) {
  // More children than the record of loaded pages begins with.
  RawImage image = WithRoot(unicode(), {{100, 0}, {200, 1}, {300, 2}, {400, 3}});
  std::vector<uint32_t> expected;
  uint64_t next = 4;
  for (uint64_t i = 0; i < 4; ++i) {
    std::vector<std::pair<uint64_t, uint64_t>> children;
    for (uint32_t child = 0; child < 18; ++child) {
      const auto key = static_cast<uint32_t>(100 * (i + 1) + child);
      children.emplace_back(key, next);
      AddLeaf(image, next++, {key});
      expected.push_back(key);
    }
    AddNonleaf(image, i, children);
  }
  const auto context = OpenedImage(image).open();
  EXPECT_EQ(expected, WalkNodes(*context));
  EXPECT_EQ(expected, WalkNodes(*context));
}

}  // namespace

}  // namespace tarn::test
