// What a lookup costs in large trees: the pages on its way down, each once.
#include <gtest/gtest.h>

#include "pststore/RawImage.h"
#include "support/pst/PstFileBuilder.h"

namespace tarn::test {

namespace {

class PstStoreScaleTest : public BothLayouts {};
INSTANTIATE_TEST_SUITE_P(Layouts, PstStoreScaleTest, ::testing::Bool(), LayoutName);

uint32_t NodeId(uint32_t index) { return (index + 1) << 5 | 0x04; }

TEST_P(PstStoreScaleTest, ALookupReadsOnlyItsWayDown) {
  // 3000 nodes of one block each. Nodes: 750 leaves, 250, 84, 28, 10, 4, 2 and 1 non-leaves, which
  // are 8 levels. Blocks: 1000 leaves, 200, 40, 8, 2 and 1 non-leaves, which are 6 levels.
  PstFileBuilder builder({.layout = unicode() ? PstLayout::Unicode : PstLayout::Ansi,
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
      char room[20] = {};
      context.lookup_node(NodeId(index)).read(room, sizeof(room), 0);
      EXPECT_EQ("data of " + std::to_string(index), room);
    };
    EXPECT_FALSE(succeeds(8 + 6 + 1, readData)) << index;
    EXPECT_TRUE(succeeds(8 + 6 + 1 + 1, readData)) << index;
  }
}

}  // namespace

}  // namespace tarn::test
