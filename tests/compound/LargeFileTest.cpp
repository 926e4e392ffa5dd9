// Tables that need meta blocks, and positions beyond 2 GiB.

#include <gtest/gtest.h>

#include <fstream>

#include "CompoundFiles.h"
#include "support/TempDirectory.h"
#include "support/compound/CompoundBuilder.h"

namespace tarn::test {
namespace {

constexpr uint32_t kEnd = 0xFFFFFFFE;

TEST(Meta, TableBlocksFromThe110thOnComeFromMetaBlocks) {
  // 512-byte blocks: 128 entries a table block, 127 numbers a meta block.
  for (const uint32_t tables : {109u, 110u, 236u, 237u, 364u}) {
    CompoundOptions options;
    // 40 blocks for the stream, 1 for the directory; the last table block is half full.
    options.freeBlocks = (tables - 1) * 128 + 64 - 41 - tables - (tables + 17) / 127;
    const std::string bytes = Pattern(20000);
    const CompoundImage image = CompoundBuilder(options).stream("b", bytes).image();
    ASSERT_EQ(image.tableBlocks.size(), tables);
    const size_t metas = tables == 109 ? 0 : (tables - 109 + 126) / 127;
    ASSERT_EQ(image.metaBlocks.size(), metas);
    LoadedFile file(image.bytes);
    ASSERT_EQ(file.file().result(), CompoundOk);
    EXPECT_EQ(file.parts().metaBlocks.size(), metas);
    EXPECT_EQ(file.parts().bigTable.entries.size(), tables * 128);
    const BlockList list = BigTableBlocks(file.file(), false);
    EXPECT_EQ(List(list),
              std::vector<uint64_t>(image.tableBlocks.begin(), image.tableBlocks.end()));
    EXPECT_EQ(file.stream("b"), bytes);
  }
}

TEST(Meta, NumbersThatNothingFillsAre0) {
  CompoundOptions options;
  options.freeBlocks = 110 * 128;
  CompoundImage image = CompoundBuilder(options).stream("b", Pattern(5000)).image();
  const auto tables = static_cast<uint32_t>(image.tableBlocks.size());
  image.put(72, 0);  // no meta blocks
  LoadedFile file(image.bytes);
  EXPECT_TRUE(file.parts().metaBlocks.empty());
  EXPECT_TRUE(file.parts().metaData.empty());
  const BlockList list = BigTableBlocks(file.file(), true);
  ASSERT_EQ(list.size(), tables);
  EXPECT_EQ(list[108], image.tableBlocks[108]);
  EXPECT_EQ(list[109], 0u);
  EXPECT_EQ(list.back(), 0u);
}

TEST(Meta, MoreMetaBlocksThanNumbersReadTheLastNumberAgain) {
  CompoundOptions options;
  options.freeBlocks = 109 * 128;
  CompoundImage image = CompoundBuilder(options).stream("b", Pattern(5000)).image();
  ASSERT_EQ(image.tableBlocks.size(), 110u);
  image.put(72, 3);
  LoadedFile file(image.bytes);
  EXPECT_EQ(file.parts().metaBlocks.size(), 3u);
  // The second "meta block" is the table block that the first one named.
  EXPECT_EQ(file.parts().metaBlocks[1], image.tableBlocks[109]);
  EXPECT_EQ(file.parts().metaData.size(), 1u);
  EXPECT_EQ(file.parts().metaBlocks[2], image.get(image.block(image.tableBlocks[109])));
}

constexpr uint64_t kMebibyte = uint64_t{1} << 20;

// A sparse file with blocks of 1 MiB: table 0, directory 1, and a big stream in block 2047, which
// begins at 2 GiB.
std::filesystem::path WriteLargeFile(const TempDirectory& directory, uint32_t streamBlock) {
  CompoundOptions options;
  options.bigShift = 20;
  CompoundImage image = CompoundBuilder(options).stream("b", Pattern(5000)).image();
  image.put(image.record("b") + RecordStart, streamBlock);
  image.put(image.tableEntry(streamBlock), kEnd);
  const std::filesystem::path path = directory.path() / "large.msg";
  std::ofstream out(path, std::ios::binary);
  out << image.bytes;
  out.seekp(static_cast<std::streamoff>((streamBlock + 1) * kMebibyte));
  out << std::string(5000, '!');
  return path;
}

std::string ReadLargeFile(const std::filesystem::path& path) {
  const uint64_t handle = KernelFileOpen(path.u16string().c_str(), KERNEL_OPEN_READ, 256);
  std::string bytes(5000, '?');
  {
    CompoundFile file = CompoundFile::open(handle);
    EXPECT_EQ(file.result(), CompoundOk);
    std::optional<CompoundStream> stream = file.open("b");
    StreamRead(*stream, 0, Room(bytes));
  }
  KernelFileClose(handle);
  return bytes;
}

TEST(Large, BlocksBelow2GibibytesAreRead) {
  const TempDirectory directory;
  EXPECT_EQ(ReadLargeFile(WriteLargeFile(directory, 2046)), std::string(5000, '!'));
}

TEST(Large, BlocksFrom2GibibytesOnAreNotFound) {
  // Their position is taken as a negative number, and the seek fails.
  const TempDirectory directory;
  EXPECT_EQ(ReadLargeFile(WriteLargeFile(directory, 2047)).find('!'), std::string::npos);
}

TEST(Large, PositionsWrapAt4Gibibytes) {
  // Block 4096 begins at 4 GiB + 1 MiB: what is read is block 0.
  const TempDirectory directory;
  const std::filesystem::path path = WriteLargeFile(directory, 4096);
  std::string expected(5000, '\0');
  std::ifstream in(path, std::ios::binary);
  in.seekg(static_cast<std::streamoff>(kMebibyte));
  in.read(expected.data(), 5000);
  EXPECT_EQ(ReadLargeFile(path), expected);
  EXPECT_EQ(expected, Pattern(5000));
}

TEST(Large, WritingTakesAll64Bits) {
  const TempDirectory directory;
  const std::filesystem::path path = directory.path() / "out";
  const uint64_t handle = KernelFileOpen(path.u16string().c_str(), KERNEL_OPEN_CREATE, 256);
  {
    CompoundFile file(handle);
    PartsOf(file).bigTable.blockSize = kMebibyte;
    EXPECT_EQ(SaveBigBlock(file, 2047, 3, Bytes("here")), 4u);
    EXPECT_EQ(file.size(), 2048 * kMebibyte + 7);
  }
  KernelFileClose(handle);
  EXPECT_EQ(std::filesystem::file_size(path), 2048 * kMebibyte + 7);
  std::ifstream in(path, std::ios::binary);
  in.seekg(static_cast<std::streamoff>(2048 * kMebibyte + 3));
  std::string bytes(4, '\0');
  in.read(bytes.data(), 4);
  EXPECT_EQ(bytes, "here");
}

}  // namespace
}  // namespace tarn::test
