#include <gtest/gtest.h>

#include "CompoundFiles.h"
#include "support/compound/CompoundBuilder.h"

namespace tarn::test {
namespace {

constexpr size_t kBigShift = 30;
constexpr size_t kSmallShift = 32;
constexpr size_t kTableBlockCount = 44;
constexpr size_t kThreshold = 56;
constexpr size_t kMetaBlockCount = 72;
constexpr size_t kTableBlocks = 76;

// A usual file with one number of its header changed.
uint64_t ResultWith(size_t offset, uint64_t value, size_t width = 4) {
  CompoundImage image = CompoundBuilder().stream("a", "text").image();
  image.put(offset, value, width);
  LoadedFile loaded(image.bytes);
  EXPECT_EQ(loaded.file().isOpened(), loaded.file().result() == CompoundOk);
  return loaded.file().result();
}

TEST(Header, NewOneIsAsWritten) {
  CompoundHeader header;
  EXPECT_EQ(header.bigShift, 9u);
  EXPECT_EQ(header.smallShift, 6u);
  EXPECT_EQ(header.threshold, 4096u);
  EXPECT_EQ(header.metaStart, 0xFFFFFFFEu);
  for (const uint64_t block : header.tableBlocks) EXPECT_EQ(block, 0xFFFFFFFFu);
  EXPECT_TRUE(DirtyMarks().header);
  EXPECT_EQ(header.tableBlockCount + header.directoryStart + header.smallTableStart +
                header.smallTableBlockCount + header.metaBlockCount,
            0u);

  std::string expected("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8);
  expected += std::string(16, '\0');
  expected += std::string("\x3E\0\x03\0\xFE\xFF\x09\0\x06\0", 10);
  expected += std::string(22, '\0');               // to offset 56
  expected += std::string("\0\x10\0\0", 4);        // threshold
  expected += std::string(8, '\0');                // small table
  expected += std::string("\xFE\xFF\xFF\xFF", 4);  // meta start
  expected += std::string(4, '\0') + std::string(436, '\xFF');
  HeaderBytes bytes;
  bytes.fill(0xAA);
  SaveHeader(header, bytes);
  EXPECT_EQ(std::string(bytes.begin(), bytes.end()), expected);
}

TEST(Header, NumbersAreAtTheirOffsets) {
  HeaderBytes bytes;
  for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<unsigned char>(i * 3 + 1);
  CompoundHeader header;
  LoadHeader(header, bytes);
  EXPECT_EQ(header.magic[0], 0x01);
  EXPECT_EQ(header.magic[7], 0x16);
  EXPECT_EQ(header.bigShift, 0x5E5Bu);
  EXPECT_EQ(header.smallShift, 0x6461u);
  EXPECT_EQ(header.tableBlockCount, 0x8E8B8885u);
  EXPECT_EQ(header.directoryStart, 0x9A979491u);
  EXPECT_EQ(header.threshold, 0xB2AFACA9u);
  EXPECT_EQ(header.smallTableStart, 0xBEBBB8B5u);
  EXPECT_EQ(header.smallTableBlockCount, 0xCAC7C4C1u);
  EXPECT_EQ(header.metaStart, 0xD6D3D0CDu);
  EXPECT_EQ(header.metaBlockCount, 0xE2DFDCD9u);
  EXPECT_EQ(header.tableBlocks[0], 0xEEEBE8E5u);
  EXPECT_EQ(header.tableBlocks[108], 0xFEFBF8F5u);

  HeaderBytes saved;
  SaveHeader(header, saved);
  for (size_t i = 0; i < bytes.size(); ++i) {
    const bool kept = (i >= 30 && i < 34) || (i >= 44 && i < 52) || i >= 56;
    if (kept) {
      EXPECT_EQ(saved[i], bytes[i]) << i;
    }
  }
  EXPECT_EQ(saved[8], 0);
  EXPECT_EQ(saved[52], 0);
}

TEST(Header, AMagicOfOtherBytesIsNoCompoundFile) {
  for (size_t i = 0; i < 8; ++i) EXPECT_EQ(ResultWith(i, 0x20, 1), CompoundNotCompound) << i;
  LoadedFile empty("");
  EXPECT_EQ(empty.file().result(), CompoundNotCompound);
  EXPECT_FALSE(empty.file().isOpened());
  LoadedFile cut(CompoundBuilder().write().substr(0, 7));
  EXPECT_EQ(cut.file().result(), CompoundNotCompound);
}

TEST(Header, AHandleThatCannotSeekIsNotOpened) {
  CompoundFile file(KERNEL_BAD_HANDLE);
  EXPECT_EQ(file.result(), CompoundOk);
  LoadCompoundFile(file);
  EXPECT_EQ(file.result(), CompoundOpenFailed);
  EXPECT_FALSE(file.isOpened());
}

TEST(Header, TheLimitBetweenSmallAndBigIsFixed) {
  EXPECT_EQ(ResultWith(kThreshold, 4095), CompoundDamaged);
  EXPECT_EQ(ResultWith(kThreshold, 4097), CompoundDamaged);
  EXPECT_EQ(ResultWith(kThreshold, 4096), CompoundOk);
}

TEST(Header, ATableHasBlocks) {
  EXPECT_EQ(ResultWith(kTableBlockCount, 0), CompoundDamaged);
  EXPECT_EQ(ResultWith(kTableBlockCount, 2), CompoundDamaged);  // the second is free
  EXPECT_EQ(ResultWith(kTableBlocks, 0xFFFFFFFF), CompoundDamaged);
  EXPECT_EQ(ResultWith(kTableBlocks + 4, 0xFFFFFFFF), CompoundOk);  // beyond the count
}

TEST(Header, MetaBlocksNeedAFullHeader) {
  EXPECT_EQ(ResultWith(kMetaBlockCount, 1), CompoundDamaged);
  CompoundImage image = CompoundBuilder().stream("a", "text").image();
  for (size_t i = 0; i < 109; ++i) image.put(kTableBlocks + 4 * i, image.tableBlocks[0]);
  image.put(kMetaBlockCount, 1);
  image.put(kTableBlockCount, 108);
  EXPECT_EQ(LoadedFile(image.bytes).file().result(), CompoundDamaged);
  image.put(kTableBlockCount, 109);
  LoadedFile full(image.bytes);
  EXPECT_EQ(full.file().result(), CompoundOk);
  EXPECT_TRUE(full.parts().metaBlocks.empty());  // what they would hold is not asked for
  image.put(kMetaBlockCount, 0xFFFFFFFF);
  LoadedFile most(image.bytes);
  EXPECT_EQ(most.file().result(), CompoundOk);
  EXPECT_EQ(most.stream("a"), "text");
  image.put(kTableBlocks + 4 * 108, 0xFFFFFFFF);
  EXPECT_EQ(LoadedFile(image.bytes).file().result(), CompoundDamaged);
}

TEST(Header, BlockSizesLieInTheirBounds) {
  EXPECT_EQ(ResultWith(kBigShift, 6, 2), CompoundDamaged);
  EXPECT_EQ(ResultWith(kBigShift, 31, 2), CompoundDamaged);
  EXPECT_EQ(ResultWith(kBigShift, 0xFFFF, 2), CompoundDamaged);
  EXPECT_EQ(ResultWith(kBigShift, 7, 2), CompoundOk);
  EXPECT_EQ(ResultWith(kBigShift, 25, 2), CompoundOk);
  EXPECT_EQ(ResultWith(kBigShift, 27, 2), CompoundDamaged);  // a table of 128 MiB
  EXPECT_EQ(ResultWith(kBigShift, 30, 2), CompoundDamaged);
  EXPECT_EQ(ResultWith(kSmallShift, 10, 2), CompoundDamaged);
  EXPECT_EQ(ResultWith(kSmallShift, 9, 2), CompoundOk);
  EXPECT_EQ(ResultWith(kSmallShift, 0, 2), CompoundOk);
  EXPECT_EQ(ResultWith(kSmallShift, 0xFFFF, 2), CompoundDamaged);
}

TEST(Header, ShiftsInBoundsGiveTheSizes) {
  CompoundHeader header;
  header.tableBlockCount = 1;
  header.tableBlocks[0] = 0;
  for (const uint64_t shift : {7u, 30u}) {
    header.bigShift = shift;
    EXPECT_TRUE(header.isReadable()) << shift;
  }
  LoadedFile loaded(CompoundBuilder(CompoundVersion::V4).write());
  EXPECT_EQ(loaded.parts().bigTable.blockSize, 4096u);
  EXPECT_EQ(loaded.parts().smallTable.blockSize, 64u);
}

TEST(Header, VersionByteOrderAndClassIdAreNotLookedAt) {
  CompoundImage image = CompoundBuilder().stream("a", "text").image();
  for (size_t i = 8; i < 30; ++i) image.put(i, 0xEE, 1);
  for (size_t i = 34; i < 44; ++i) image.put(i, 0xEE, 1);
  image.put(52, 0xEEEEEEEE);
  image.put(64, 0xEEEEEEEE);  // how many blocks the small table has is told by its chain
  EXPECT_EQ(LoadedFile(image.bytes).stream("a"), "text");
}

TEST(Header, TablesBeyond64MebibytesAreRefused) {
  CompoundImage image = CompoundBuilder().stream("a", "text").image();
  for (size_t i = 0; i < 109; ++i) image.put(kTableBlocks + 4 * i, 5000);  // after the end
  image.put(kTableBlockCount, (64u << 20) / 512);
  EXPECT_EQ(LoadedFile(image.bytes).file().result(), CompoundOk);
  image.put(kTableBlockCount, (64u << 20) / 512 + 1);
  EXPECT_EQ(LoadedFile(image.bytes).file().result(), CompoundDamaged);
  image.put(kTableBlockCount, 110);
  image.put(kMetaBlockCount, (64u << 20) / 512);
  EXPECT_EQ(LoadedFile(image.bytes).file().result(), CompoundOk);
  image.put(kMetaBlockCount, (64u << 20) / 512 + 1);
  EXPECT_EQ(LoadedFile(image.bytes).file().result(), CompoundDamaged);
  image.put(kTableBlockCount, 0xFFFFFFFF);
  EXPECT_EQ(LoadedFile(image.bytes).file().result(), CompoundDamaged);
}

}  // namespace
}  // namespace tarn::test
