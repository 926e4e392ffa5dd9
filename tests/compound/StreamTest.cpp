// Opening files and reading their streams.

#include <gtest/gtest.h>

#include "CompoundFiles.h"
#include "support/compound/CompoundBuilder.h"

namespace tarn::test {
namespace {

constexpr uint32_t kEnd = 0xFFFFFFFE;

class StreamsOfEveryShape : public ::testing::TestWithParam<std::tuple<uint32_t, BlockOrder>> {};

TEST_P(StreamsOfEveryShape, ReadAsTheyWereWritten) {
  CompoundOptions options;
  options.bigShift = std::get<0>(GetParam());
  options.order = std::get<1>(GetParam());
  CompoundBuilder builder(options);
  const size_t sizes[] = {0, 1, 63, 64, 65, 511, 512, 513, 4095, 4096, 4097, 8192, 70000, 300001};
  for (const size_t size : sizes) {
    builder.stream("s" + std::to_string(size), Pattern(size, static_cast<unsigned>(size)));
    builder.at("deep/er").stream("t" + std::to_string(size), Pattern(size, 3));
  }
  LoadedFile file(builder.write());
  ASSERT_EQ(file.file().result(), CompoundOk);
  EXPECT_TRUE(file.file().isOpened());
  EXPECT_FALSE(file.file().isWritable());
  for (const size_t size : sizes) {
    EXPECT_EQ(file.stream("s" + std::to_string(size)), Pattern(size, static_cast<unsigned>(size)));
    EXPECT_EQ(file.stream("deep/er/t" + std::to_string(size)), Pattern(size, 3));
  }
}

INSTANTIATE_TEST_SUITE_P(Stream, StreamsOfEveryShape,
                         ::testing::Combine(::testing::Values(7u, 9u, 10u, 12u, 16u),
                                            ::testing::Values(BlockOrder::Ascending,
                                                              BlockOrder::Descending,
                                                              BlockOrder::Interleaved)));

TEST(Open, AStorageIsNoStreamAndAMissingOneNeither) {
  CompoundBuilder builder;
  builder.stream("a", "text").storage("s").stream("b", "x");
  LoadedFile file(builder.write());
  EXPECT_FALSE(file.file().open("s").has_value());
  EXPECT_FALSE(file.file().open("/").has_value());
  EXPECT_FALSE(file.file().open("").has_value());
  EXPECT_FALSE(file.file().open("c").has_value());
  EXPECT_FALSE(file.file().openOrMake("c").has_value());  // not writable
  const std::optional<CompoundStream> stream = file.file().open("s/b/");
  ASSERT_TRUE(stream.has_value());
  EXPECT_EQ(std::string_view(stream->fullName), "s/b/");
  EXPECT_EQ(stream->entryIndex, 3u);
  EXPECT_EQ(stream->position, 0u);
  EXPECT_EQ(stream->size(), 1u);
}

TEST(Open, AnEntryOfAnotherTreeHasNoIndex) {
  LoadedFile file(CompoundBuilder().stream("a", "text").write());
  DirectoryEntry other;
  other.size = 4;
  other.start = 0;
  CompoundStream stream(file.file(), other);
  EXPECT_EQ(stream.entryIndex, UINT64_MAX);
  EXPECT_EQ(stream.entry(), nullptr);
  unsigned char byte = 7;
  EXPECT_EQ(StreamRead(stream, 0, {&byte, 1}), 0u);
  EXPECT_EQ(StreamWrite(stream, 0, {&byte, 1}), 0u);
  StreamSetSize(stream, 9);
  EXPECT_EQ(byte, 7);
}

TEST(Close, KeepsTheHandleOpen) {
  LoadedFile file(CompoundBuilder().stream("a", "text").write());
  CloseCompoundFile(file.file());
  EXPECT_FALSE(file.file().isOpened());
  CloseCompoundFile(file.file());
  EXPECT_EQ(file.stream("a"), "text");
}

TEST(Open, ForReadingAndAgain) {
  LoadedFile file(CompoundBuilder().stream("a", "text").write());
  EXPECT_TRUE(OpenCompoundFile(file.file(), false, false));
  EXPECT_FALSE(file.file().isWritable());
  EXPECT_TRUE(OpenCompoundFile(file.file(), true, false));
  EXPECT_TRUE(file.file().isWritable());
  EXPECT_TRUE(file.file().isOpened());
  EXPECT_EQ(file.stream("a"), "text");
  LoadedFile none("no compound file");
  EXPECT_FALSE(OpenCompoundFile(none.file(), true, false));
}

TEST(Limit, TheSizeDecidesOnTheKindOfBlocks) {
  CompoundBuilder builder;
  builder.stream("big", Pattern(4096)).stream("small", Pattern(4095));
  LoadedFile file(builder.write());
  std::optional<CompoundStream> big = file.file().open("big");
  std::optional<CompoundStream> small = file.file().open("small");
  EXPECT_TRUE(big->isBig());
  EXPECT_EQ(big->blocks.size(), 8u);
  EXPECT_FALSE(small->isBig());
  EXPECT_EQ(small->blocks.size(), 64u);
}

std::string ReadPart(CompoundStream& stream, uint64_t position, uint64_t length) {
  std::string buffer(length, '?');
  const uint64_t read = StreamRead(stream, position, Room(buffer));
  EXPECT_EQ(buffer.substr(read), std::string(length - read, '?'));
  return buffer.substr(0, read);
}

TEST(Read, AnyPartOfAStream) {
  for (const size_t size : {size_t{1000}, size_t{6000}}) {
    for (const BlockOrder order : {BlockOrder::Ascending, BlockOrder::Interleaved}) {
      CompoundOptions options;
      options.order = order;
      const std::string bytes = Pattern(size);
      LoadedFile file(
          CompoundBuilder(options).stream("pad", Pattern(70)).stream("a", bytes).write());
      std::optional<CompoundStream> stream = file.file().open("a");
      for (const uint64_t position : {0u, 1u, 63u, 64u, 65u, 511u, 512u, 513u, 700u, 999u}) {
        for (const uint64_t length :
             {1u, 2u, 63u, 64u, 65u, 448u, 449u, 512u, 513u, 1024u, 1100u, 9000u}) {
          ASSERT_EQ(ReadPart(*stream, position, length), bytes.substr(position, length))
              << size << " " << position << " " << length;
        }
      }
      EXPECT_EQ(stream->position, 0u);
      EXPECT_EQ(ReadPart(*stream, size, 5), "");
      EXPECT_EQ(ReadPart(*stream, size + 1, 5), "");
      EXPECT_EQ(ReadPart(*stream, UINT64_MAX, 5), "");
      EXPECT_EQ(ReadPart(*stream, 0, 0), "");
      EXPECT_EQ(ReadPart(*stream, size - 1, uint64_t{1} << 20), bytes.substr(size - 1));
      EXPECT_EQ(StreamRead(*stream, 0, {}), 0u);
    }
  }
}

TEST(Read, AChainShorterThanTheSizeGivesFewerBytes) {
  const std::string bytes = Pattern(5000);
  CompoundImage image = CompoundBuilder().stream("b", bytes).stream("s", Pattern(300)).image();
  const auto first = static_cast<uint32_t>(image.get(image.record("b") + RecordStart));
  image.put(image.tableEntry(first + 2), kEnd);
  image.put(image.smallTableEntry(1), kEnd);
  LoadedFile file(image.bytes);
  EXPECT_EQ(file.stream("b"), bytes.substr(0, 3 * 512));
  EXPECT_EQ(file.stream("s"), Pattern(300).substr(0, 128));
  std::optional<CompoundStream> stream = file.file().open("b");
  EXPECT_EQ(ReadPart(*stream, 3 * 512, 10), "");
  EXPECT_EQ(ReadPart(*stream, 3 * 512 - 1, 10), bytes.substr(3 * 512 - 1, 1));
}

TEST(Read, AChainThatRunsInACircleIsReadOnce) {
  const std::string bytes = Pattern(5120);
  CompoundImage image = CompoundBuilder().stream("b", bytes).image();
  const auto first = static_cast<uint32_t>(image.get(image.record("b") + RecordStart));
  for (uint32_t last = 0; last < 10; ++last) {
    for (uint32_t back = 0; back <= last; ++back) {
      CompoundImage damaged = image;
      damaged.put(damaged.tableEntry(first + last), first + back);
      EXPECT_EQ(LoadedFile(damaged.bytes).stream("b"), bytes.substr(0, 512 * (last + 1)));
    }
  }
}

TEST(Read, AChainLongerThanTheSizeIsCutToIt) {
  CompoundImage image = CompoundBuilder().stream("b", Pattern(9000)).image();
  image.put(image.record("b") + RecordSize, 4100);
  EXPECT_EQ(LoadedFile(image.bytes).stream("b"), Pattern(9000).substr(0, 4100));
}

TEST(Read, TheHighSizeIsIgnored) {
  CompoundImage image = CompoundBuilder(CompoundVersion::V4).stream("b", "text").image();
  image.put(image.record("b") + RecordSize + 4, 1);
  EXPECT_EQ(LoadedFile(image.bytes).stream("b"), "text");
}

// Blocks beyond the file ----------------------------------------------------------------------

TEST(Clipped, AFileCutInItsLastBlockReadsThePartThatExists) {
  // The stream's blocks lie at the end of the file after a copy of all others.
  CompoundImage image = CompoundBuilder().stream("b", Pattern(4096)).image();
  const auto count = static_cast<uint32_t>(image.bytes.size() / 512 - 1);
  for (uint32_t i = 0; i < 8; ++i) {
    image.put(image.tableEntry(count + i), i < 7 ? count + i + 1 : kEnd);
  }
  image.put(image.record("b") + RecordStart, count);
  const std::string text = Pattern(4096, 9);
  image.bytes += text;
  for (const size_t cut : {0u, 1u, 100u, 511u, 512u, 513u, 1024u, 4000u, 4096u}) {
    LoadedFile file(image.bytes.substr(0, image.bytes.size() - cut));
    EXPECT_EQ(file.stream("b"), text.substr(0, 4096 - cut)) << cut;
  }
}

TEST(Clipped, LoadBigBlocksGives0ForABlockAfterTheEnd) {
  const std::string bytes = CompoundBuilder().stream("b", Pattern(4096)).write();
  LoadedFile whole(bytes);
  const uint64_t blocks = bytes.size() / 512 - 1;
  std::string buffer(2048, '?');
  auto* const to = reinterpret_cast<unsigned char*>(buffer.data());

  const uint64_t inside[] = {1, 0, blocks};
  EXPECT_EQ(LoadBigBlocks(whole.file(), inside, {to, 2048}), 1024u);  // at the end: 0 bytes of it
  EXPECT_EQ(buffer, bytes.substr(1024, 512) + bytes.substr(512, 512) + std::string(1024, '?'));
  const uint64_t after[] = {1, blocks + 1, 0};
  EXPECT_EQ(LoadBigBlocks(whole.file(), after, {to, 2048}), 0u);
  EXPECT_EQ(LoadBigBlocks(whole.file(), {inside, 1}, {to, 100}), 100u);
  EXPECT_EQ(LoadBigBlocks(whole.file(), {}, {to, 100}), 0u);
  EXPECT_EQ(LoadBigBlocks(whole.file(), {inside, 1}, {}), 0u);
  EXPECT_EQ(LoadBigBlocks(whole.file(), {inside, 1}, {to, 0}), 0u);

  // A block that is clipped: the next one follows directly.
  LoadedFile cut(bytes.substr(0, bytes.size() - 500));
  const uint64_t clipped[] = {blocks - 1, 0};
  EXPECT_EQ(LoadBigBlocks(cut.file(), {clipped, 2}, {to, 1024}), 524u);
  EXPECT_EQ(buffer.substr(0, 524), bytes.substr(bytes.size() - 512, 12) + bytes.substr(512, 512));
}

TEST(Clipped, AStreamGoesOnAfterABlockThatIsMissing) {
  const std::string bytes = Pattern(4608);
  CompoundImage image = CompoundBuilder().stream("b", bytes).image();
  const auto first = static_cast<uint32_t>(image.get(image.record("b") + RecordStart));
  // Blocks 0, 1, then one that lies after the end, then 3 and so on.
  image.put(image.tableEntry(first + 1), 100);
  image.put(image.tableEntry(100), first + 3);
  EXPECT_EQ(LoadedFile(image.bytes).stream("b"), bytes.substr(0, 1024) + bytes.substr(1536));
}

TEST(Clipped, SmallBlocksOfAMissingContainerBlockAreZeros) {
  const std::string bytes = Pattern(1600);
  CompoundImage image = CompoundBuilder().stream("s", bytes).image();
  const auto second = image.containerBlocks[1];
  image.put(image.tableEntry(image.containerBlocks[0]), 100);
  image.put(image.tableEntry(100), image.containerBlocks[2]);
  ASSERT_NE(second, 100u);
  EXPECT_EQ(LoadedFile(image.bytes).stream("s"),
            bytes.substr(0, 512) + std::string(512, '\0') + bytes.substr(1024));
}

TEST(Clipped, LoadSmallBlocksStopsAfterTheContainer) {
  LoadedFile file(CompoundBuilder().stream("s", Pattern(600)).write());
  std::string buffer(300, '?');
  auto* const to = reinterpret_cast<unsigned char*>(buffer.data());
  const uint64_t blocks[] = {9, 0, 16, 1};  // two container blocks hold 16 small ones
  EXPECT_EQ(LoadSmallBlocks(file.file(), blocks, {to, 300}), 128u);
  EXPECT_EQ(buffer, Pattern(600).substr(576) + std::string(40, '\0') + Pattern(600).substr(0, 64) +
                        std::string(172, '?'));
  EXPECT_EQ(LoadSmallBlocks(file.file(), blocks, {to, 70}), 70u);
  EXPECT_EQ(LoadSmallBlock(file.file(), 0, {to, 300}), 64u);
  EXPECT_EQ(LoadSmallBlock(file.file(), 0, {}), 0u);
  EXPECT_EQ(LoadSmallBlocks(file.file(), {}, {to, 300}), 0u);
  EXPECT_EQ(LoadSmallBlock(file.file(), 0, {to, 0}), 0u);
}

// Directory and container ---------------------------------------------------------------------

TEST(Root, WithoutAContainerSmallStreamsReadAsNothing) {
  CompoundImage image = CompoundBuilder().stream("s", "text").stream("b", Pattern(5000)).image();
  image.put(image.record("") + RecordStart, kEnd);
  LoadedFile file(image.bytes);
  EXPECT_TRUE(file.parts().small.container().empty());
  EXPECT_EQ(file.stream("s"), "");
  EXPECT_EQ(file.stream("b"), Pattern(5000));
}

TEST(Root, ABrokenDirectoryChainIsAnEmptyDirectory) {
  CompoundImage image = CompoundBuilder().stream("s", "text").image();
  image.put(48, kEnd);
  LoadedFile file(image.bytes);
  EXPECT_EQ(file.file().result(), CompoundOk);
  EXPECT_TRUE(file.file().isOpened());
  EXPECT_TRUE(file.parts().directory.entries().empty());
  EXPECT_TRUE(file.parts().small.container().empty());
  EXPECT_FALSE(file.has("/"));
  EXPECT_EQ(file.names("/"), "");
}

TEST(Root, ADirectoryOfSeveralBlocks) {
  CompoundOptions options;
  options.order = BlockOrder::Descending;
  CompoundBuilder builder(options);
  for (int i = 0; i < 50; ++i) builder.stream("n" + std::to_string(i), std::to_string(i));
  LoadedFile file(builder.write());
  EXPECT_EQ(file.parts().directory.entries().size(), 52u);
  for (int i = 0; i < 50; ++i) EXPECT_EQ(file.stream("n" + std::to_string(i)), std::to_string(i));
}

}  // namespace
}  // namespace tarn::test
