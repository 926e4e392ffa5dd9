#include "pststore/Disk.h"

#include <gtest/gtest.h>

#include <array>
#include <string_view>

#include "support/pst/PstBytes.h"

namespace {

using namespace pststore::disk;
using namespace std::literals;
using tarn::test::BytesOf;
using Ansi = uint32_t;
using Unicode = uint64_t;

TEST(PstDiskTest, ExtentOfAnEmptyBlockIs64Bytes) {
  EXPECT_EQ(64u, align_disk<Ansi>(0));
  EXPECT_EQ(64u, align_disk<Unicode>(0));
}

TEST(PstDiskTest, ExtentHoldsDataAndTrailerInSteps) {
  EXPECT_EQ(64u, align_disk<Ansi>(52));
  EXPECT_EQ(128u, align_disk<Ansi>(53));
  EXPECT_EQ(64u, align_disk<Unicode>(48));
  EXPECT_EQ(128u, align_disk<Unicode>(49));
}

TEST(PstDiskTest, LargestDataFillsTheLargestExtent) {
  EXPECT_EQ(8192u, align_disk<Ansi>(8180));
  EXPECT_EQ(8256u, align_disk<Ansi>(8181));
  EXPECT_EQ(8192u, align_disk<Unicode>(8176));
  EXPECT_EQ(8256u, align_disk<Unicode>(8177));
}

TEST(PstDiskTest, SignatureOfAShortMixIsTheMix) {
  EXPECT_EQ(0x1234, compute_signature(0x1234, 0));
  EXPECT_EQ(0x0F0F, compute_signature(0x123400FF, 0x12340FF0));
  EXPECT_EQ(0, compute_signature(0x4400, 0x4400));
}

TEST(PstDiskTest, SignatureFoldsTheUpperHalfOnce) {
  EXPECT_EQ(0x1234 ^ 0x5678, compute_signature(0x12345678, 0));
  EXPECT_EQ(0x1234 ^ 0x5678, compute_signature(0, 0x12345678));
  // What lies above 32 bits is shifted away or cut off.
  EXPECT_EQ(0x1234 ^ 0x5678, compute_signature(0xABCD000012345678, 0));
}

TEST(PstDiskTest, ChecksumStartsAt0AndIsNotComplemented) {
  EXPECT_EQ(0u, compute_crc({}));
  EXPECT_EQ(0u, compute_crc(BytesOf("\0\0\0\0\0\0\0\0\0"sv)));
  EXPECT_EQ(0x77073096u, compute_crc(BytesOf("\x01")));
  EXPECT_EQ(0x2DFD2D88u, compute_crc(BytesOf("123456789")));
}

TEST(PstDiskTest, NumbersAreLittleEndian) {
  const std::array<unsigned char, 10> bytes = {1, 2, 3, 4, 5, 6, 7, 0x88, 9, 10};
  EXPECT_EQ(0x02, load<uint8_t>(bytes, 1));
  EXPECT_EQ(0x0302, load<uint16_t>(bytes, 1));
  EXPECT_EQ(0x88070605u, load<uint32_t>(bytes, 4));
  EXPECT_EQ(0x0A09880706050403u, load<uint64_t>(bytes, 2));
}

TEST(PstDiskTest, NumbersOutsideOfTheBytesAreDamage) {
  const std::array<unsigned char, 8> bytes = {1, 2, 3, 4, 5, 6, 7, 8};
  EXPECT_EQ(8, load<uint8_t>(bytes, 7));
  EXPECT_THROW(load<uint8_t>(bytes, 8), pststore::database_corrupt);
  EXPECT_EQ(0x0807, load<uint16_t>(bytes, 6));
  EXPECT_THROW(load<uint16_t>(bytes, 7), pststore::database_corrupt);
  EXPECT_THROW(load<uint64_t>(bytes, 1), pststore::database_corrupt);
  EXPECT_THROW(load<uint32_t>(bytes, SIZE_MAX - 1), pststore::database_corrupt);
}

TEST(PstDiskTest, ReferencesHaveTheWidthOfTheLayout) {
  const std::array<unsigned char, 17> bytes = {0xFF, 1, 0, 0, 0x80, 2, 0, 0, 0x90,
                                               3,    0, 0, 0, 4,    0, 0, 0};
  const pststore::page_info narrow = load_reference<Ansi>(bytes, 1);
  EXPECT_EQ(0x80000001u, narrow.id);
  EXPECT_EQ(0x90000002u, narrow.address);
  const pststore::page_info wide = load_reference<Unicode>(bytes, 1);
  EXPECT_EQ(0x9000000280000001u, wide.id);
  EXPECT_EQ(0x0000000400000003u, wide.address);
  EXPECT_THROW(load_reference<Unicode>(bytes, 2), pststore::database_corrupt);
}

TEST(PstDiskTest, LimitsOfTheLayouts) {
  EXPECT_EQ(8180u, layout<Ansi>::max_block_data);
  EXPECT_EQ(1019u, layout<Ansi>::max_extended_children);
  EXPECT_EQ(8176u, layout<Unicode>::max_block_data);
  EXPECT_EQ(1021u, layout<Unicode>::max_extended_children);
  EXPECT_EQ(512u, layout<Ansi>::header_size);
  EXPECT_EQ(568u, layout<Unicode>::header_size);
}

}  // namespace
