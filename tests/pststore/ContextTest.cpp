// Opening a store, and what is checked when pages and blocks are read.
#include <gtest/gtest.h>

#include "pststore/StoreHarness.h"
#include "support/FaultSweep.h"

namespace tarn::test {

namespace {

using namespace pststore;

class PstContextTest : public BothLayouts {};
INSTANTIATE_TEST_SUITE_P(Layouts, PstContextTest, ::testing::Bool(), LayoutName);

constexpr uint64_t kData = 0x104;

// A store with one node and one block, whose bytes are "data".
RawImage SmallStore(bool unicode) {
  RawImage image(unicode);
  image.block(kData, "data");
  image.node(0x21, kData);
  return image.trees();
}

template <typename Exception>
void ExpectOpenThrows(const std::string& text, const RawImage& image) {
  const OpenedImage file(image);
  EXPECT_EQ(Thrown<Exception>([&] { file.open(); }), text);
}

// Opening -------------------------------------------------------------------------------------

TEST_P(PstContextTest, Opens) {
  const OpenedImage file(SmallStore(unicode()));
  EXPECT_EQ(kData, file.open()->lookup_node_info(0x21).data_bid);
}

TEST(PstOpenTest, NoFile) {
  EXPECT_EQ(Thrown<std::runtime_error>([] { open_database(u"/no/such/file.pst"); }),
            "fopen failed");
}

TEST(PstOpenTest, AVersionBelow20IsTheNarrowLayout) {
  RawImage image = SmallStore(false);
  image.setVersion(19);
  EXPECT_EQ(kData, OpenedImage(image).open()->lookup_node_info(0x21).data_bid);
}

TEST(PstOpenTest, AVersionFrom20OnIsTheWideLayout) {
  for (const uint16_t version : {uint16_t{20}, uint16_t{0x8000}, uint16_t{0xFFFF}}) {
    RawImage image = SmallStore(true);
    image.setVersion(version);
    EXPECT_EQ(kData, OpenedImage(image).open()->lookup_node_info(0x21).data_bid) << version;
  }
}

TEST(PstOpenTest, AWideBodyOfVersion19MeetsTheChecksumOfTheNarrowLayout) {
  RawImage image = SmallStore(true);
  image.setVersion(19);
  image.sealed = false;
  ExpectOpenThrows<crc_fail>("header dwCRCPartial failure", image);
}

TEST_P(PstContextTest, ADamagedHeaderIsFinal) {
  RawImage image(unicode());
  image.file = image.bytes();
  image.sealed = false;
  image.put(478, 1, 1);  // the last byte that the partial checksum covers
  const std::string covered = image.file.substr(8, 471);
  const uint32_t stored = PstCrc(RawImage(unicode()).bytes().substr(8, 471));
  const OpenedImage file(image);
  try {
    file.open();
    ADD_FAILURE();
  } catch (const crc_fail& failure) {
    EXPECT_STREQ("header dwCRCPartial failure", failure.what());
    EXPECT_EQ(0u, failure.address);
    EXPECT_EQ(0u, failure.id);
    EXPECT_EQ(PstCrc(covered), failure.computed);
    EXPECT_EQ(stored, failure.stored);
  }
  // A wide layout is known only by the second constructor, which opens the file again.
  if (unicode()) {
    PlainKernelFailAt(PlainKernelFaultOpen, 2);
    EXPECT_EQ(Thrown<std::runtime_error>([&] { file.open(); }), "fopen failed");
  }
  PlainKernelFailAt(PlainKernelFaultOpen, unicode() ? 3 : 2);
  EXPECT_EQ(Thrown<crc_fail>([&] { file.open(); }), "header dwCRCPartial failure");
  PlainKernelFailAt(PlainKernelFaultOpen, 0);
}

TEST(PstOpenTest, TheFullChecksumOfTheWideLayout) {
  RawImage image(true);
  image.file = image.bytes();
  image.sealed = false;
  image.put(523, 1, 1);  // only the full checksum covers it
  ExpectOpenThrows<crc_fail>("header dwCRCFull failure", image);
  image.put(523, 0, 1).put(479, 1, 1);
  ExpectOpenThrows<crc_fail>("header dwCRCFull failure", image);
}

TEST(PstOpenTest, BytesThatNoChecksumCovers) {
  RawImage narrow = SmallStore(false);
  narrow.file = narrow.bytes();
  narrow.sealed = false;
  narrow.put(479, 1, 1).put(0, 0, 4);
  EXPECT_NO_THROW(OpenedImage(narrow).open());
  RawImage wide = SmallStore(true);
  wide.file = wide.bytes();
  wide.sealed = false;
  wide.put(528, 1, 1).put(0, 0, 4);
  EXPECT_NO_THROW(OpenedImage(wide).open());
}

TEST(PstOpenTest, WhatIsNotTestedAtOpen) {
  RawImage image = SmallStore(true);
  image.put(0, 0, 4).put(8, 0, 2).put(512, 0, 1).setFileEof(0);
  image.cryptMethod = 9;
  EXPECT_NO_THROW(OpenedImage(image).open());
}

TEST(PstOpenTest, FilesShorterThanTheirHeader) {
  RawImage narrow(false);
  narrow.file = narrow.bytes();
  narrow.sealed = false;
  narrow.file.resize(512);
  narrow.cryptMethod = 0;
  EXPECT_NO_THROW(OpenedImage(narrow).open());
  narrow.file.resize(511);
  ExpectOpenThrows<std::out_of_range>("fread failed", narrow);

  RawImage wide(true);
  wide.file = wide.bytes();
  wide.sealed = false;
  wide.file.resize(568);
  EXPECT_NO_THROW(OpenedImage(wide).open());
  wide.file.resize(567);
  ExpectOpenThrows<std::out_of_range>("fread failed", wide);
}

TEST_P(PstContextTest, FailuresOfTheHostAtOpen) {
  const OpenedImage file(SmallStore(unicode()));
  // How many calls of the group opening makes, each of which ends it with this exception.
  const auto calls = [&file](int32_t group, const std::exception& expected) {
    const auto round = [&](FaultedWork& faulted) {
      bool failed = false;
      try {
        faulted([&] { file.open(); });
      } catch (const std::exception& caught) {
        failed = true;
        EXPECT_STREQ(caught.what(), expected.what());
        EXPECT_EQ(typeid(caught), typeid(expected));
      }
      EXPECT_EQ(failed, faulted.isReached());
    };
    return SweepFaults(group, round, FaultKinds::OneAndFrom);
  };
  const uint64_t attempts = unicode() ? 2 : 1;
  EXPECT_EQ(attempts, calls(PlainKernelFaultOpen, std::runtime_error("fopen failed")));
  EXPECT_EQ(attempts, calls(PlainKernelFaultRead, std::out_of_range("fread failed")));
  EXPECT_LE(attempts, calls(PlainKernelFaultSeek, std::out_of_range("fseek failed")));
}

TEST_P(PstContextTest, TheFileIsOpenAsLongAsTheContextLives) {
  const OpenedImage file(SmallStore(unicode()));
  PlainKernelUsageRecord before = {};
  PlainKernelUsage(&before);
  auto context = file.open();
  PlainKernelUsageRecord open = {};
  PlainKernelUsage(&open);
  EXPECT_EQ(before.openHandles + 1, open.openHandles);
  const auto page = context->read_nbt_root();
  context.reset();
  PlainKernelUsage(&open);
  EXPECT_EQ(before.openHandles, open.openHandles);
}

// Pages ---------------------------------------------------------------------------------------

TEST_P(PstContextTest, PagePlaces) {
  RawImage image = SmallStore(unicode());
  const uint64_t eof = 0x4000;
  image.page({7, eof - 512}, RawImage::kNbtPage, 0, 0, "").setFileEof(eof);
  image.write(eof, std::string(0x1000, '\0'));
  const auto context = OpenedImage(image).open();
  const char* const past = "nonsensical page location; past eof";
  const char* const unaligned = "nonsensical page location; not sector aligned";
  EXPECT_EQ(eof - 512, context->read_nbt_page({7, eof - 512})->get_address());
  EXPECT_EQ(Thrown<unexpected_page>([&] { context->read_nbt_page({7, eof - 511}); }), past);
  EXPECT_EQ(Thrown<unexpected_page>([&] { context->read_nbt_page({7, eof}); }), past);
  EXPECT_EQ(Thrown<unexpected_page>([&] { context->read_nbt_page({7, eof - 513}); }), unaligned);
  EXPECT_EQ(Thrown<unexpected_page>([&] { context->read_nbt_page({7, 1}); }), unaligned);
  EXPECT_EQ(Thrown<unexpected_page>([&] { context->read_nbt_page({7, eof + 1}); }), past);
}

TEST(PstPagePlaceTest, ASumThatWrapsPassesAndTheSeekFails) {
  const auto context = OpenedImage(SmallStore(true)).open();
  EXPECT_EQ(Thrown<std::out_of_range>([&] {
              context->read_nbt_page({7, UINT64_MAX - 511});
            }),
            "fseek failed");
  EXPECT_EQ(Thrown<std::out_of_range>([&] {
              context->read_external_block(context, block_info{4, UINT64_MAX - 63, 4, 1});
            }),
            "fseek failed");
  // An address of all ones is also the answer of a failed seek.
  EXPECT_EQ(Thrown<std::out_of_range>([&] {
              context->read_external_block(context, block_info{4, UINT64_MAX, 4, 1});
            }),
            "fseek failed");
}

TEST_P(PstContextTest, APageAfterTheRealEnd) {
  RawImage image = SmallStore(unicode());
  image.setFileEof(0x100000);
  const auto context = OpenedImage(image).open();
  EXPECT_EQ(Thrown<std::out_of_range>([&] {
              context->read_nbt_page({7, 0x80000});
            }),
            "fread failed");
  EXPECT_EQ(Thrown<std::out_of_range>([&] {
              context->read_external_block(context, block_info{4, 0x80000, 4, 1});
            }),
            "fread failed");
}

TEST_P(PstContextTest, PageTrailerInOrder) {
  RawImage image = SmallStore(unicode());
  const uint64_t at = image.file.size() / 512 * 512 + 512;
  image.page({7, at}, RawImage::kNbtPage, 0, 0, "").setFileEof(at + 512);
  const uint64_t trailer = at + image.offsets().pageTrailer;
  const uint64_t bid = at + image.offsets().pageBid;

  // Everything is wrong at first; each step puts one more thing right.
  image.put(bid, 8, image.wide()).put(trailer + 1, 0x80, 1).put(trailer + 2, 0, 2);
  EXPECT_EQ(Thrown<unexpected_page>([&] {
              OpenedImage(image).open()->read_nbt_page({7, at});
            }),
            "wrong page id");
  image.put(bid, 7, image.wide());
  EXPECT_EQ(Thrown<database_corrupt>([&] {
              OpenedImage(image).open()->read_nbt_page({7, at});
            }),
            "ptype != ptype repeat?");
  image.put(trailer + 1, 0x81, 1);
  EXPECT_EQ(Thrown<sig_mismatch>([&] {
              OpenedImage(image).open()->read_nbt_page({7, at});
            }),
            "page sig mismatch");
  image.put(trailer + 2, PstSignature(7, at), 2);
  EXPECT_EQ(7u, OpenedImage(image).open()->read_nbt_page({7, at})->get_page_id());
}

TEST(PstPageIdTest, AllOfAWideIdCounts) {
  constexpr uint64_t kWide = 0x100000007;
  RawImage image = SmallStore(true);
  image.page({7, 0x4000}, RawImage::kNbtPage, 0, 0, "")
      .page({kWide, 0x4200}, RawImage::kNbtPage, 0, 0, "")
      .setFileEof(0x4400);
  const auto context = OpenedImage(image).open();
  EXPECT_EQ(kWide, context->read_nbt_page({kWide, 0x4200})->get_page_id());
  EXPECT_EQ(Thrown<unexpected_page>([&] {
              context->read_nbt_page({kWide, 0x4000});
            }),
            "wrong page id");
  EXPECT_EQ(Thrown<unexpected_page>([&] { context->read_nbt_page({7, 0x4200}); }), "wrong page id");
}

TEST_P(PstContextTest, WhatASignatureFailureCarries) {
  RawImage image = SmallStore(unicode());
  image.put(RawImage::kNbtAddress + image.offsets().pageSignature, 0xABCD, 2);
  const auto context = OpenedImage(image).open();
  try {
    context->read_nbt_root();
    ADD_FAILURE();
  } catch (const sig_mismatch& failure) {
    EXPECT_EQ(0x1000u, failure.address);
    EXPECT_EQ(0x31u, failure.id);
    EXPECT_EQ(0x1031u, failure.first);
    EXPECT_EQ(0xABCDu, failure.second);
  }
}

TEST_P(PstContextTest, NoChecksumInAPageOrABlock) {
  RawImage image = SmallStore(unicode());
  const PstOffsets& offsets = image.offsets();
  image.put(RawImage::kNbtAddress + offsets.pageCrc, 0x12345678, 4);
  image.put(RawImage::kFirstBlock + 64 - offsets.blockTrailer + offsets.blockCrc, 0x12345678, 4);
  const auto context = OpenedImage(image).open();
  EXPECT_EQ(4u, context->read_data_block(kData)->get_total_size());
}

TEST_P(PstContextTest, PageTypesAndLevels) {
  RawImage image = SmallStore(unicode());
  const uint64_t at = 0x4000;
  image.page({7, at}, RawImage::kNbtPage, 1, 0, "")
      .page({8, at + 512}, RawImage::kBbtPage, 1, 0, "");
  image.page({9, at + 1024}, 0x82, 0, 0, "").setFileEof(at + 1536);
  const auto context = OpenedImage(image).open();
  const page_info nbtLeaf = {RawImage::kNbtId, RawImage::kNbtAddress};
  const page_info bbtLeaf = {RawImage::kBbtId, RawImage::kBbtAddress};
  const page_info nbtNonleaf = {7, at};
  const page_info bbtNonleaf = {8, at + 512};
  const page_info other = {9, at + 1024};
  const char* const noNbt = "page_type != page_type_nbt";
  const char* const noBbt = "page_type != page_type_bbt";

  EXPECT_EQ(0, context->read_nbt_page(nbtLeaf)->get_level());
  EXPECT_EQ(1, context->read_nbt_page(nbtNonleaf)->get_level());
  EXPECT_EQ(Thrown<unexpected_page>([&] { context->read_nbt_page(bbtLeaf); }), noNbt);
  EXPECT_EQ(Thrown<unexpected_page>([&] { context->read_nbt_page(other); }), noNbt);
  EXPECT_EQ(0, context->read_bbt_page(bbtLeaf)->get_level());
  EXPECT_EQ(1, context->read_bbt_page(bbtNonleaf)->get_level());
  EXPECT_EQ(Thrown<unexpected_page>([&] { context->read_bbt_page(nbtLeaf); }), noBbt);
  EXPECT_EQ(Thrown<unexpected_page>([&] { context->read_bbt_page(other); }), noBbt);

  EXPECT_EQ(1u, context->read_nbt_leaf_page(nbtLeaf)->num_values());
  EXPECT_EQ(Thrown<unexpected_page>([&] { context->read_nbt_leaf_page(nbtNonleaf); }), noNbt);
  EXPECT_EQ(Thrown<unexpected_page>([&] { context->read_nbt_leaf_page(bbtLeaf); }), noNbt);
  EXPECT_EQ(1u, context->read_bbt_leaf_page(bbtLeaf)->num_values());
  EXPECT_EQ(Thrown<unexpected_page>([&] { context->read_bbt_leaf_page(bbtNonleaf); }), noBbt);
  EXPECT_EQ(Thrown<unexpected_page>([&] { context->read_bbt_leaf_page(nbtLeaf); }), noBbt);
  EXPECT_EQ(1, context->read_nbt_nonleaf_page(nbtNonleaf)->get_level());
  EXPECT_EQ(Thrown<unexpected_page>([&] { context->read_nbt_nonleaf_page(nbtLeaf); }), noNbt);
  EXPECT_EQ(Thrown<unexpected_page>([&] { context->read_nbt_nonleaf_page(bbtNonleaf); }), noNbt);
  EXPECT_EQ(1, context->read_bbt_nonleaf_page(bbtNonleaf)->get_level());
  EXPECT_EQ(Thrown<unexpected_page>([&] { context->read_bbt_nonleaf_page(bbtLeaf); }), noBbt);
  EXPECT_EQ(Thrown<unexpected_page>([&] { context->read_bbt_nonleaf_page(nbtNonleaf); }), noBbt);
}

TEST_P(PstContextTest, ARootIsReadOnceAndKept) {
  const OpenedImage file(SmallStore(unicode()));
  const auto context = file.open();
  EXPECT_EQ(1u, CallsOf(PlainKernelFaultRead, [&] { context->read_nbt_root(); }));
  const auto root = context->read_nbt_root();
  EXPECT_EQ(0u, CallsOf(PlainKernelFaultRead, [&] { EXPECT_EQ(root, context->read_nbt_root()); }));
  EXPECT_EQ(1u, CallsOf(PlainKernelFaultRead, [&] { context->read_bbt_root(); }));
  EXPECT_EQ(context->read_bbt_root(), context->read_bbt_root());
}

TEST_P(PstContextTest, AFailedRootIsReadAgain) {
  const auto context = OpenedImage(SmallStore(unicode())).open();
  PlainKernelFailAt(PlainKernelFaultSeek, 1);
  EXPECT_EQ(Thrown<std::out_of_range>([&] { context->read_nbt_root(); }), "fseek failed");
  EXPECT_EQ(1u, context->read_nbt_root()->num_values());
}

// Lookups -------------------------------------------------------------------------------------

TEST_P(PstContextTest, BlockLookups) {
  RawImage image(unicode());
  image.block(0x104, "data");
  const auto context = OpenedImage(image.trees()).open();
  const block_info none = context->lookup_block_info(0);
  EXPECT_EQ(0u, none.id);
  EXPECT_EQ(0u, none.address);
  EXPECT_EQ(0, none.size);
  EXPECT_EQ(0, none.ref_count);
  for (const uint64_t id : {0x104u, 0x105u}) {
    const block_info info = context->lookup_block_info(id);
    EXPECT_EQ(0x104u, info.id);
    EXPECT_EQ(RawImage::kFirstBlock, info.address);
    EXPECT_EQ(4, info.size);
    EXPECT_EQ(2, info.ref_count);
  }
  // Only 0 itself is the empty block: the bit is cleared after that test.
  EXPECT_EQ(0u, MissingKey<ulonglong>([&] { context->lookup_block_info(1); }));
  EXPECT_EQ(0x108u, MissingKey<ulonglong>([&] { context->lookup_block_info(0x109); }));
}

TEST_P(PstContextTest, BlockIdZeroReadsNothing) {
  const auto context = OpenedImage(SmallStore(unicode())).open();
  EXPECT_EQ(0u, CallsOf(PlainKernelFaultRead, [&] { context->lookup_block_info(0); }));
}

TEST_P(PstContextTest, NodeLookups) {
  RawImage image(unicode());
  image.node(0x21, 0x104, 0x10A, 0x122);
  const auto context = OpenedImage(image.trees()).open();
  const node_info info = context->lookup_node_info(0x21);
  EXPECT_EQ(0x21u, info.id);
  EXPECT_EQ(0x104u, info.data_bid);
  EXPECT_EQ(0x10Au, info.subnode_bid);
  EXPECT_EQ(0x122u, info.parent_id);
  EXPECT_EQ(0x21u, context->lookup_node(0x21).get_id());
  EXPECT_THROW(context->lookup_node_info(0x22), key_not_found<ulong>);
  EXPECT_THROW(context->lookup_node(0x20), key_not_found<ulong>);
}

TEST_P(PstContextTest, NewBlockIds) {
  RawImage image(unicode());
  image.setNextBid(0x1006);
  const auto context = OpenedImage(image).open();
  EXPECT_EQ(0x1006u, context->alloc_bid(false));
  EXPECT_EQ(2u, context->alloc_bid(true));  // 0x100A & 2
  EXPECT_EQ(0x100Eu, context->alloc_bid(false));
}

TEST_P(PstContextTest, NewInternalIdsLoseAllButOneBit) {
  RawImage image(unicode());
  image.setNextBid(0x1004);
  const auto context = OpenedImage(image).open();
  EXPECT_EQ(0u, context->alloc_bid(true));
  EXPECT_EQ(0x1008u, context->alloc_bid(false));
}

TEST_P(PstContextTest, NewBlockIdsWrapInTheWidthOfTheLayout) {
  RawImage image(unicode());
  image.setNextBid(UINT64_MAX - 1);
  const auto context = OpenedImage(image).open();
  EXPECT_EQ(unicode() ? UINT64_MAX - 1 : UINT32_MAX - 1, context->alloc_bid(false));
  EXPECT_EQ(2u, context->alloc_bid(false));
}

// Blocks --------------------------------------------------------------------------------------

TEST_P(PstContextTest, BlockSizes) {
  RawImage image(unicode());
  const std::string data(maxData(), 'x');
  const uint64_t at = image.block(kData, data);
  image.trees();
  const auto context = OpenedImage(image).open();
  EXPECT_EQ(maxData(), context->read_data_block(kData)->get_total_size());
  const block_info larger = {kData, at, static_cast<ushort>(maxData() + 1), 1};
  EXPECT_EQ(Thrown<unexpected_block>([&] { context->read_external_block(context, larger); }),
            "nonsensical block size");
}

TEST_P(PstContextTest, BlockPlaces) {
  RawImage image(unicode());
  const uint64_t at = image.block(kData, "data");
  image.trees();
  ASSERT_EQ(at + 64, image.file.size());
  image.write(at + 64, std::string(64, '\0'));
  const auto context = OpenedImage(image).open();
  EXPECT_EQ(4u, context->read_data_block(kData)->get_total_size());
  for (const uint64_t further : {1u, 64u, 1000u}) {
    const block_info info = {kData, at + further, 4, 1};
    EXPECT_EQ(Thrown<unexpected_block>([&] { context->read_external_block(context, info); }),
              "nonsensical block location; past eof");
  }
}

TEST_P(PstContextTest, BlockTrailerInOrder) {
  RawImage image(unicode());
  const uint64_t at = image.block(kData, "data");
  image.trees();
  const uint64_t end = at + 64;
  const uint64_t size = end - image.offsets().blockTrailer;
  image.put(end - 8, kData + 4, image.wide()).put(size, 5, 2).put(size + 2, 0, 2);
  const auto read = [&] { OpenedImage(image).open()->read_data_block(kData); };
  EXPECT_EQ(Thrown<unexpected_block>(read), "wrong block id");
  image.put(end - 8, kData, image.wide());
  EXPECT_EQ(Thrown<unexpected_block>(read), "wrong block size");
  image.put(size, 4, 2);
  EXPECT_EQ(Thrown<sig_mismatch>(read), "block sig mismatch");
  try {
    read();
  } catch (const sig_mismatch& failure) {
    EXPECT_EQ(0x2000u, failure.address);
    EXPECT_EQ(0x104u, failure.id);
    EXPECT_EQ(0x2104u, failure.first);
    EXPECT_EQ(0u, failure.second);
  }
  image.put(size + 2, 0x2104, 2);
  EXPECT_NO_THROW(read());
}

TEST_P(PstContextTest, AFailureLeavesTheStoreUsable) {
  const OpenedImage file(SmallStore(unicode()));
  const auto context = file.open();
  PlainKernelFailAt(PlainKernelFaultRead, 2);
  EXPECT_EQ(Thrown<std::out_of_range>([&] { context->read_data_block(kData); }), "fread failed");
  EXPECT_EQ(4u, context->read_data_block(kData)->get_total_size());
}

}  // namespace

}  // namespace tarn::test
