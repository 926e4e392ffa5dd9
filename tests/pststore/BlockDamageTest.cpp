// Blocks that contradict themselves or their file: bounded work, bounded memory, no byte from
// outside of a buffer.
#include <gtest/gtest.h>

#include "pststore/StoreHarness.h"

namespace tarn::test {

namespace {

using namespace pststore;

class PstBlockDamageTest : public BothLayouts {
 protected:
  uint32_t max32() const { return static_cast<uint32_t>(maxData()); }
};
INSTANTIATE_TEST_SUITE_P(Layouts, PstBlockDamageTest, ::testing::Bool(), LayoutName);

TEST_P(PstBlockDamageTest, IdsAreTakenAsFarAsTheExtentReaches) {
  // Extent 64, ids from 8: 14 of 4 bytes or 7 of 8 bytes, the last ones out of the trailer.
  const uint16_t room = unicode() ? 7 : 14;
  for (const uint16_t count : {room, static_cast<uint16_t>(room + 1), uint16_t{0xFFFF}}) {
    RawImage image(unicode());
    const uint64_t at = image.extended(0x10A, 1, 4, {0x104});
    image.put(at + 2, count, 2);
    const auto context = OpenedImage(image.trees()).open();
    if (count == room) {
      EXPECT_EQ(room, context->read_extended_block(context, 0x10A)->get_child_ids().size());
    } else {
      EXPECT_THROW(context->read_data_block(0x10A), database_corrupt);
    }
  }
}

TEST_P(PstBlockDamageTest, ABlockThatContainsItself) {
  for (const uint8_t level : {uint8_t{1}, uint8_t{2}, uint8_t{9}}) {
    RawImage image(unicode());
    image.extended(0x10A, level, 100, {0x10A});
    const OpenedImage file(image.trees());
    const auto context = file.open();
    const auto block = context->read_data_block(0x10A);
    EXPECT_EQ(Thrown<database_corrupt>([&] { ReadRaw(*block, 10, 0); }), "tree too deep");
    EXPECT_EQ(Thrown<database_corrupt>([&] { block->get_page(0); }), "tree too deep");
    // The block tree once; then the block, seven times below itself, and the ninth that is refused,
    // each with its beginning.
    EXPECT_EQ(1u + 9 * 2, CallsOf(PlainKernelFaultRead, file, [](const auto& other) {
                const auto root = other->read_data_block(0x10A);
                try {
                  ReadRaw(*root, 10, 0);
                } catch (const database_corrupt&) {
                }
              }));
  }
}

TEST_P(PstBlockDamageTest, ABlockThatContainsItselfCannotBeCut) {
  for (const uint8_t level : {uint8_t{1}, uint8_t{2}}) {
    RawImage image(unicode());
    image.extended(0x10A, level, 100, {0x10A});
    const auto context = OpenedImage(image.trees()).open();
    std::shared_ptr<data_block> block = context->read_data_block(0x10A);
    EXPECT_EQ(Thrown<database_corrupt>([&] { block->resize(5, block); }), "tree too deep");
    EXPECT_EQ(Thrown<database_corrupt>([&] { block->write_raw(BytesOf("x"), 0, block); }),
              "tree too deep");
  }
}

TEST_P(PstBlockDamageTest, BlocksThatContainEachOther) {
  RawImage image(unicode());
  image.extended(0x10A, 2, 100, {0x10E});
  image.extended(0x10E, 2, 100, {0x10A});
  const auto context = OpenedImage(image.trees()).open();
  EXPECT_EQ(Thrown<database_corrupt>([&] { ReadRaw(*context->read_data_block(0x10A), 10, 0); }),
            "tree too deep");
}

TEST_P(PstBlockDamageTest, AtMostEightExtendedBlocksAreBelowEachOther) {
  for (const uint64_t blocks : {8u, 9u}) {
    RawImage image(unicode());
    image.block(0x104, "data");
    for (uint64_t i = 0; i < blocks; ++i) {
      const uint64_t child = i == 0 ? 0x104 : 0x10A + 4 * (i - 1);
      image.extended(0x10A + 4 * i, static_cast<uint8_t>(1 + i % 3), 4, {child});
    }
    const auto context = OpenedImage(image.trees()).open();
    const auto root = context->read_data_block(0x10A + 4 * (blocks - 1));
    if (blocks == 8) {
      EXPECT_EQ(4u, ReadRaw(*root, 10, 0).size());
      EXPECT_EQ(4u, root->get_page(0)->get_total_size());
    } else {
      EXPECT_EQ(Thrown<database_corrupt>([&] { ReadRaw(*root, 10, 0); }), "tree too deep");
    }
  }
}

TEST_P(PstBlockDamageTest, OneBlockUnderManyParentsTakesRoomEachTime) {
  // The child fills an extent of 8192 bytes; the root, of 20 ids, one of 192 or 128. The limit is
  // the size of the file and 64 KiB: the root and eleven children, or one byte less.
  const uint64_t root = unicode() ? 192 : 128;
  for (const uint64_t less : {0u, 1u}) {
    RawImage image(unicode());
    image.block(0x104, "data");
    std::vector<uint64_t> ids((maxData() - 8) / image.wide(), 0);
    ids[0] = 0x104;
    image.extended(0x10A, 1, 4, ids);
    image.extended(0x10E, 1, 4, std::vector<uint64_t>(20, 0x10A));
    image.trees().file.resize(root + 11 * 8192 - 65536 - less);
    const auto context = OpenedImage(image).open();
    const auto block = context->read_data_block(0x10E);
    const uint32_t pages = less == 0 ? 11 : 10;
    for (uint32_t i = 0; i < pages; ++i) EXPECT_EQ(4u, block->get_page(i)->get_total_size());
    for (int i = 0; i < 2; ++i) {
      EXPECT_EQ(Thrown<database_corrupt>([&] { block->get_page(pages); }),
                "blocks of a tree larger than the file");
    }
    // Another stream may well have the same blocks.
    EXPECT_EQ(4u, context->read_data_block(0x10E)->get_page(pages - 1)->get_total_size());
  }
}

TEST_P(PstBlockDamageTest, ChildrenThatAreNoBlocksOfData) {
  RawImage image(unicode());
  image.subnodeLeaf(0x10A, {});
  image.extended(0x10E, 1, 4, {0x10A});
  image.extended(0x112, 1, 4, {0x7770});
  const auto context = OpenedImage(image.trees()).open();
  EXPECT_EQ(Thrown<unexpected_block>([&] { ReadRaw(*context->read_data_block(0x10E), 4, 0); }),
            "extended block expected");
  EXPECT_THROW(ReadRaw(*context->read_data_block(0x112), 4, 0), key_not_found<ulonglong>);
}

TEST_P(PstBlockDamageTest, AChildShorterThanItsPlace) {
  RawImage image(unicode());
  image.block(0x104, "short");
  image.block(0x108, "tail");
  image.extended(0x10E, 1, max32() + 4, {0x104, 0x108});
  const auto context = OpenedImage(image.trees()).open();
  const auto block = context->read_data_block(0x10E);
  EXPECT_EQ(5u, ReadRaw(*block, 5, 0).size());
  EXPECT_THROW(ReadRaw(*block, 6, 0), database_corrupt);
  EXPECT_THROW(ReadRaw(*block, 1, 5), database_corrupt);
  EXPECT_THROW(ReadRaw(*block, 1, 100), database_corrupt);
  EXPECT_EQ(4u, ReadRaw(*block, 4, maxData()).size());
}

TEST_P(PstBlockDamageTest, AChildWithoutBytes) {
  RawImage image(unicode());
  image.block(0x104, "");
  image.extended(0x10A, 1, 4, {0x104});
  const auto context = OpenedImage(image.trees()).open();
  EXPECT_THROW(ReadRaw(*context->read_data_block(0x10A), 1, 0), database_corrupt);
}

TEST_P(PstBlockDamageTest, FewerChildrenThanTheSizeAsksFor) {
  RawImage image(unicode());
  image.block(0x104, std::string(maxData(), 'x'));
  image.extended(0x10A, 1, max32() + 100, {0x104});
  image.extended(0x10E, 1, 100, {});
  const auto context = OpenedImage(image.trees()).open();
  const auto block = context->read_data_block(0x10A);
  EXPECT_EQ(2u, block->get_page_count());
  EXPECT_EQ(maxData(), ReadRaw(*block, maxData(), 0).size());
  EXPECT_EQ(Thrown<std::out_of_range>([&] { ReadRaw(*block, maxData() + 1, 0); }),
            "index >= m_child_blocks.size()");
  EXPECT_EQ(Thrown<std::out_of_range>([&] { ReadRaw(*context->read_data_block(0x10E), 1, 0); }),
            "index >= m_child_blocks.size()");
}

TEST_P(PstBlockDamageTest, AChildLargerThanItsPlaceGivesWhatItHas) {
  // Neither size is compared with the other: the child goes on after its place.
  RawImage image(unicode());
  const uint64_t full = maxData() * maxChildren();
  image.block(0x104, std::string(maxData(), 'x'));
  image.extended(0x10A, 1, full + 8, std::vector<uint64_t>(maxChildren(), 0x104));
  image.extended(0x10E, 2, full + 8, {0x10A});
  const auto context = OpenedImage(image.trees()).open();
  const auto block = context->read_data_block(0x10E);
  EXPECT_EQ(4u, ReadRaw(*block, 4, full - 4).size());
  EXPECT_EQ(Thrown<std::out_of_range>([&] { ReadRaw(*block, 8, full - 4); }),
            "index >= m_child_blocks.size()");
}

TEST_P(PstBlockDamageTest, AStreamMuchLargerThanTheFile) {
  // 16 MiB may be holes; beyond that the file has to have the bytes.
  constexpr uint32_t kHoles = 16u << 20;
  for (const uint32_t more : {0u, 1u}) {
    RawImage image(unicode());
    const uint64_t at = image.extended(0x10A, 2, 0, {0, 0, 0});
    image.trees();
    const auto size = static_cast<uint32_t>(image.file.size());
    image.put(at + 4, kHoles + size + more, 4);
    const auto context = OpenedImage(image).open();
    if (more == 0) {
      EXPECT_EQ(kHoles + size, context->read_data_block(0x10A)->get_total_size());
    } else {
      EXPECT_EQ(Thrown<database_corrupt>([&] { context->read_data_block(0x10A); }),
                "stream larger than the file");
    }
  }
}

TEST_P(PstBlockDamageTest, AnEndOfFileThatTheHeaderInventsIsNoRoom) {
  RawImage image(unicode());
  image.extended(0x10A, 2, UINT32_MAX, {0, 0, 0});
  image.trees().setFileEof(UINT32_MAX);
  const auto context = OpenedImage(image).open();
  EXPECT_THROW(context->read_data_block(0x10A), database_corrupt);
}

TEST_P(PstBlockDamageTest, ChildrenAfterTheEndTakeRoomToo) {
  // A thousand holes of eight megabytes, all after a stream of four bytes, can be asked for as
  // pages.
  RawImage image(unicode());
  image.extended(0x10A, 2, 4, std::vector<uint64_t>(1000, 0));
  image.extended(0x10E, 2, 4, {0, 0});
  const auto context = OpenedImage(image.trees()).open();
  EXPECT_THROW(context->read_data_block(0x10A), database_corrupt);
  EXPECT_EQ(maxData(), context->read_data_block(0x10E)->get_page(5)->get_total_size());
}

TEST_P(PstBlockDamageTest, TheSizeOfTheFileIsAskedForOnce) {
  RawImage image(unicode());
  image.extended(0x10A, 2, 16u << 20, {0});
  image.extended(0x10E, 2, (16u << 20) + 1, {0});
  const OpenedImage file(image.trees());
  const auto seeks = [&](ulonglong id, int times) {
    return CallsOf(PlainKernelFaultSeek, file, [=](const auto& context) {
      for (int i = 0; i < times; ++i) context->read_data_block(id);
    });
  };
  // The block tree once; then the beginning and the block.
  EXPECT_EQ(3u, seeks(0x10A, 1));
  EXPECT_EQ(4u, seeks(0x10E, 1));
  EXPECT_EQ(6u, seeks(0x10E, 2));
}

TEST_P(PstBlockDamageTest, TheBeginningOfABlockHas12Or16Bytes) {
  const size_t beginning = unicode() ? 16 : 12;
  for (const size_t less : {0u, 1u}) {
    RawImage image(unicode());
    image.blocks.push_back({0x10A, 0x4000, 16, 2});
    image.trees().write(0x4000, "\x02").file.resize(0x4000 + beginning - less);
    const auto context = OpenedImage(image).open();
    if (less == 0) {
      EXPECT_EQ(Thrown<unexpected_block>([&] { context->read_data_block(0x10A); }),
                "extended block expected");
    } else {
      EXPECT_EQ(Thrown<std::out_of_range>([&] { context->read_data_block(0x10A); }),
                "fread failed");
    }
  }
}

TEST_P(PstBlockDamageTest, TheTypeOfABlockAfterTheEnd) {
  RawImage image(unicode());
  image.blocks.push_back({0x10A, 0x700000, 16, 2});
  image.blocks.push_back({0x10E, unicode() ? UINT64_MAX : UINT32_MAX, 16, 2});
  const auto context = OpenedImage(image.trees()).open();
  EXPECT_EQ(Thrown<std::out_of_range>([&] { context->read_data_block(0x10A); }), "fread failed");
  EXPECT_EQ(Thrown<std::out_of_range>([&] { context->read_data_block(0x10E); }),
            unicode() ? "fseek failed" : "fread failed");
}

}  // namespace

}  // namespace tarn::test
