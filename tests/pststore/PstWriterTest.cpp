// What the PST writer writes, byte by byte, and whole files judged by a reader of their own.
#include <gtest/gtest.h>

#include <set>
#include <stdexcept>

#include "NaivePst.h"
#include "support/TempDirectory.h"
#include "support/pst/CryptTables.h"
#include "support/pst/PstBytes.h"
#include "support/pst/PstCodec.h"
#include "support/pst/PstDamage.h"
#include "support/pst/PstFileBuilder.h"

namespace tarn::test {
namespace {

using namespace std::string_literals;

std::string Part(const std::string& image, uint64_t offset, size_t size) {
  return image.substr(static_cast<size_t>(offset), size);
}

PstFileOptions Trimmed(PstLayout layout, PstEncoding encoding = PstEncoding::None) {
  return {.layout = layout, .encoding = encoding, .isTrimmed = true};
}

TEST(PstWriterCodec, TablesArePermutationsThatFitEachOther) {
  EXPECT_EQ(std::set<uint8_t>(kMpbbR.begin(), kMpbbR.end()).size(), 256U);
  for (size_t i = 0; i < 256; ++i) {
    EXPECT_EQ(kMpbbI[kMpbbR[i]], i);
    EXPECT_EQ(kMpbbS[kMpbbS[i]], i);
  }
  EXPECT_EQ(kMpbbR[3], 0x62);
  EXPECT_EQ(kMpbbS[3], 0x56);
  EXPECT_EQ(kMpbbI[3], 0xE6);
}

TEST(PstWriterCodec, EncodesBytesWorkedOutByHand) {
  EXPECT_EQ(PstEncode(PstEncoding::None, 4, "ab"), "ab");
  EXPECT_EQ(PstEncode(PstEncoding::Permute, 4, "\x00\x01\x02"s), "\x41\x36\x13");
  EXPECT_EQ(PstEncode(PstEncoding::Cyclic, 4, "\x00\x00"s), "\xB6\xA8");
  EXPECT_EQ(PstEncode(PstEncoding::Cyclic, 0x00050001, "\x00\x00"s), "\xB6\xA8");
  const std::string text = Pattern(70000);
  for (PstEncoding encoding : {PstEncoding::Permute, PstEncoding::Cyclic}) {
    EXPECT_EQ(PstDecode(encoding, 0x1234, PstEncode(encoding, 0x1234, text)), text);
  }
}

TEST(PstWriterCodec, CrcStartsAtZeroAndIsNotInverted) {
  EXPECT_EQ(PstCrc(""), 0U);
  EXPECT_EQ(PstCrc("\x01"), 0x77073096U);
  EXPECT_EQ(PstCrc("\x00\x01"s), 0x77073096U);
  EXPECT_EQ(PstCrc("123456789"), 0x2DFD2D88U);
}

TEST(PstWriterCodec, SignatureFoldsIdAndAddress) {
  EXPECT_EQ(PstSignature(4, 0x4600), 0x4604);
  EXPECT_EQ(PstSignature(4, 0x12345600), 0x4430);
}

TEST(PstWriter, UnicodeHeaderIsWhereItIsPublished) {
  PstFileBuilder file({.encoding = PstEncoding::Cyclic});
  const uint64_t bid = file.block("abc");
  file.node(0x122, bid, 0);
  const std::string& image = file.bytes();
  ASSERT_EQ(image.size(), 0x4400U + 253952);
  EXPECT_EQ(Part(image, 0, 4), "\x21\x42\x44\x4E");
  EXPECT_EQ(GetLe(image, 4, 4), PstCrc(Part(image, 8, 471)));
  EXPECT_EQ(Part(image, 8, 8), "\x53\x4D\x17\x00\x13\x00\x01\x01"s);
  EXPECT_EQ(GetLe(image, 32, 8), 4U);        // bidNextP: two trees and the density list
  EXPECT_EQ(GetLe(image, 44, 4), 0x400U);    // rgnid[0]
  EXPECT_EQ(GetLe(image, 60, 4), 0x10000U);  // rgnid[4]: messages
  EXPECT_EQ(GetLe(image, 184, 8), 0x4400U + 253952);
  EXPECT_EQ(GetLe(image, 192, 8), 0x4400U);
  // In use: map and page map, the block of 64 bytes, and on the next 512 two tree pages.
  EXPECT_EQ(GetLe(image, 200, 8), 253952U - 1024 - 64 - 1024);
  EXPECT_EQ(Part(image, 216, 16), "\x01\0\0\0\0\0\0\0\x00\x4A\0\0\0\0\0\0"s);
  EXPECT_EQ(Part(image, 232, 16), "\x02\0\0\0\0\0\0\0\x00\x4C\0\0\0\0\0\0"s);
  EXPECT_EQ(GetLe(image, 248, 1), 2U);
  EXPECT_EQ(Part(image, 256, 256), std::string(256, '\xFF'));
  EXPECT_EQ(Part(image, 512, 2), "\x80\x02");
  EXPECT_EQ(GetLe(image, 516, 8), 8U);
  EXPECT_EQ(GetLe(image, 524, 4), PstCrc(Part(image, 8, 516)));
}

TEST(PstWriter, AnsiHeaderIsWhereItIsPublished) {
  PstFileBuilder file({.layout = PstLayout::Ansi, .encoding = PstEncoding::Permute});
  const uint64_t bid = file.block("abc");
  file.node(0x200024, bid, 0);
  const std::string& image = file.bytes();
  EXPECT_EQ(Part(image, 8, 8), "\x53\x4D\x0F\x00\x13\x00\x01\x01"s);
  EXPECT_EQ(GetLe(image, 4, 4), PstCrc(Part(image, 8, 471)));
  EXPECT_EQ(GetLe(image, 24, 4), 8U);
  EXPECT_EQ(GetLe(image, 28, 4), 4U);
  EXPECT_EQ(GetLe(image, 36 + 16, 4), 0x10001U);
  EXPECT_EQ(GetLe(image, 168, 4), 0x4400U + 253952);
  EXPECT_EQ(GetLe(image, 172, 4), 0x4400U);
  EXPECT_EQ(Part(image, 184, 16), "\x01\0\0\0\x00\x4A\0\0\x02\0\0\0\x00\x4C\0\0"s);
  EXPECT_EQ(GetLe(image, 200, 1), 2U);
  EXPECT_EQ(Part(image, 204, 256), std::string(256, '\xFF'));
  EXPECT_EQ(Part(image, 460, 2), "\x80\x01");
}

TEST(PstWriter, BlockHasItsTrailerAtTheEndOfTheExtent) {
  PstFileBuilder unicode;
  unicode.block("\x01");
  // cb, signature of 4 and 0x4800, CRC, id.
  EXPECT_EQ(
      Part(unicode.bytes(), 0x4800, 64),
      "\x01"s + std::string(47, '\0') + "\x01\x00\x04\x48\x96\x30\x07\x77\x04\0\0\0\0\0\0\0"s);
  PstFileBuilder ansi({.layout = PstLayout::Ansi});
  ansi.block("\x01");
  EXPECT_EQ(Part(ansi.bytes(), 0x4800, 64),
            "\x01"s + std::string(51, '\0') + "\x01\x00\x04\x48\x04\0\0\0\x96\x30\x07\x77"s);
}

TEST(PstWriter, BlockChecksumCoversTheEncodedBytes) {
  PstFileBuilder file(Trimmed(PstLayout::Ansi, PstEncoding::Permute));
  file.block("\x00\x01"s);
  EXPECT_EQ(Part(file.bytes(), 0x4800, 2), "\x41\x36");
  EXPECT_EQ(GetLe(file.bytes(), 0x4800 + 60, 4), PstCrc("\x41\x36"));
}

TEST(PstWriter, LeafPagesHaveEntriesCountersAndTrailer) {
  PstFileBuilder file(Trimmed(PstLayout::Unicode));
  const uint64_t bid = file.block("abc");
  file.node(0x8022, bid, 0, 0x122);
  const std::string& image = file.bytes();
  EXPECT_EQ(Part(image, 0x4A00, 32),
            "\x22\x80\0\0\0\0\0\0\x04\0\0\0\0\0\0\0"
            "\0\0\0\0\0\0\0\0\x22\x01\0\0\0\0\0\0"s);
  EXPECT_EQ(Part(image, 0x4A00 + 488, 12), "\x01\x0F\x20\x00\0\0\0\0\x81\x81\x01\x4A"s);
  EXPECT_EQ(GetLe(image, 0x4A00 + 500, 4), PstCrc(Part(image, 0x4A00, 496)));
  EXPECT_EQ(GetLe(image, 0x4A00 + 504, 8), 1U);
  EXPECT_EQ(Part(image, 0x4C00, 24), "\x04\0\0\0\0\0\0\0\x00\x48\0\0\0\0\0\0\x03\0\x02\0\0\0\0\0"s);
  EXPECT_EQ(Part(image, 0x4C00 + 488, 12), "\x01\x14\x18\x00\0\0\0\0\x80\x80\x02\x4C"s);
}

TEST(PstWriter, AnsiLeafPagesHaveNarrowEntries) {
  PstFileBuilder file(Trimmed(PstLayout::Ansi));
  file.node(0x8022, file.block("abc"), 0, 0x122);
  const std::string& image = file.bytes();
  EXPECT_EQ(Part(image, 0x4A00, 16), "\x22\x80\0\0\x04\0\0\0\0\0\0\0\x22\x01\0\0"s);
  EXPECT_EQ(Part(image, 0x4A00 + 496, 12), "\x01\x1F\x10\x00\x81\x81\x01\x4A\x01\0\0\0"s);
  EXPECT_EQ(GetLe(image, 0x4A00 + 508, 4), PstCrc(Part(image, 0x4A00, 500)));
  EXPECT_EQ(Part(image, 0x4C00, 12), "\x04\0\0\0\x00\x48\0\0\x03\0\x02\0"s);
  EXPECT_EQ(Part(image, 0x4C00 + 496, 4), "\x01\x29\x0C\x00"s);
}

TEST(PstWriter, MapsMarkWhatIsInUse) {
  PstFileBuilder file({.layout = PstLayout::Ansi});
  file.block("abc");
  const std::string& image = file.bytes();
  // After 4 bytes of padding: two maps, one block, a gap up to the pages, two pages.
  EXPECT_EQ(Part(image, 0x4400, 10), "\0\0\0\0\xFF\xFF\x80\xFF\xFF\x00"s);
  EXPECT_EQ(Part(image, 0x4400 + 500, 8), "\x84\x84\0\0\0\x44\0\0"s);
  EXPECT_EQ(Part(image, 0x4600, 5), "\0\0\0\0\xFF"s);
  EXPECT_EQ(Part(image, 0x4600 + 500, 8), "\x83\x83\0\0\0\x46\0\0"s);
  // One entry: interval 0 with 3968 - 33 free slots.
  EXPECT_EQ(Part(image, 0x4200, 12), "\x01\x01\0\0\0\0\0\0\0\0\xF0\xF5"s);
  EXPECT_EQ(Part(image, 0x4200 + 500, 2), "\x86\x86");
}

TEST(PstWriter, DensityListNamesTheEmptiestIntervalFirst) {
  PstFileBuilder file;
  for (int i = 0; i < 31; ++i) file.block(std::string(8176, 'a'));
  // The 31st block opens interval 1, which has 3968 - 8 - 128 - 4 * 8 free slots (four pages of the
  // trees); 112 are left before.
  EXPECT_EQ(Part(file.bytes(), 0x4200, 20),
            "\x01\x02\0\0\x01\0\0\0\x01\x00\x80\xED\x00\x00\x00\x07\0\0\0\0"s);
}

class PstWriterFile : public ::testing::TestWithParam<std::tuple<PstLayout, PstEncoding>> {
 protected:
  PstLayout layout() const { return std::get<0>(GetParam()); }
  PstFileOptions options() const {
    return {.layout = layout(), .encoding = std::get<1>(GetParam())};
  }
  size_t pageSize() const { return layout() == PstLayout::Ansi ? 8180 : 8176; }
};

INSTANTIATE_TEST_SUITE_P(Layouts, PstWriterFile,
                         ::testing::Combine(::testing::Values(PstLayout::Ansi, PstLayout::Unicode),
                                            ::testing::Values(PstEncoding::None,
                                                              PstEncoding::Permute,
                                                              PstEncoding::Cyclic)));

TEST_P(PstWriterFile, WithoutAnythingIsAsPublished) {
  PstFileBuilder file(options());
  const NaivePst read(file.bytes());
  EXPECT_EQ(read.problems(), "");
  EXPECT_TRUE(read.nodes().empty());
  EXPECT_TRUE(read.blocks().empty());
}

TEST_P(PstWriterFile, KeepsStreamsOfAnySize) {
  for (size_t size : {size_t{0}, size_t{1}, pageSize(), pageSize() + 1, 3 * pageSize() + 5}) {
    PstFileBuilder file(options());
    const std::string bytes = Pattern(size);
    file.node(0x122, file.data(bytes), 0);
    const NaivePst read(file.bytes());
    EXPECT_EQ(read.problems(), "");
    EXPECT_EQ(read.data(read.nodes().at(0x122).dataBid), bytes);
    const size_t blocks = (size + pageSize() - 1) / pageSize();
    EXPECT_EQ(read.blocks().size(), blocks + (blocks > 1 ? 1 : 0));
  }
}

TEST_P(PstWriterFile, KeepsStreamsOfTwoLevels) {
  PstFileBuilder file(options());
  const std::string bytes = Pattern(5 * pageSize() + 1);
  file.node(0x122, file.data(bytes, {.fanOut = 3}), 0);
  file.node(0x142, file.data("a", {.minLevels = 2}), 0);
  const NaivePst read(file.bytes());
  EXPECT_EQ(read.problems(), "");
  EXPECT_EQ(read.data(read.nodes().at(0x122).dataBid), bytes);
  EXPECT_EQ(read.data(read.nodes().at(0x142).dataBid), "a");
  EXPECT_EQ(read.blocks().size(), 6U + 3 + 3);
  EXPECT_THROW(file.data(Pattern(5 * pageSize()), {.fanOut = 2}), std::length_error);
}

TEST_P(PstWriterFile, KeepsSubnodesOfOneAndTwoLevels) {
  PstFileBuilder file(options());
  PstNodeParts inner;
  inner.pages = {"inner"};
  PstNodeParts few;
  few.subnode(0x692, inner).subnode(0x671, inner);
  PstNodeParts many;
  many.subnodeShape = {.leafFanOut = 2};
  for (uint32_t i = 0; i < 7; ++i) many.subnode(0x8025 + 32 * i, i == 3 ? few : inner);
  PstNodeParts lone = few;
  lone.subnodeShape = {.minLevels = 2};
  file.node(0x24, few);
  file.node(0x44, many);
  file.node(0x64, lone);
  const NaivePst read(file.bytes());
  EXPECT_EQ(read.problems(), "");
  EXPECT_EQ(read.subnodes(read.nodes().at(0x24).subnodeBid).size(), 2U);
  EXPECT_EQ(read.subnodes(read.nodes().at(0x64).subnodeBid).size(), 2U);
  const auto subnodes = read.subnodes(read.nodes().at(0x44).subnodeBid);
  EXPECT_EQ(subnodes.size(), 7U);
  EXPECT_EQ(read.data(subnodes.at(0x8025).dataBid), "inner");
  const auto below = read.subnodes(subnodes.at(0x8085).subnodeBid);
  EXPECT_EQ(read.data(below.at(0x671).dataBid), "inner");
}

TEST_P(PstWriterFile, TreesAreAsHighAsAsked) {
  for (unsigned levels = 1; levels <= 4; ++levels) {
    PstFileOptions shaped = options();
    shaped.nbt = {.leafFanOut = 2, .innerFanOut = 2};
    shaped.bbt = {.leafFanOut = 1, .innerFanOut = 3, .minLevels = levels};
    PstFileBuilder file(shaped);
    const uint64_t bid = file.block("shared");
    for (uint32_t i = 1U << levels; i > 0; --i) file.node(i << 5 | 2, bid, 0);
    const NaivePst read(file.bytes());
    EXPECT_EQ(read.problems(), "");
    EXPECT_EQ(read.nbtLevels(), levels);
    EXPECT_EQ(read.bbtLevels(), levels);
    EXPECT_EQ(read.nodes().size(), 1U << levels);
    EXPECT_EQ(read.blocks().at(bid).cRef, 1 + (1U << levels));
  }
}

TEST_P(PstWriterFile, FullPagesOpenTheNextLevel) {
  const size_t room = layout() == PstLayout::Ansi ? 31 : 15;
  for (size_t count : {room, room + 1}) {
    PstFileBuilder file(options());
    for (uint32_t i = 1; i <= count; ++i) file.node(i << 5 | 4, 0, 0);
    const NaivePst read(file.bytes());
    EXPECT_EQ(read.problems(), "");
    EXPECT_EQ(read.nbtLevels(), count == room ? 1U : 2U);
  }
}

TEST_P(PstWriterFile, TrimmedAndLeadingPagesAreStillConsistent) {
  PstFileOptions trimmed = options();
  trimmed.isTrimmed = true;
  trimmed.leadingPages = 2;
  PstFileBuilder file(trimmed);
  file.node(0x122, file.data("abc"), 0);
  const std::string& image = file.bytes();
  EXPECT_EQ(image.size(), 0x4800U + 1024 + 64);
  EXPECT_EQ(NaivePst(image).problems(), "");

  trimmed.leadingPages = 0;
  PstFileBuilder usual(trimmed);
  usual.node(0x122, usual.data("abc"), 0);
  EXPECT_EQ(usual.bytes().size(), 0x4800U + 512 + 1024);
  EXPECT_EQ(NaivePst(usual.bytes()).problems(), "");
}

TEST_P(PstWriterFile, StreamsLongFilesWithAllTheirMaps) {
  TempDirectory directory;
  const auto path = directory.path() / "long.pst";
  PstFileBuilder file(options(), path);
  // 31 blocks fill an interval: 130 of them pass the first free map, in the 128th.
  const std::string page = Pattern(pageSize());
  for (uint32_t i = 1; i <= 130 * 30; ++i) file.node(i << 5 | 4, file.block(page), 0);
  file.finish();
  EXPECT_EQ(file.bytes(), "");
  const std::string image = ReadWholeFile(path);
  const NaivePst read(image);
  EXPECT_EQ(read.problems(), "");
  EXPECT_EQ(read.nodes().size(), 3900U);
  EXPECT_EQ(GetLe(image, 0x1F04800 + (layout() == PstLayout::Ansi ? 500 : 496), 2), 0x8282U);
  EXPECT_EQ(read.data(read.nodes().at(3900U << 5 | 4).dataBid), page);
}

TEST(PstWriter, ExtendedBlocksMayHaveHoles) {
  PstFileBuilder file;
  const std::vector<std::string> pages = {std::string(8176, 'a'), std::string(8176, 'b'), "c"};
  const uint64_t bid = file.dataOfPages(pages, {.pageHoles = {1}});
  EXPECT_EQ(bid, 8U | 4 | 2);  // the third block, an internal one
  file.finish();
  const uint64_t offset = file.extents().at(4).offset;
  EXPECT_EQ(Part(file.bytes(), offset, 32), "\x01\x01\x03\x00\xE1\x3F\0\0"s +
                                                "\x04\0\0\0\0\0\0\0"s + std::string(8, '\0') +
                                                "\x08\0\0\0\0\0\0\0"s);
}

TEST(PstWriter, ExtendedBlocksMayHaveHolesForWholeChildren) {
  PstFileBuilder file;
  const std::vector<std::string> pages(4, std::string(8176, 'a'));
  file.dataOfPages(pages, {.fanOut = 2, .childHoles = {0}, .totalSize = 7});
  file.finish();
  PstDamage damage(file);
  const PstExtent& top = damage.at(PstExtentKind::ExtendedBlock, 1);
  EXPECT_EQ(damage.data(top),
            "\x01\x02\x02\x00\x07\0\0\0"s + std::string(8, '\0') + "\x0E\0\0\0\0\0\0\0"s);
}

TEST(PstWriter, AnsiExtendedBlocksTakeTwoThousandIdsUnlessAskedForLess) {
  const std::vector<std::string> pages(1020, "a");
  PstFileBuilder usual({.layout = PstLayout::Ansi});
  usual.dataOfPages(pages);
  EXPECT_EQ(PstDamage(usual).data(PstDamage(usual).at(PstExtentKind::ExtendedBlock)).substr(0, 4),
            "\x01\x01\xFC\x03"s);
  PstFileBuilder less({.layout = PstLayout::Ansi});
  less.dataOfPages(pages, {.fanOut = 1019});
  PstDamage damage(less);
  EXPECT_EQ(damage.data(damage.at(PstExtentKind::ExtendedBlock, 0)).substr(0, 4),
            "\x01\x01\xFB\x03"s);
  EXPECT_EQ(damage.data(damage.at(PstExtentKind::ExtendedBlock, 2)).substr(0, 4),
            "\x01\x02\x02\x00"s);
}

TEST(PstWriter, SubnodeBlocksHaveTheirEntriesAfterTheHeader) {
  const std::vector<SubnodeEntry> entries = {{0x671, 8, 0x12}, {0x692, 0, 0}};
  PstFileBuilder unicode;
  unicode.subnodes(entries, {.minLevels = 2});
  PstDamage read(unicode);
  EXPECT_EQ(read.data(read.at(PstExtentKind::SubnodeBlock, 0)),
            "\x02\x00\x02\x00\0\0\0\0"
            "\x71\x06\0\0\0\0\0\0\x08\0\0\0\0\0\0\0\x12\0\0\0\0\0\0\0"
            "\x92\x06\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"s);
  EXPECT_EQ(read.data(read.at(PstExtentKind::SubnodeBlock, 1)),
            "\x02\x01\x01\x00\0\0\0\0\x71\x06\0\0\0\0\0\0\x06\0\0\0\0\0\0\0"s);
  PstFileBuilder ansi({.layout = PstLayout::Ansi});
  ansi.subnodes(entries, {.minLevels = 2});
  PstDamage narrow(ansi);
  EXPECT_EQ(narrow.data(narrow.at(PstExtentKind::SubnodeBlock, 0)),
            "\x02\x00\x02\x00\x71\x06\0\0\x08\0\0\0\x12\0\0\0\x92\x06\0\0\0\0\0\0\0\0\0\0"s);
  EXPECT_EQ(narrow.data(narrow.at(PstExtentKind::SubnodeBlock, 1)),
            "\x02\x01\x01\x00\x71\x06\0\0\x06\0\0\0"s);
}

TEST(PstWriter, CompactFilesHaveNoMaps) {
  PstFileOptions options = {.isTrimmed = true, .isCompact = true};
  PstFileBuilder file(options);
  file.node(0x122, file.data("abc"), 0);
  EXPECT_EQ(file.bytes().size(), 1024U + 512 + 1024);
  EXPECT_EQ(file.extents().size(), 3U);
  EXPECT_EQ(GetLe(file.bytes(), 248, 1), 0U);
}

TEST(PstWriter, TakesPagesAndEntriesByHand) {
  PstFileBuilder file(Trimmed(PstLayout::Ansi));
  const PstPageRef page = file.reservePage();
  file.writePage(page, PstExtentKind::NbtPage, "by hand");
  file.setNbtRoot(page);
  file.blockEntry({0x44, 0x4400, 5, 9});
  const std::string& image = file.bytes();
  EXPECT_EQ(Part(image, page.ib, 8), "by hand\0"s);
  EXPECT_EQ(Part(image, 184, 8), "\x01\0\0\0\x00\x48\0\0"s);
  EXPECT_EQ(Part(image, GetLe(image, 196, 4), 12), "\x44\0\0\0\x00\x44\0\0\x05\0\x09\0"s);
}

}  // namespace
}  // namespace tarn::test
