// What holes cost: they take no room in the file, and count like blocks that were read.
#include <gtest/gtest.h>

#include "pststore/Blocks.h"
#include "pststore/StoreHarness.h"

namespace tarn::test {

namespace {

using namespace pststore;

class PstHoleBudgetTest : public BothLayouts {
 protected:
  // What holes may take: 1 GiB, and a little for the size of the file.
  static constexpr uint64_t kBudget = uint64_t{1} << 30;

  // How many pages of the node's data are loaded, again and again for a new node, before the store
  // gives up. Then it reads nothing more.
  uint64_t loads(RawImage image, uint32_t pages) const {
    image.block(0x108, std::string(maxData(), 'x'));
    image.node(0x21, 0x106).node(0x24, 0x108).trees();
    const auto context = OpenedImage(image).open();
    EXPECT_EQ(context->lookup_node(0x24).size(), maxData());
    uint64_t loaded = 0;
    const auto loadAll = [&] {
      for (;;) {
        const auto data = context->lookup_node(0x21).get_data_block();
        for (uint32_t page = 0; page < pages; ++page, ++loaded) {
          EXPECT_EQ(data->get_page(page)->get_total_size(), maxData());
        }
      }
    };
    const auto readAnother = [&] { context->lookup_node(0x24).size(); };
    EXPECT_EQ(Thrown<database_corrupt>(loadAll), "the same data is read too often");
    EXPECT_EQ(Thrown<database_corrupt>(readAnother), "the same data is read too often");
    return loaded;
  }
};
INSTANTIATE_TEST_SUITE_P(Layouts, PstHoleBudgetTest, ::testing::Bool(), LayoutName);

TEST_P(PstHoleBudgetTest, AHoleCountsLikeABlockOfData) {
  RawImage image(unicode());
  const auto pages = static_cast<uint32_t>(maxChildren());
  image.extended(0x106, 1, pages * maxData(), std::vector<uint64_t>(pages, 0));
  const uint64_t made = loads(image, pages);
  EXPECT_NEAR(static_cast<double>(made), static_cast<double>(kBudget / maxData()), 300);
}

// A hole of the second level is a block of ids and, where it is looked at, blocks of data.
TEST_P(PstHoleBudgetTest, AHoleOfTheSecondLevelCountsLikeItsIds) {
  RawImage image(unicode());
  image.extended(0x106, 2, 16 << 20, {0, 0});
  const uint64_t made = loads(image, 1);
  // What is read for them comes to less than they do.
  const uint64_t most = kBudget / (maxChildren() * image.wide() + maxData());
  EXPECT_LT(made, most + 500);
  EXPECT_GT(made, most / 2);
}

}  // namespace

}  // namespace tarn::test
