// Blocks of data read from a file: which kind of block is what, and the streams they make.
#include <gtest/gtest.h>

#include "pststore/StoreHarness.h"

namespace tarn::test {

namespace {

using namespace pststore;

class PstBlocksTest : public BothLayouts {
 protected:
  // Where the signature of a block of one step of 64 bytes is.
  uint64_t signatureOf64() const { return 64 - OffsetsOf(layout()).blockTrailer + 2; }
};
INSTANTIATE_TEST_SUITE_P(Layouts, PstBlocksTest, ::testing::Bool(), LayoutName);

// Kinds ---------------------------------------------------------------------------------------

TEST_P(PstBlocksTest, AnExternalBlock) {
  RawImage image(unicode());
  const uint64_t at = image.block(0x104, "data");
  const auto context = OpenedImage(image.trees()).open();
  const auto block = context->read_external_block(context, 0x104);
  EXPECT_FALSE(block->is_internal());
  EXPECT_FALSE(block->is_modified());
  EXPECT_EQ(0x104u, block->get_id());
  EXPECT_EQ(at, block->get_address());
  EXPECT_EQ(4u, block->get_disk_size());
  EXPECT_EQ(4u, block->get_total_size());
  EXPECT_EQ("data", Text(block->get_bytes()));
  EXPECT_EQ(1u, block->get_page_count());
  EXPECT_EQ(block, block->get_page(0));
  EXPECT_EQ(Thrown<std::out_of_range>([&] { block->get_page(1); }), "index > 0");
}

TEST_P(PstBlocksTest, ReadsOfAnExternalBlockEndWithItsData) {
  RawImage image(unicode());
  image.block(0x104, "abcdef");
  const auto context = OpenedImage(image.trees()).open();
  const auto block = context->read_data_block(0x104);
  EXPECT_EQ("abcdef", ReadRaw(*block, 6, 0));
  EXPECT_EQ("abcdef", ReadRaw(*block, 100, 0));
  EXPECT_EQ("cd", ReadRaw(*block, 2, 2));
  EXPECT_EQ("f", ReadRaw(*block, 100, 5));
  EXPECT_EQ("", ReadRaw(*block, 100, 6));
  EXPECT_EQ("", ReadRaw(*block, 100, 7));
  EXPECT_EQ("", ReadRaw(*block, 100, UINT64_MAX));
  EXPECT_EQ("", ReadRaw(*block, 0, 0));
  std::string room(6, '?');
  EXPECT_EQ(4u, block->read_raw(RoomOf(room), 2));
  EXPECT_EQ("cdef??", room);
  EXPECT_EQ(4u, block->skip_raw(UINT64_MAX, 2));
}

TEST_P(PstBlocksTest, BlockIdZeroIsTheEmptyBlock) {
  const auto context = OpenedImage(RawImage(unicode()).trees()).open();
  const auto block = context->read_data_block(0);
  EXPECT_FALSE(block->is_internal());
  EXPECT_FALSE(block->is_modified());
  EXPECT_EQ(0u, block->get_id());
  EXPECT_EQ(0u, block->get_total_size());
  EXPECT_EQ(1u, block->get_page_count());
  EXPECT_EQ("", ReadRaw(*block, 5, 0));
  // Whatever else is said of it.
  const auto other = context->read_external_block(context, block_info{0, 0x2000, 99, 1});
  EXPECT_EQ(0u, other->get_total_size());
  EXPECT_EQ(0u, other->get_disk_size());
}

TEST_P(PstBlocksTest, IdsOfTheWrongKind) {
  RawImage image(unicode());
  image.block(0x104, "data");
  image.extended(0x10A, 1, 4, {0x104});
  const auto context = OpenedImage(image.trees()).open();
  EXPECT_EQ(Thrown<unexpected_block>([&] { context->read_external_block(context, 0x10A); }),
            "External BID expected");
  EXPECT_EQ(Thrown<unexpected_block>([&] { context->read_extended_block(context, 0x104); }),
            "internal bid expected");
  EXPECT_EQ(Thrown<unexpected_block>([&] { context->read_extended_block(context, ulonglong{0}); }),
            "internal bid expected");
  EXPECT_TRUE(context->read_data_block(0x10A)->is_internal());
  EXPECT_FALSE(context->read_data_block(0x104)->is_internal());
}

TEST_P(PstBlocksTest, AnInternalBlockThatIsNotExtended) {
  RawImage image(unicode());
  image.subnodeLeaf(0x10A, {{0x25, 0x104, 0}});
  const auto context = OpenedImage(image.trees()).open();
  EXPECT_EQ(Thrown<unexpected_block>([&] { context->read_data_block(0x10A); }),
            "extended block expected");
  const auto block = context->read_block(context, 0x10A);
  EXPECT_NE(nullptr, dynamic_cast<subnode_leaf_block*>(block.get()));
  EXPECT_EQ(0x10Au, block->get_id());
}

TEST_P(PstBlocksTest, AnyBlock) {
  RawImage image(unicode());
  image.block(0x104, "data");
  image.extended(0x10A, 1, 4, {0x104});
  image.subnodeNonleaf(0x10E, {{0x25, 0x112}});
  const auto context = OpenedImage(image.trees()).open();
  EXPECT_NE(nullptr, dynamic_cast<external_block*>(context->read_block(context, 0x104).get()));
  EXPECT_NE(nullptr, dynamic_cast<extended_block*>(context->read_block(context, 0x10A).get()));
  EXPECT_NE(nullptr,
            dynamic_cast<subnode_nonleaf_block*>(context->read_block(context, 0x10E).get()));
  EXPECT_THROW(context->read_block(context, 0x112), key_not_found<ulonglong>);
  // Only an unexpected block is tried as another kind: a third read, after that of the block tree,
  // would fail here.
  image.put(image.blocks[0].ib + signatureOf64(), 0, 2);
  const auto damaged = OpenedImage(image).open();
  PlainKernelFailAt(PlainKernelFaultRead, 3);
  EXPECT_EQ(Thrown<sig_mismatch>([&] { damaged->read_block(damaged, 0x104); }),
            "block sig mismatch");
}

TEST_P(PstBlocksTest, TheBeginningOfAnExtendedBlockIsReadFirst) {
  RawImage image(unicode());
  image.block(0x104, "data");
  const uint64_t at = image.extended(0x10A, 1, 4, {0x104});
  image.trees();
  // The type decides before anything else of the block is checked.
  image.put(at, 2, 1).put(at + signatureOf64(), 0, 2);
  const OpenedImage file(image);
  const auto context = file.open();
  EXPECT_EQ(Thrown<unexpected_block>([&] { context->read_data_block(0x10A); }),
            "extended block expected");
  // It is not looked at again.
  image.put(at + signatureOf64(), PstSignature(0x10A, at), 2);
  const auto other = OpenedImage(image).open();
  EXPECT_EQ(4u, other->read_extended_block(other, 0x10A)->get_total_size());
}

TEST_P(PstBlocksTest, ReadsOfEachKind) {
  RawImage image(unicode());
  image.block(0x104, "data");
  image.extended(0x10A, 1, 4, {0x104});
  image.subnodeLeaf(0x10E, {});
  const OpenedImage file(image.trees());
  const auto reads = [&](ulonglong id) {
    return CallsOf(PlainKernelFaultRead, file,
                   [=](const auto& context) { context->read_block(context, id); });
  };
  EXPECT_EQ(2u, reads(0x104));  // the root of the block tree, and the block
  EXPECT_EQ(3u, reads(0x10A));  // its beginning besides
  EXPECT_EQ(3u, reads(0x10E));
  EXPECT_EQ(0u, reads(0));
}

// Decoding ------------------------------------------------------------------------------------

TEST_P(PstBlocksTest, OtherMethodsLeaveTheBytesAlone) {
  for (const int method : {0, 3, 255}) {
    RawImage image(unicode());
    image.cryptMethod = static_cast<uint8_t>(method);
    image.block(0x104, "Hello, store");
    const auto context = OpenedImage(image.trees()).open();
    EXPECT_EQ("Hello, store", ReadRaw(*context->read_data_block(0x104), 99, 0)) << method;
  }
}

TEST_P(PstBlocksTest, PermutedData) {
  RawImage image(unicode());
  image.cryptMethod = 1;
  image.block(0x104, "Hello, store");
  const auto context = OpenedImage(image.trees()).open();
  EXPECT_EQ("\x28\xDA\xCD\xCD\xD3\x6B\x39\xD6\x14\xD3\x86\xDA",
            ReadRaw(*context->read_data_block(0x104), 99, 0));
}

TEST_P(PstBlocksTest, CyclicDataTakesTheIdAsItsKey) {
  RawImage image(unicode());
  image.cryptMethod = 2;
  image.block(4, "Hello, store");
  image.block(0x12345678, "Hello, store");
  const auto context = OpenedImage(image.trees()).open();
  EXPECT_EQ("\xFB\xEA\xDC\x70\x6B\xC5\x23\xA9\xAC\xBA\xAA\x59",
            ReadRaw(*context->read_data_block(0x12345678), 99, 0));
  EXPECT_EQ("\xF1\x2F\xAB\x7E\xD5\xC7\xFD\xDF\x7E\x17\x7C\xFE",
            ReadRaw(*context->read_data_block(4), 99, 0));
}

TEST(PstWideKeyTest, OnlyTheLowerHalfOfAWideIdIsTheKey) {
  RawImage image(true);
  image.cryptMethod = 2;
  image.block(0x7700000000000004, "Hello, store");
  const auto context = OpenedImage(image.trees()).open();
  EXPECT_EQ("\xF1\x2F\xAB\x7E\xD5\xC7\xFD\xDF\x7E\x17\x7C\xFE",
            ReadRaw(*context->read_data_block(0x7700000000000004), 99, 0));
}

TEST_P(PstBlocksTest, OnlyExternalBlocksAreEncoded) {
  for (const uint8_t method : {uint8_t{1}, uint8_t{2}}) {
    RawImage image(unicode());
    image.cryptMethod = method;
    image.block(0x104, "x");
    image.extended(0x10A, 1, 1, {0x104});
    image.subnodeLeaf(0x10E, {{0x25, 0x104, 0}});
    const auto context = OpenedImage(image.trees()).open();
    EXPECT_EQ(1u, context->read_data_block(0x10A)->get_total_size());
    EXPECT_EQ(0x104u, context->read_subnode_block(0x10E)->lookup(0x25).data_bid);
  }
}

// Extended blocks -----------------------------------------------------------------------------

TEST_P(PstBlocksTest, ExtendedBlockFields) {
  RawImage image(unicode());
  image.block(0x104, "data");
  const uint64_t at = image.extended(0x10A, 1, 12345, {0x104, 0x108});
  const auto context = OpenedImage(image.trees()).open();
  const auto block = context->read_extended_block(context, 0x10A);
  EXPECT_TRUE(block->is_internal());
  EXPECT_EQ(0x10Au, block->get_id());
  EXPECT_EQ(at, block->get_address());
  EXPECT_EQ(12345u, block->get_total_size());
  EXPECT_EQ(unicode() ? 24u : 16u, block->get_disk_size());
  EXPECT_EQ(1, block->get_level());
  ASSERT_EQ(2u, block->get_child_ids().size());
  EXPECT_EQ(0x108u, block->get_child_ids()[1]);
}

TEST_P(PstBlocksTest, PagesOfAStream) {
  for (const uint32_t more : {0u, 1u}) {
    RawImage image(unicode());
    image.block(0x104, std::string(maxData(), 'x'));
    image.extended(0x10A, 1, maxData() + more, {0x104, 0x104});
    const auto context = OpenedImage(image.trees()).open();
    EXPECT_EQ(more == 0 ? 1u : 2u, context->read_data_block(0x10A)->get_page_count());
  }
}

TEST_P(PstBlocksTest, ReadsAcrossBlocks) {
  RawImage image(unicode());
  const std::string first = Pattern(maxData(), 1);
  const std::string second = Pattern(maxData(), 2);
  image.block(0x104, first);
  image.block(0x108, second);
  image.block(0x10C, "tail");
  const std::string all = first + second + "tail";
  image.extended(0x112, 1, all.size(), {0x104, 0x108, 0x10C});
  const auto context = OpenedImage(image.trees()).open();
  const auto block = context->read_data_block(0x112);
  EXPECT_EQ(3u, block->get_page_count());
  EXPECT_EQ(all, ReadRaw(*block, all.size(), 0));
  EXPECT_EQ(all, ReadRaw(*block, all.size() + 100, 0));
  EXPECT_EQ(all.substr(maxData() - 2, 4), ReadRaw(*block, 4, maxData() - 2));
  EXPECT_EQ(all.substr(maxData(), 1), ReadRaw(*block, 1, maxData()));
  EXPECT_EQ(all.substr(maxData() - 1, maxData() + 2),
            ReadRaw(*block, maxData() + 2, maxData() - 1));
  EXPECT_EQ("il", ReadRaw(*block, 100, all.size() - 2));
  EXPECT_EQ("", ReadRaw(*block, 100, all.size()));
  EXPECT_EQ("", ReadRaw(*block, 100, all.size() + 1));
  EXPECT_EQ(0u, block->skip_raw(UINT64_MAX, UINT64_MAX));
  EXPECT_EQ(second, Text(block->get_page(1)->get_bytes()));
  EXPECT_EQ("tail", Text(block->get_page(2)->get_bytes()));
  EXPECT_EQ(block->get_page(1), block->get_page(1));
  EXPECT_EQ(Thrown<std::out_of_range>([&] { block->get_page(3); }),
            "index >= m_child_blocks.size()");
}

TEST_P(PstBlocksTest, TwoLevels) {
  RawImage image(unicode());
  const std::string page = Pattern(maxData(), 3);
  image.block(0x104, page);
  image.block(0x108, "tail");
  const uint64_t full = maxData() * maxChildren();
  image.extended(0x10E, 1, full, std::vector<uint64_t>(maxChildren(), 0x104));
  image.extended(0x112, 1, 4, {0x108});
  image.extended(0x116, 2, full + 4, {0x10E, 0x112});
  const OpenedImage file(image.trees());
  const auto context = file.open();
  const auto block = context->read_data_block(0x116);
  EXPECT_EQ(maxChildren() + 1, block->get_page_count());
  EXPECT_EQ("tail", Text(block->get_page(maxChildren())->get_bytes()));
  EXPECT_EQ(page, Text(block->get_page(0)->get_bytes()));
  EXPECT_EQ(page.substr(maxData() - 3) + "ta", ReadRaw(*block, 5, full - 3));
  EXPECT_EQ("ail", ReadRaw(*block, 100, full + 1));
  EXPECT_EQ(Thrown<std::out_of_range>([&] { block->get_page(2 * maxChildren()); }),
            "index >= m_child_blocks.size()");
  // One byte in the middle takes the way down: the root of the block tree, two extended blocks with
  // their beginnings, one external block.
  EXPECT_EQ(6u, CallsOf(PlainKernelFaultRead, file, [&](const auto& other) {
              unsigned char byte = 0;
              EXPECT_EQ(1u, other->read_data_block(0x116)->read_raw({&byte, 1}, full / 2));
            }));
}

TEST_P(PstBlocksTest, EveryLevelButOneIsTheSecond) {
  for (const uint8_t level : {uint8_t{0}, uint8_t{3}, uint8_t{255}}) {
    RawImage image(unicode());
    image.block(0x104, "data");
    image.extended(0x10A, 1, 4, {0x104});
    image.extended(0x10E, level, 4, {0x10A});
    const auto context = OpenedImage(image.trees()).open();
    const auto block = context->read_extended_block(context, 0x10E);
    EXPECT_EQ(2, block->get_level());
    EXPECT_EQ("data", ReadRaw(*block, 4, 0));
    EXPECT_EQ("data", Text(block->get_page(0)->get_bytes()));
  }
}

TEST_P(PstBlocksTest, LevelsAreNotComparedWithEachOther) {
  RawImage image(unicode());
  image.block(0x104, "data");
  image.extended(0x10A, 1, 4, {0x104});
  image.extended(0x10E, 1, 4, {0x10A});
  image.extended(0x112, 2, 4, {0x10A});
  image.extended(0x116, 3, 4, {0x112});
  image.extended(0x11A, 1, 4, {0x116});
  const auto context = OpenedImage(image.trees()).open();
  for (const uint64_t id : {0x10Eu, 0x112u, 0x116u, 0x11Au}) {
    const auto block = context->read_data_block(id);
    EXPECT_EQ("data", ReadRaw(*block, 9, 0)) << id;
    EXPECT_EQ("data", Text(block->get_page(0)->get_bytes())) << id;
  }
}

TEST_P(PstBlocksTest, ASecondLevelOverDataWithoutAFirst) {
  RawImage image(unicode());
  image.block(0x104, "data");
  image.extended(0x10A, 2, 4, {0x104});
  const auto context = OpenedImage(image.trees()).open();
  EXPECT_EQ("data", ReadRaw(*context->read_data_block(0x10A), 9, 0));
}

// Holes ---------------------------------------------------------------------------------------

TEST_P(PstBlocksTest, AHoleReadsAsZerosOfItsPlace) {
  RawImage image(unicode());
  image.block(0x104, "tail");
  image.extended(0x10A, 1, maxData() + 4, {0, 0x104});
  const auto context = OpenedImage(image.trees()).open();
  const auto block = context->read_data_block(0x10A);
  EXPECT_EQ(std::string(maxData(), '\0') + "tail", ReadRaw(*block, 10000, 0));
  const auto hole = block->get_page(0);
  EXPECT_EQ(maxData(), hole->get_total_size());
  EXPECT_TRUE(hole->is_modified());
  EXPECT_EQ(0x1000u, hole->get_id());
  EXPECT_EQ(hole, block->get_page(0));
}

TEST_P(PstBlocksTest, AHoleOfTheSecondLevel) {
  RawImage image(unicode());
  image.block(0x104, "tail");
  image.extended(0x10A, 1, 4, {0x104});
  const uint64_t full = maxData() * maxChildren();
  image.extended(0x10E, 2, full + 4, {0, 0x10A});
  const auto context = OpenedImage(image.trees()).open();
  const auto block = context->read_data_block(0x10E);
  EXPECT_EQ(std::string(3, '\0') + "tai", ReadRaw(*block, 6, full - 3));
  EXPECT_EQ(maxData(), block->get_page(maxChildren() - 1)->get_total_size());
  std::string zeros(full, '?');
  EXPECT_EQ(full, block->read_raw(RoomOf(zeros), 0));
  EXPECT_EQ(std::string(full, '\0'), zeros);
}

// The context ---------------------------------------------------------------------------------

TEST_P(PstBlocksTest, ABlockWithoutItsContextLoadsNothing) {
  RawImage image(unicode());
  image.block(0x104, std::string(maxData(), 'a'));
  image.block(0x108, "b");
  image.extended(0x10E, 1, maxData() + 1, {0x104, 0x108});
  auto context = OpenedImage(image.trees()).open();
  const auto block = context->read_data_block(0x10E);
  EXPECT_EQ("a", ReadRaw(*block, 1, 0));
  context.reset();
  EXPECT_EQ("a", ReadRaw(*block, 1, 0));
  EXPECT_THROW(ReadRaw(*block, 1, maxData()), std::bad_weak_ptr);
}

TEST_P(PstBlocksTest, BlocksReferToTheContextTheyWereMadeFor) {
  RawImage image(unicode());
  image.block(0x104, "here");
  image.extended(0x10A, 1, 4, {0x104});
  const auto reader = OpenedImage(image.trees()).open();
  RawImage elsewhere(unicode());
  elsewhere.block(0x104, "else");
  const auto parent = OpenedImage(elsewhere.trees()).open();
  // Read here, but its children come from there.
  EXPECT_EQ("else", ReadRaw(*reader->read_data_block(parent, ulonglong{0x10A}), 4, 0));
  EXPECT_EQ("here", ReadRaw(*reader->read_data_block(0x10A), 4, 0));
}

TEST_P(PstBlocksTest, AChildThatFailsIsReadAgain) {
  RawImage image(unicode());
  image.block(0x104, "data");
  image.extended(0x10A, 1, 4, {0x104});
  const auto context = OpenedImage(image.trees()).open();
  const auto block = context->read_data_block(0x10A);
  PlainKernelFailAt(PlainKernelFaultRead, 1);
  EXPECT_EQ(Thrown<std::out_of_range>([&] { ReadRaw(*block, 4, 0); }), "fread failed");
  EXPECT_EQ("data", ReadRaw(*block, 4, 0));
}

}  // namespace

}  // namespace tarn::test
