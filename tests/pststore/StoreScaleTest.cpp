// What a lookup costs in large trees: the pages or blocks on its way down, each once.
#include <gtest/gtest.h>

#include "pststore/StoreHarness.h"
#include "support/pst/PstFileBuilder.h"

namespace tarn::test {

namespace {

class PstStoreScaleTest : public BothLayouts {};
INSTANTIATE_TEST_SUITE_P(Layouts, PstStoreScaleTest, ::testing::Bool(), LayoutName);

uint32_t NodeId(uint32_t index) { return (index + 1) << 5 | 0x04; }

TEST_P(PstStoreScaleTest, ALookupReadsOnlyItsWayDown) {
  // 3000 nodes of one block each. Nodes: 750 leaves, 250, 84, 28, 10, 4, 2 and 1 non-leaves, which
  // are 8 levels. Blocks: 1000 leaves, 200, 40, 8, 2 and 1 non-leaves, which are 6 levels.
  PstFileBuilder builder({.layout = layout(),
                          .nbt = {.leafFanOut = 4, .innerFanOut = 3},
                          .bbt = {.leafFanOut = 3, .innerFanOut = 5}});
  for (uint32_t i = 0; i < 3000; ++i) {
    builder.node(NodeId(i), builder.block("data of " + std::to_string(i)), 0);
  }
  builder.finish();
  TempDirectory directory;
  const std::u16string path = directory.write("a.pst", builder.bytes()).u16string();

  const auto succeeds = [&](uint64_t failingRead, const auto& action) {
    const auto context = pststore::open_database(path.c_str());
    PlainKernelFailAt(PlainKernelFaultRead, failingRead);
    bool succeeded = true;
    try {
      action(*context);
    } catch (const std::out_of_range&) {
      succeeded = false;
    }
    PlainKernelFailAt(PlainKernelFaultRead, 0);
    return succeeded;
  };
  for (const uint32_t index : {0u, 1u, 1499u, 2998u, 2999u}) {
    const auto lookUp = [=](pststore::db_context& context) {
      context.lookup_node_info(NodeId(index));
    };
    EXPECT_FALSE(succeeds(8, lookUp)) << index;
    EXPECT_TRUE(succeeds(9, lookUp)) << index;
    const auto readData = [=](pststore::db_context& context) {
      std::string data(20, '?');
      data.resize(context.lookup_node(NodeId(index)).read(RoomOf(data), 0));
      EXPECT_EQ("data of " + std::to_string(index), data);
    };
    EXPECT_FALSE(succeeds(8 + 6 + 1, readData)) << index;
    EXPECT_TRUE(succeeds(8 + 6 + 1 + 1, readData)) << index;
  }
}

TEST_P(PstStoreScaleTest, ASubnodeIsFoundOnOneWayDown) {
  // 30000 subnodes: 300 leaves of 100, under one block.
  constexpr uint32_t kSubnodes = 30000;
  PstFileBuilder builder({.layout = layout()});
  std::vector<SubnodeEntry> entries;
  for (uint32_t i = 0; i < kSubnodes; ++i) entries.push_back({NodeId(i), 0, 4 * uint64_t{i}});
  builder.node(NodeId(0), 0, builder.subnodes(entries, {.leafFanOut = 100}));
  builder.finish();
  TempDirectory directory;
  const std::u16string path = directory.write("a.pst", builder.bytes()).u16string();

  const auto context = pststore::open_database(path.c_str());
  const auto root = context->read_subnode_block(context->lookup_node_info(NodeId(0)).subnode_bid);
  EXPECT_EQ(300u, root->num_values());
  for (const uint32_t index : {0u, 99u, 100u, 15050u, 29999u}) {
    const auto lookUp = [&] {
      const auto tree = context->read_subnode_block(root->get_id());
      EXPECT_EQ(4 * uint64_t{index}, tree->lookup(NodeId(index)).subnode_bid);
    };
    lookUp();
    const uint64_t reads = CallsOf(PlainKernelFaultRead, lookUp);
    // The root and a leaf; the context keeps the pages of the block tree.
    EXPECT_EQ(2u, reads) << index;
  }
  pststore::btree_iter_impl<ulong, pststore::subnode_info> iter;
  root->first(iter);
  for (uint32_t i = 0; i < kSubnodes; ++i) {
    ASSERT_EQ(NodeId(i), iter.leaf->get_value(iter.leaf_pos).id);
    iter.leaf->next(iter);
  }
  EXPECT_EQ(100u, iter.leaf_pos);
  EXPECT_THROW(root->lookup(NodeId(kSubnodes)), pststore::key_not_found<ulong>);
  EXPECT_THROW(root->lookup(NodeId(0) - 1), pststore::key_not_found<ulong>);
}

}  // namespace

}  // namespace tarn::test
