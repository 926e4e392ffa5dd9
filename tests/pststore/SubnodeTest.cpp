// The blocks that hold the trees of subnodes.
#include <gtest/gtest.h>

#include "pststore/StoreHarness.h"

namespace tarn::test {

namespace {

using namespace pststore;

class PstSubnodeTest : public BothLayouts {
 protected:
  std::shared_ptr<db_context> Open(RawImage& image) { return OpenedImage(image.trees()).open(); }

  static std::vector<uint32_t> Walk(const subnode_block& root) {
    btree_iter_impl<ulong, subnode_info> end;
    root.last(end);
    ++end.leaf_pos;
    btree_iter_impl<ulong, subnode_info> iter;
    root.first(iter);
    std::vector<uint32_t> ids;
    while (iter != end) {
      ids.push_back(iter.leaf->get_value(iter.leaf_pos).id);
      iter.leaf->next(iter);
    }
    return ids;
  }
};
INSTANTIATE_TEST_SUITE_P(Layouts, PstSubnodeTest, ::testing::Bool(), LayoutName);

TEST(PstSubnodeBytesTest, NarrowBlocks) {
  RawImage image(false);
  image.block(0x10A, std::string("\x02\x00\x01\x00"
                                 "\x25\x00\x00\x80\x04\x01\x00\x00\x0E\x01\x00\x90",
                                 16));
  image.block(0x10E, std::string("\x99\x07\x01\x00"
                                 "\x25\x00\x00\x80\x0A\x01\x00\x00",
                                 12));
  const auto context = OpenedImage(image.trees()).open();
  const auto leaf = context->read_subnode_block(0x10A);
  EXPECT_EQ(0, leaf->get_level());
  const subnode_info info = leaf->lookup(0x80000025);
  EXPECT_EQ(0x80000025u, info.id);
  EXPECT_EQ(0x104u, info.data_bid);
  EXPECT_EQ(0x9000010Eu, info.subnode_bid);
  // The type is not read, and every level but 0 is a non-leaf.
  const auto nonleaf = context->read_subnode_block(0x10E);
  EXPECT_EQ(1, nonleaf->get_level());
  EXPECT_EQ(0x104u, nonleaf->lookup(0x80000025).data_bid);
}

TEST(PstSubnodeBytesTest, WideBlocks) {
  RawImage image(true);
  image.block(0x10A, std::string("\x02\x00\x01\x00\xFF\xFF\xFF\xFF"
                                 "\x25\x00\x00\x80\x77\x77\x77\x77\x04\x01\x00\x00\x00\x00\x00\x01"
                                 "\x0E\x01\x00\x00\x00\x00\x00\x02",
                                 32));
  image.block(0x10E, std::string("\x02\x01\x01\x00\xFF\xFF\xFF\xFF"
                                 "\x25\x00\x00\x80\x77\x77\x77\x77\x0A\x01\x00\x00\x00\x00\x00\x00",
                                 24));
  const auto context = OpenedImage(image.trees()).open();
  const subnode_info info = context->read_subnode_block(0x10A)->lookup(0x80000025);
  EXPECT_EQ(0x80000025u, info.id);
  EXPECT_EQ(0x0100000000000104u, info.data_bid);
  EXPECT_EQ(0x020000000000010Eu, info.subnode_bid);
  EXPECT_EQ(0x80000025u, context->read_subnode_block(0x10E)->get_key(0));
  EXPECT_EQ(0x0100000000000104u, context->read_subnode_block(0x10E)->lookup(0x80000025).data_bid);
}

TEST_P(PstSubnodeTest, IdZeroIsTheEmptyTree) {
  RawImage image(unicode());
  const auto context = Open(image);
  const auto block = context->read_subnode_block(0);
  EXPECT_TRUE(block->is_internal());
  EXPECT_EQ(0u, block->get_id());
  EXPECT_EQ(0u, block->num_values());
  EXPECT_THROW(block->lookup(0), key_not_found<ulong>);
  EXPECT_TRUE(Walk(*block).empty());
}

TEST_P(PstSubnodeTest, LeafAndNonleafAreToldApart) {
  RawImage image(unicode());
  image.subnodeLeaf(0x10A, {{0x25, 0x104, 0}});
  image.subnodeNonleaf(0x10E, {{0x25, 0x10A}});
  const auto context = Open(image);
  EXPECT_EQ(0x10Au, context->read_subnode_leaf_block(context, 0x10A)->get_id());
  EXPECT_EQ(0x10Eu, context->read_subnode_nonleaf_block(context, 0x10E)->get_id());
  EXPECT_EQ(Thrown<unexpected_block>([&] { context->read_subnode_leaf_block(context, 0x10E); }),
            "psub->level != 0");
  EXPECT_EQ(Thrown<unexpected_block>([&] { context->read_subnode_nonleaf_block(context, 0x10A); }),
            "psub->level == 1");
}

TEST_P(PstSubnodeTest, ATreeOfTwoLevels) {
  RawImage image(unicode());
  image.subnodeLeaf(0x10A, {{0x25, 0x104, 0}, {0x45, 0x108, 0}});
  image.subnodeLeaf(0x10E, {{0x65, 0x10C, 0}});
  image.subnodeNonleaf(0x112, {{0x25, 0x10A}, {0x65, 0x10E}});
  const OpenedImage file(image.trees());
  const auto context = file.open();
  const auto root = context->read_subnode_block(0x112);
  EXPECT_EQ(0x104u, root->lookup(0x25).data_bid);
  EXPECT_EQ(0x108u, root->lookup(0x45).data_bid);
  EXPECT_EQ(0x10Cu, root->lookup(0x65).data_bid);
  EXPECT_THROW(root->lookup(0x24), key_not_found<ulong>);
  EXPECT_THROW(root->lookup(0x64), key_not_found<ulong>);
  EXPECT_EQ((std::vector<uint32_t>{0x25, 0x45, 0x65}), Walk(*root));
  // Block tree, root, one leaf.
  EXPECT_EQ(3u, CallsOf(PlainKernelFaultRead, file, [](const auto& other) {
              const auto block = other->read_subnode_block(0x112);
              block->lookup(0x45);
              block->lookup(0x25);
            }));
}

TEST_P(PstSubnodeTest, EntriesAreTakenAsFarAsTheExtentReaches) {
  // Extent 64: 5 leaf entries of 12 bytes from 4, or 2 of 24 from 8; 7 non-leaf entries of 8 from
  // 4, or 3 of 16 from 8. The trailer may be among them.
  for (const bool leaf : {true, false}) {
    const auto room = static_cast<uint16_t>(leaf ? (unicode() ? 2 : 5) : (unicode() ? 3 : 7));
    for (const uint16_t count : {room, static_cast<uint16_t>(room + 1), uint16_t{0xFFFF}}) {
      RawImage image(unicode());
      const uint64_t at = leaf ? image.subnodeLeaf(0x10A, {}) : image.subnodeNonleaf(0x10A, {});
      image.put(at + 2, count, 2);
      const auto context = Open(image);
      if (count == room) {
        EXPECT_EQ(room, context->read_subnode_block(0x10A)->num_values());
      } else {
        EXPECT_THROW(context->read_subnode_block(0x10A), database_corrupt);
      }
    }
  }
}

TEST_P(PstSubnodeTest, PositionsAfterTheEntriesAreDamage) {
  RawImage image(unicode());
  image.subnodeLeaf(0x10A, {{0x25, 0x104, 0}});
  image.subnodeNonleaf(0x10E, {{0x25, 0x10A}});
  image.subnodeNonleaf(0x112, {});
  const auto context = Open(image);
  const auto leaf = context->read_subnode_leaf_block(context, 0x10A);
  EXPECT_THROW(leaf->get_value(1), database_corrupt);
  EXPECT_THROW(leaf->get_key(1), database_corrupt);
  const auto nonleaf = context->read_subnode_nonleaf_block(context, 0x10E);
  EXPECT_THROW(nonleaf->get_child(1), database_corrupt);
  EXPECT_THROW(nonleaf->get_key(UINT32_MAX), database_corrupt);
  const auto empty = context->read_subnode_block(0x112);
  EXPECT_THROW(empty->lookup(0x25), key_not_found<ulong>);
  EXPECT_THROW(Walk(*empty), database_corrupt);
}

TEST_P(PstSubnodeTest, BlocksThatContainThemselves) {
  RawImage image(unicode());
  image.subnodeNonleaf(0x10A, {{0x25, 0x10A}});
  image.subnodeNonleaf(0x10E, {{0x25, 0x112}});
  image.subnodeNonleaf(0x112, {{0x25, 0x10F}});  // bit 0 does not make it another block
  const auto context = Open(image);
  EXPECT_THROW(context->read_subnode_block(0x10A)->lookup(0x25), database_corrupt);
  EXPECT_THROW(context->read_subnode_block(0x10E)->lookup(0x25), database_corrupt);
}

TEST_P(PstSubnodeTest, ABlockWithTwoParents) {
  RawImage image(unicode());
  image.subnodeLeaf(0x10A, {{0x25, 0x104, 0}});
  image.subnodeNonleaf(0x10E, {{0x25, 0x10A}, {0x26, 0x10A}});
  const auto context = Open(image);
  EXPECT_THROW(Walk(*context->read_subnode_block(0x10E)), database_corrupt);
  // Another node may well have the same tree.
  EXPECT_EQ(0x104u, context->read_subnode_block(0x10E)->lookup(0x25).data_bid);
  EXPECT_EQ(0x104u, context->read_subnode_block(0x10E)->lookup(0x25).data_bid);
}

TEST_P(PstSubnodeTest, ChildrenOfIdZeroAreEmpty) {
  // The empty tree may be in as many places as it is named.
  RawImage image(unicode());
  image.subnodeLeaf(0x10A, {{0x65, 0x104, 0}});
  image.subnodeNonleaf(0x10E, {{0x25, 0}, {0x45, 0}, {0x65, 0x10A}});
  const auto context = Open(image);
  const auto root = context->read_subnode_block(0x10E);
  for (const ulong id : {0x25u, 0x45u, 0x25u}) {
    try {
      root->lookup(id);
      ADD_FAILURE() << id;
    } catch (const key_not_found<ulong>& failure) {
      EXPECT_EQ(id, failure.key);
    }
  }
  EXPECT_EQ(0x104u, root->lookup(0x65).data_bid);
}

TEST_P(PstSubnodeTest, BlocksThatOverlapTakeRoomEachTime) {
  // Fifteen leaves of 8192 bytes, each 32 bytes after the one before; the root takes 320 or 192.
  // The limit is the size of the file and 64 KiB: the root and eleven leaves, or one byte less.
  const uint64_t root = unicode() ? 320 : 192;
  for (const uint64_t less : {0u, 1u}) {
    RawImage image(unicode());
    std::vector<std::pair<uint64_t, uint64_t>> children;
    for (uint64_t i = 0; i < 15; ++i) children.emplace_back(0x25 + i, 0x10A + 4 * i);
    image.subnodeNonleaf(0x106, children);
    const std::string head = SubnodeBlockData(layout(), 0, 300, "");
    for (const auto& [key, id] : children) {
      const uint64_t at = image.nextBlock;
      image.block(id, head);
      image.blocks.back().cb = static_cast<uint16_t>(maxData());
      const uint64_t end = at + 8192;
      image.put(end - 8, id, image.wide());
      const uint64_t trailer = end - image.offsets().blockTrailer;
      image.put(trailer, maxData(), 2).put(trailer + 2, PstSignature(id, at), 2);
      image.nextBlock = at + 32;
    }
    image.trees().file.resize(root + 11 * 8192 - 65536 - less);
    const auto context = OpenedImage(image).open();
    const auto tree = context->read_subnode_nonleaf_block(context, 0x106);
    const uint32_t leaves = less == 0 ? 11 : 10;
    for (uint32_t i = 0; i < leaves; ++i) EXPECT_EQ(300u, tree->get_child(i).num_values());
    for (int i = 0; i < 2; ++i) {
      EXPECT_EQ(Thrown<database_corrupt>([&] { tree->get_child(leaves); }),
                "blocks of a tree larger than the file");
    }
    EXPECT_EQ(300u, tree->get_child(0).num_values());
  }
}

TEST_P(PstSubnodeTest, TheEmptyBlockHasNoPlace) {
  RawImage image(unicode());
  const auto context = Open(image);
  const auto block = context->read_subnode_block(context, block_info{0, 0x2000, 99, 1});
  EXPECT_EQ(0u, block->num_values());
  EXPECT_EQ(0u, block->get_address());
  EXPECT_EQ(0u, block->get_disk_size());
}

TEST_P(PstSubnodeTest, OnlyTheFormForEveryLevelKnowsTheEmptyBlock) {
  // The other two look at offset 0, where the header is.
  RawImage image(unicode());
  image.put(56, 0x400, 4);
  const auto context = Open(image);
  EXPECT_EQ(
      Thrown<unexpected_block>([&] { context->read_subnode_leaf_block(context, ulonglong{0}); }),
      "wrong block id");
  EXPECT_EQ(
      Thrown<unexpected_block>([&] { context->read_subnode_nonleaf_block(context, ulonglong{0}); }),
      "wrong block id");
}

TEST_P(PstSubnodeTest, NextIntoAChildThatFailsLosesTheLeaf) {
  RawImage image(unicode());
  image.subnodeLeaf(0x10A, {{0x25, 0x104, 0}});
  image.subnodeNonleaf(0x10E, {{0x25, 0x10A}, {0x45, 0x7772}});
  const auto context = Open(image);
  const auto root = context->read_subnode_block(0x10E);
  btree_iter_impl<ulong, subnode_info> iter;
  root->first(iter);
  EXPECT_THROW(iter.leaf->next(iter), key_not_found<ulonglong>);
  EXPECT_EQ(nullptr, iter.leaf);
}

TEST_P(PstSubnodeTest, AChildThatFailsIsReadAgain) {
  RawImage image(unicode());
  image.subnodeLeaf(0x10A, {{0x25, 0x104, 0}});
  image.subnodeNonleaf(0x10E, {{0x25, 0x10A}});
  const auto context = Open(image);
  const auto root = context->read_subnode_block(0x10E);
  for (int i = 0; i < 2; ++i) {
    PlainKernelFailAt(PlainKernelFaultRead, 1);
    EXPECT_EQ(Thrown<std::out_of_range>([&] { root->lookup(0x25); }), "fread failed");
  }
  EXPECT_EQ(0x104u, root->lookup(0x25).data_bid);
}

TEST_P(PstSubnodeTest, ABlockWithoutItsContextLoadsNothing) {
  RawImage image(unicode());
  image.subnodeLeaf(0x10A, {{0x25, 0x104, 0}});
  image.subnodeNonleaf(0x10E, {{0x25, 0x10A}});
  auto context = Open(image);
  const auto root = context->read_subnode_block(0x10E);
  context.reset();
  EXPECT_THROW(root->lookup(0x25), std::bad_weak_ptr);
}

}  // namespace

}  // namespace tarn::test
