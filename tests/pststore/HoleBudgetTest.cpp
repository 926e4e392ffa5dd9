// What holes cost: they take no room in the file, and count like blocks that were read.
#include <gtest/gtest.h>

#include "pststore/Blocks.h"
#include "pststore/RawImage.h"

namespace tarn::test {

namespace {

using namespace pststore;

class PstHoleBudgetTest : public BothLayouts {
 protected:
  // Holes that may be made: 1 GiB and a little for the size of the file.
  static constexpr uint64_t kBudget = uint64_t{1} << 30;

  // How many times a page of the node's data is loaded anew before the store gives up. The pages
  // are taken in turns.
  uint64_t loads(const RawImage& image, uint32_t pages) const {
    const auto context = OpenedImage(image).open();
    for (uint64_t loaded = 0;;) {
      try {
        const auto data = context->lookup_node(0x21).get_data_block();
        for (uint32_t page = 0; page < pages; ++page, ++loaded) {
          EXPECT_EQ(data->get_page(page)->get_total_size(), maxData());
        }
      } catch (const database_corrupt& failure) {
        EXPECT_STREQ(failure.what(), "the same data is read too often");
        return loaded;
      }
    }
  }
};
INSTANTIATE_TEST_SUITE_P(Layouts, PstHoleBudgetTest, ::testing::Bool(), LayoutName);

TEST_P(PstHoleBudgetTest, AHoleCountsLikeABlockOfData) {
  RawImage image(unicode());
  const auto pages = static_cast<uint32_t>(maxChildren());
  image.extended(0x106, 1, static_cast<uint32_t>(pages * maxData()),
                 std::vector<uint64_t>(pages, 0));
  image.node(0x21, 0x106).trees();
  const uint64_t made = loads(image, pages);
  EXPECT_NEAR(static_cast<double>(made), static_cast<double>(kBudget / maxData()), 300);
}

// A hole of the second level is a block of ids and, where it is looked at, blocks of data.
TEST_P(PstHoleBudgetTest, AHoleOfTheSecondLevelCountsLikeItsIds) {
  RawImage image(unicode());
  image.extended(0x106, 2, 16 << 20, {0, 0});
  image.node(0x21, 0x106).trees();
  const uint64_t made = loads(image, 1);
  const uint64_t each = 64 + maxChildren() * image.wide() + maxData();
  EXPECT_NEAR(static_cast<double>(made), static_cast<double>(kBudget / each), 1000);
}

TEST_P(PstHoleBudgetTest, AStoreThatGaveUpReadsNoMore) {
  RawImage image(unicode());
  const auto pages = static_cast<uint32_t>(maxChildren());
  image.extended(0x106, 1, static_cast<uint32_t>(pages * maxData()),
                 std::vector<uint64_t>(pages, 0));
  image.block(0x108, std::string(maxData(), 'x'));
  image.node(0x21, 0x106).node(0x24, 0x108).trees();
  const auto context = OpenedImage(image).open();
  EXPECT_EQ(context->lookup_node(0x24).size(), maxData());
  const auto readHoles = [&] {
    for (;;) {
      const auto data = context->lookup_node(0x21).get_data_block();
      for (uint32_t page = 0; page < pages; ++page) data->get_page(page);
    }
  };
  ExpectThrow<database_corrupt>("the same data is read too often", readHoles);
  ExpectThrow<database_corrupt>("the same data is read too often",
                                [&] { context->lookup_node(0x24).size(); });
}

}  // namespace

}  // namespace tarn::test
