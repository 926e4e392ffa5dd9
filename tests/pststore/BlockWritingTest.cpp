// Blocks made and changed in memory: who is copied, who gets a new id, how streams grow.
#include <gtest/gtest.h>

#include "pststore/StoreHarness.h"

namespace tarn::test {

namespace {

using namespace pststore;

class PstBlockWritingTest : public BothLayouts {
 protected:
  void SetUp() override {
    RawImage image(unicode());
    image.block(0x104, "abcdef");
    image.block(0x108, std::string(maxData(), 'x'));
    image.block(0x10C, "tail");
    image.extended(0x112, 1, maxData() + 4, {0x108, 0x10C});
    image.extended(0x116, 1, 2 * maxData(), {0x108, 0x108});
    file_ = std::make_unique<OpenedImage>(image.trees());
    context = file_->open();
  }
  void TearDown() override { context.reset(); }

  static std::string Text(data_block& block) { return ReadRaw(block, block.get_total_size(), 0); }
  static size_t Write(const std::string& text, uint64_t offset,
                      std::shared_ptr<data_block>& block) {
    return block->write_raw(BytesOf(text), offset, block);
  }
  uint64_t levelTwo() const { return maxData() * maxChildren(); }

  std::shared_ptr<db_context> context;

 private:
  std::unique_ptr<OpenedImage> file_;
};
INSTANTIATE_TEST_SUITE_P(Layouts, PstBlockWritingTest, ::testing::Bool(), LayoutName);

// New blocks ----------------------------------------------------------------------------------

TEST_P(PstBlockWritingTest, ANewExternalBlock) {
  const auto block = context->create_external_block(context, 5);
  EXPECT_EQ(std::string(5, '\0'), Text(*block));
  EXPECT_TRUE(block->is_modified());
  EXPECT_EQ(0x1000u, block->get_id());
  EXPECT_EQ(0u, block->get_disk_size());
  EXPECT_EQ(0u, block->get_address());
  EXPECT_EQ(0x1004u, context->create_external_block(context, 0)->get_id());
}

TEST_P(PstBlockWritingTest, ANewExtendedBlock) {
  const auto block = context->create_extended_block(context, 2 * maxData() + 1);
  EXPECT_EQ(1, block->get_level());
  EXPECT_TRUE(block->is_modified());
  EXPECT_EQ(0u, block->get_id());  // 0x1000 & 2
  EXPECT_EQ(std::string(2 * maxData() + 1, '\0'), Text(*block));
  ASSERT_EQ(3u, block->get_child_ids().size());
  EXPECT_EQ(0u, block->get_child_ids()[2]);
  EXPECT_EQ(3u, block->get_page_count());
}

TEST_P(PstBlockWritingTest, TheLevelOfANewExtendedBlock) {
  EXPECT_EQ(1, context->create_extended_block(context, levelTwo())->get_level());
  EXPECT_EQ(maxChildren(),
            context->create_extended_block(context, levelTwo())->get_child_ids().size());
  const auto larger = context->create_extended_block(context, levelTwo() + 1);
  EXPECT_EQ(2, larger->get_level());
  EXPECT_EQ(2u, larger->get_child_ids().size());
  EXPECT_EQ(maxChildren() + 1, larger->get_page_count());
  EXPECT_EQ(0u, context->create_extended_block(context, ulonglong{0})->get_child_ids().size());
}

TEST_P(PstBlockWritingTest, NewExtendedBlocksOverOneChild) {
  const auto child = context->create_external_block(context, 7);
  const auto first = context->create_extended_block(context, child);
  EXPECT_EQ(1, first->get_level());
  EXPECT_EQ(7u, first->get_total_size());
  EXPECT_EQ(child, first->get_page(0));
  EXPECT_EQ(child->get_id(), first->get_child_ids().at(0));
  const auto second = context->create_extended_block(context, first);
  EXPECT_EQ(2, second->get_level());
  EXPECT_EQ(7u, second->get_total_size());
  EXPECT_EQ(child, second->get_page(0));
}

TEST_P(PstBlockWritingTest, PositionsHave32Bits) {
  // A stream in memory may be larger than four gigabytes; its places repeat from there on.
  std::shared_ptr<data_block> block = context->create_extended_block(context, ulonglong{5} << 30);
  EXPECT_EQ(5u, Write("begin", 0, block));
  EXPECT_EQ("begin", ReadRaw(*block, 5, ulonglong{1} << 32));
  EXPECT_EQ("gin", ReadRaw(*block, 3, (ulonglong{1} << 32) + 2));
  EXPECT_EQ(3u, Write("GIN", (ulonglong{1} << 32) + 2, block));
  EXPECT_EQ("beGIN", ReadRaw(*block, 5, 0));
}

// write_raw -----------------------------------------------------------------------------------

TEST_P(PstBlockWritingTest, WritingIntoABlockOfTheFile) {
  std::shared_ptr<data_block> block = context->read_data_block(0x104);
  const data_block* const before = block.get();
  EXPECT_EQ(2u, Write("XY", 1, block));
  EXPECT_EQ(before, block.get());
  EXPECT_EQ("aXYdef", Text(*block));
  EXPECT_TRUE(block->is_modified());
  EXPECT_EQ(0x1000u, block->get_id());
  EXPECT_EQ(0u, block->get_disk_size());
  EXPECT_EQ(0u, block->get_address());
  // Only the first change gives a new id.
  EXPECT_EQ(1u, Write("Z", 0, block));
  EXPECT_EQ(0x1000u, block->get_id());
  EXPECT_EQ("ZXYdef", Text(*block));
  // The file has not changed.
  EXPECT_EQ("abcdef", Text(*context->read_data_block(0x104)));
}

TEST_P(PstBlockWritingTest, WritesAreClipped) {
  std::shared_ptr<data_block> block = context->read_data_block(0x104);
  EXPECT_EQ(2u, Write("XYZ", 4, block));
  EXPECT_EQ(0u, Write("XYZ", 6, block));
  EXPECT_EQ(0u, Write("XYZ", 700, block));
  EXPECT_EQ("abcdXY", Text(*block));
}

TEST_P(PstBlockWritingTest, ABlockWithTwoHoldersIsCopied) {
  const std::shared_ptr<data_block> other = context->read_data_block(0x104);
  std::shared_ptr<data_block> block = other;
  EXPECT_EQ(1u, Write("X", 0, block));
  EXPECT_NE(other, block);
  EXPECT_EQ("Xbcdef", Text(*block));
  EXPECT_TRUE(block->is_modified());
  EXPECT_EQ("abcdef", Text(*other));
  EXPECT_FALSE(other->is_modified());
  EXPECT_EQ(0x104u, other->get_id());
}

TEST_P(PstBlockWritingTest, WritingAcrossChildren) {
  std::shared_ptr<data_block> block = context->read_data_block(0x112);
  const auto page = block->get_page(0);
  EXPECT_EQ(4u, Write("1234", maxData() - 2, block));
  EXPECT_EQ("xx1234il", ReadRaw(*block, 8, maxData() - 4));
  EXPECT_TRUE(block->is_modified());
  EXPECT_EQ(0u, block->get_id());
  // The page had another holder and was copied; the cache has the copy.
  EXPECT_EQ(std::string(maxData(), 'x'), Text(*page));
  EXPECT_NE(page, block->get_page(0));
  EXPECT_EQ(block->get_page(0), block->get_page(0));
}

TEST_P(PstBlockWritingTest, ASharedExtendedBlockIsCopiedWithItsChildren) {
  const std::shared_ptr<data_block> other = context->read_data_block(0x112);
  std::shared_ptr<data_block> block = other;
  EXPECT_EQ("tail", ReadRaw(*other, 4, maxData()));
  EXPECT_EQ(2u, Write("TA", maxData(), block));
  EXPECT_NE(other, block);
  EXPECT_EQ("TAil", ReadRaw(*block, 4, maxData()));
  EXPECT_EQ("tail", ReadRaw(*other, 4, maxData()));
}

TEST_P(PstBlockWritingTest, WritingNeedsTheContext) {
  std::shared_ptr<data_block> block = context->read_data_block(0x104);
  context.reset();
  EXPECT_THROW(Write("X", 0, block), std::bad_weak_ptr);
  EXPECT_EQ("abcdef", Text(*block));
  EXPECT_EQ(0x104u, block->get_id());
}

// resize --------------------------------------------------------------------------------------

TEST_P(PstBlockWritingTest, ResizingWithinABlock) {
  std::shared_ptr<data_block> block = context->read_data_block(0x104);
  const data_block* const before = block.get();
  EXPECT_EQ(3u, block->resize(3, block));
  EXPECT_EQ("abc", Text(*block));
  // Neither the bytes cut off nor padding and trailer come back.
  EXPECT_EQ(60u, block->resize(60, block));
  EXPECT_EQ("abc" + std::string(57, '\0'), Text(*block));
  EXPECT_EQ(before, block.get());
  EXPECT_TRUE(block->is_modified());
  EXPECT_EQ(maxData(), block->resize(maxData(), block));
  EXPECT_EQ(before, block.get());
  EXPECT_EQ(0u, block->resize(0, block));
  EXPECT_EQ("", Text(*block));
}

TEST_P(PstBlockWritingTest, ASharedBlockIsCopiedBeforeItIsResized) {
  const std::shared_ptr<data_block> other = context->read_data_block(0x104);
  std::shared_ptr<data_block> block = other;
  EXPECT_EQ(3u, block->resize(3, block));
  EXPECT_NE(other, block);
  EXPECT_EQ("abc", Text(*block));
  EXPECT_EQ("abcdef", Text(*other));
}

TEST_P(PstBlockWritingTest, ABlockGrowsIntoAnExtendedOne) {
  std::shared_ptr<data_block> block = context->read_data_block(0x104);
  EXPECT_EQ(maxData() + 1, block->resize(maxData() + 1, block));
  ASSERT_TRUE(block->is_internal());
  EXPECT_EQ(1, static_cast<extended_block&>(*block).get_level());
  EXPECT_EQ("abcdef" + std::string(maxData() - 5, '\0'), Text(*block));
  EXPECT_EQ(2u, block->get_page_count());
  EXPECT_EQ(1u, block->get_page(1)->get_total_size());
  // And back: the first child alone.
  EXPECT_EQ(3u, block->resize(3, block));
  EXPECT_FALSE(block->is_internal());
  EXPECT_EQ("abc", Text(*block));
}

TEST_P(PstBlockWritingTest, AnExtendedBlockGrowsByChildren) {
  std::shared_ptr<data_block> block = context->read_data_block(0x112);
  EXPECT_EQ(3 * maxData() + 2, block->resize(3 * maxData() + 2, block));
  EXPECT_EQ(3 * maxData() + 2, block->get_total_size());
  EXPECT_EQ(4u, block->get_page_count());
  EXPECT_EQ("xtail", ReadRaw(*block, 5, maxData() - 1));
  EXPECT_EQ(std::string(2 * maxData() - 2, '\0'), ReadRaw(*block, 9999999, maxData() + 4));
  EXPECT_EQ(maxData(), block->get_page(1)->get_total_size());
  EXPECT_EQ(maxData(), block->get_page(2)->get_total_size());
  EXPECT_EQ(2u, block->get_page(3)->get_total_size());
  // Cut inside the second child, which then is the last.
  EXPECT_EQ(maxData() + 2, block->resize(maxData() + 2, block));
  EXPECT_EQ("xta", ReadRaw(*block, 99, maxData() - 1));
  EXPECT_EQ(Thrown<std::out_of_range>([&] { block->get_page(2); }),
            "index >= m_child_blocks.size()");
}

TEST_P(PstBlockWritingTest, AnExtendedBlockShrinksToItsFirstChild) {
  std::shared_ptr<data_block> block = context->read_data_block(0x112);
  EXPECT_EQ(maxData(), block->resize(maxData(), block));
  EXPECT_FALSE(block->is_internal());
  EXPECT_EQ(std::string(maxData(), 'x'), Text(*block));
  EXPECT_EQ(0u, block->resize(0, block));
}

TEST_P(PstBlockWritingTest, ASharedExtendedBlockIsCopiedBeforeItIsResized) {
  const std::shared_ptr<data_block> other = context->read_data_block(0x112);
  std::shared_ptr<data_block> block = other;
  EXPECT_EQ(2 * maxData(), block->resize(2 * maxData(), block));
  EXPECT_NE(other, block);
  EXPECT_EQ(maxData() + 4, other->get_total_size());
  EXPECT_EQ(2 * maxData(), block->get_total_size());
}

TEST_P(PstBlockWritingTest, TheFirstChildIsResizedBeforeASharedBlockIsCopied) {
  const std::shared_ptr<data_block> other = context->read_data_block(0x112);
  std::shared_ptr<data_block> block = other;
  EXPECT_EQ(3u, block->resize(3, block));
  EXPECT_FALSE(block->is_internal());
  // The child is the one of the block that others hold, too.
  EXPECT_EQ(block, other->get_page(0));
  EXPECT_EQ(3u, other->get_page(0)->get_total_size());
  EXPECT_FALSE(other->is_modified());
  EXPECT_EQ(maxData() + 4, other->get_total_size());
}

TEST_P(PstBlockWritingTest, ChildrenThatHaveTheirSizeAreResizedToo) {
  // The last child, which is full already, when others come after it.
  std::shared_ptr<data_block> block = context->read_data_block(0x116);
  EXPECT_EQ(2 * maxData() + 1, block->resize(2 * maxData() + 1, block));
  EXPECT_FALSE(block->get_page(0)->is_modified());
  EXPECT_TRUE(block->get_page(1)->is_modified());
  // One that others hold is copied.
  block = context->read_data_block(0x116);
  const auto page = block->get_page(1);
  EXPECT_EQ(2 * maxData() + 1, block->resize(2 * maxData() + 1, block));
  EXPECT_NE(page, block->get_page(1));
  EXPECT_FALSE(page->is_modified());
  EXPECT_EQ(Text(*page), Text(*block->get_page(1)));
  // And the last child of a stream that keeps its size.
  block = context->read_data_block(0x112);
  EXPECT_EQ(maxData() + 4, block->resize(maxData() + 4, block));
  EXPECT_FALSE(block->get_page(0)->is_modified());
  EXPECT_TRUE(block->get_page(1)->is_modified());
  EXPECT_EQ("xtail", ReadRaw(*block, 5, maxData() - 1));
}

TEST_P(PstBlockWritingTest, ALevelOverItsOwnLevelGrows) {
  // A second level over a second level over a first, as made in memory.
  const auto first =
      context->create_extended_block(context, context->read_external_block(context, 0x104));
  const auto second = context->create_extended_block(context, first);
  std::shared_ptr<data_block> block = context->create_extended_block(context, second);
  EXPECT_EQ(2 * levelTwo(), block->resize(2 * levelTwo(), block));
  EXPECT_EQ("abcdef" + std::string(1, '\0'), ReadRaw(*block, 7, 0));
  EXPECT_EQ(std::string(3, '\0'), ReadRaw(*block, 9, 2 * levelTwo() - 3));
}

TEST_P(PstBlockWritingTest, AFirstLevelGrowsIntoASecond) {
  std::shared_ptr<data_block> block = context->read_data_block(0x112);
  const uint64_t size = levelTwo() + 3;
  EXPECT_EQ(size, block->resize(size, block));
  ASSERT_TRUE(block->is_internal());
  EXPECT_EQ(2, static_cast<extended_block&>(*block).get_level());
  EXPECT_EQ(size, block->get_total_size());
  EXPECT_EQ("xtail" + std::string(1, '\0'), ReadRaw(*block, 6, maxData() - 1));
  EXPECT_EQ(std::string(5, '\0'), ReadRaw(*block, 99, size - 5));
  EXPECT_EQ(4u, Write("over", levelTwo() - 2, block));
  EXPECT_EQ("over" + std::string(1, '\0'), ReadRaw(*block, 99, levelTwo() - 2));
}

TEST_P(PstBlockWritingTest, ASecondLevelCannotGrowForever) {
  const auto child = context->create_external_block(context, 1);
  std::shared_ptr<data_block> block =
      context->create_extended_block(context, context->create_extended_block(context, child));
  const uint64_t most = levelTwo() * maxChildren();
  EXPECT_EQ(Thrown<can_not_resize>([&] { block->resize(most + 1, block); }), "size > max_size");
  EXPECT_EQ(most, block->get_total_size());
  EXPECT_EQ(most, block->resize(most, block));
}

}  // namespace

}  // namespace tarn::test
