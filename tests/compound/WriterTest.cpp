// Files made from nothing, byte for byte.

#include <gtest/gtest.h>

#include <random>

#include "CompoundFiles.h"
#include "NaiveCompound.h"

namespace tarn::test {
namespace {

std::string Words(const std::vector<uint32_t>& words) {
  std::string bytes;
  for (const uint32_t word : words) {
    for (int i = 0; i < 4; ++i) bytes.push_back(static_cast<char>(word >> (8 * i)));
  }
  return bytes;
}

std::string Padded(std::string bytes, size_t size, char filler) {
  bytes.resize(size, filler);
  return bytes;
}

std::string Wide(std::string_view name) {
  std::string bytes;
  for (const char c : name) bytes += std::string{c, '\0'};
  return bytes;
}

constexpr uint32_t kEnd = 0xFFFFFFFE;
constexpr uint32_t kFree = 0xFFFFFFFF;

const std::string kFirstHeaderPart =
    std::string("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8) + std::string(16, '\0') +
    std::string("\x3E\0\x03\0\xFE\xFF\x09\0\x06\0", 10) + std::string(10, '\0');

// Tables of table blocks, directory, small table, container with one block each.
std::string Header(uint32_t tableBlocks, uint32_t metaStart, uint32_t metaBlocks,
                   const std::vector<uint32_t>& numbers) {
  return Padded(kFirstHeaderPart + Words({tableBlocks, 1, 0, 4096, 2, 1, metaStart, metaBlocks}) +
                    Words(numbers),
                512, '\xFF');
}

TEST(NewFile, IsNotOpenedAndHoldsFourBlocks) {
  NewFile made;
  CompoundFile& file = made.file();
  EXPECT_TRUE(OpenCompoundFile(file, true, true));
  EXPECT_FALSE(file.isOpened());
  EXPECT_TRUE(file.isWritable());
  EXPECT_EQ(file.result(), CompoundOk);
  EXPECT_EQ(file.size(), 0u);
  EXPECT_EQ(PartsOf(file).header.tableBlocks[0], 0u);
  EXPECT_EQ(PartsOf(file).header.tableBlocks[1], kFree);
  EXPECT_EQ(PartsOf(file).header.directoryStart, 1u);
  EXPECT_EQ(PartsOf(file).header.smallTableStart, 2u);
  EXPECT_EQ(PartsOf(file).header.tableBlockCount, 1u);
  EXPECT_EQ(PartsOf(file).header.smallTableBlockCount, 1u);
  EXPECT_EQ(PartsOf(file).header.metaStart, kEnd);
  EXPECT_EQ(PartsOf(file).header.metaBlockCount, 0u);
  EXPECT_TRUE(WriterOf(file).marks().header);
  EXPECT_FALSE(WriterOf(file).marks().meta);
  EXPECT_EQ(List(PartsOf(file).small.container()), (std::vector<uint64_t>{3}));
  EXPECT_EQ(List(WriterOf(file).marks().bigTable.numbers()), (std::vector<uint64_t>{0}));
  for (uint64_t i = 0; i < 4; ++i) EXPECT_EQ(PartsOf(file).bigTable.entries[i], kEnd);
  EXPECT_EQ(PartsOf(file).bigTable.entries[4], kFree);
  EXPECT_EQ(PartsOf(file).bigTable.blockSize, 512u);
  EXPECT_EQ(PartsOf(file).smallTable.blockSize, 64u);
  EXPECT_EQ(made.end(), "");  // nothing reaches the file before the flush
}

TEST(NewFile, OneStreamOf10Bytes) {
  NewFile made;
  EXPECT_EQ(made.append("s", "0123456789"), 10u);
  EXPECT_EQ(made.file().size(), 2048u + 10);
  made.flush();

  std::string expected = Header(1, kEnd, 0, {0});
  expected += Padded(Words({kEnd, kEnd, kEnd, kEnd}), 512, '\xFF');
  expected += Padded(Wide("Root Entry"), 64, '\0') + std::string("\x16\0\5\0", 4) +
              Words({kFree, kFree, 1}) + std::string(36, '\0') + Words({3, 512, 0});
  expected += Padded(Wide("s"), 64, '\0') + std::string("\x04\0\2\1", 4) +
              Words({kFree, kFree, kFree}) + std::string(36, '\0') + Words({0, 10, 0});
  expected += std::string(256, '\0');  // the directory's block is written in part
  expected += Padded(Words({kEnd}), 512, '\xFF');
  expected += "0123456789";
  EXPECT_EQ(made.end(), expected);
}

TEST(NewFile, FlushedEmpty) {
  NewFile made;
  made.flush();
  std::string expected = Header(1, kEnd, 0, {0});
  expected += Padded(Words({kEnd, kEnd, kEnd, kEnd}), 512, '\xFF');
  expected += Padded(Wide("Root Entry"), 64, '\0') + std::string("\x16\0\5\0", 4) +
              Words({kFree, kFree, kFree}) + std::string(36, '\0') + Words({3, 512, 0});
  EXPECT_EQ(made.end(), expected);
}

TEST(NewFile, WithoutAFlushHoldsStreamDataOnly) {
  NewFile made;
  made.append("s", "0123456789");
  EXPECT_EQ(made.end(), std::string(2048, '\0') + "0123456789");
}

TEST(NewFile, AStreamOf4096BytesTakesEightBlocksFromBlock4On) {
  NewFile made;
  const std::string bytes = Pattern(4096);
  EXPECT_EQ(made.append("s", bytes), 4096u);
  EXPECT_EQ(made.parts().directory.entries()[1].start, 4u);
  EXPECT_EQ(made.parts().directory.entries()[1].size, 4096u);
  made.flush();
  const std::string file = made.end();
  EXPECT_EQ(file.substr(0, 512), Header(1, kEnd, 0, {0}));
  EXPECT_EQ(file.substr(512, 512),
            Padded(Words({kEnd, kEnd, kEnd, kEnd, 5, 6, 7, 8, 9, 10, 11, kEnd}), 512, '\xFF'));
  EXPECT_EQ(file.substr(1024 + 128 + 116, 8), Words({4, 4096}));
  EXPECT_EQ(file.substr(1536, 1024), std::string(1024, '\0'));  // nobody wrote there
  EXPECT_EQ(file.substr(2560), bytes);
}

TEST(Write, MovesFromSmallToBigBlocksOnTheWay) {
  NewFile made;
  std::optional<CompoundStream> stream = made.file().openOrMake("s");
  const std::string bytes = Pattern(5032);
  EXPECT_EQ(StreamWrite(*stream, stream->position, Bytes(bytes).first(24)), 24u);
  EXPECT_EQ(stream->position, 24u);
  EXPECT_EQ(StreamWrite(*stream, stream->position, Bytes(bytes).subspan(24, 8)), 8u);
  EXPECT_EQ(List(stream->blocks), (std::vector<uint64_t>{0}));
  EXPECT_EQ(made.parts().smallTable.entries[0], kEnd);
  EXPECT_EQ(StreamWrite(*stream, stream->position, Bytes(bytes).subspan(32, 5000)), 5000u);
  EXPECT_EQ(stream->position, 5032u);
  EXPECT_EQ(List(stream->blocks), (std::vector<uint64_t>{4, 5, 6, 7, 8, 9, 10, 11, 12, 13}));
  EXPECT_EQ(made.parts().smallTable.entries[0], kFree);
  EXPECT_TRUE(made.parts().smallTable.maybeFragmented);
  made.flush();
  const std::string file = made.end();
  EXPECT_EQ(file.substr(2048, 32), bytes.substr(0, 32));  // what was there before
  EXPECT_EQ(file.substr(2560), bytes);
  EXPECT_EQ(file.substr(1536, 512), std::string(512, '\xFF'));
  EXPECT_EQ(LoadedFile(file).stream("s"), bytes);
}

TEST(Write, AnywhereInAStream) {
  for (const uint64_t size : {300u, 6000u}) {
    NewFile made;
    std::string expected = Pattern(size);
    std::optional<CompoundStream> stream = made.file().openOrMake("s");
    StreamWrite(*stream, 0, Bytes(expected));
    for (const uint64_t position : {0u, 1u, 63u, 64u, 100u, 250u}) {
      for (const uint64_t length : {1u, 2u, 30u, 50u}) {
        const std::string piece = Pattern(length, static_cast<unsigned>(position + length));
        EXPECT_EQ(StreamWrite(*stream, position, Bytes(piece)), length);
        expected.replace(position, length, piece);
        std::string read(size, '?');
        EXPECT_EQ(StreamRead(*stream, 0, Room(read)), size);
        ASSERT_EQ(read, expected) << position << " " << length;  // no stale copy is read either
      }
    }
    EXPECT_EQ(stream->size(), size);
  }
}

TEST(Write, AfterTheEndLeavesAHole) {
  NewFile made;
  std::optional<CompoundStream> stream = made.file().openOrMake("s");
  EXPECT_EQ(StreamWrite(*stream, 200, Bytes("end")), 3u);
  EXPECT_EQ(stream->size(), 203u);
  EXPECT_EQ(List(stream->blocks), (std::vector<uint64_t>{0, 1, 2, 3}));
  made.flush();
  EXPECT_EQ(LoadedFile(made.end()).stream("s"), std::string(200, '\0') + "end");
}

TEST(Write, NothingIsWritten) {
  NewFile made;
  std::optional<CompoundStream> stream = made.file().openOrMake("s");
  EXPECT_EQ(StreamWrite(*stream, 0, {}), 0u);
  EXPECT_EQ(StreamWrite(*stream, 0, {}), 0u);
  EXPECT_EQ(StreamWrite(*stream, UINT64_MAX, Bytes("xy")), 0u);
  made.parts().writable = false;
  EXPECT_EQ(StreamWrite(*stream, 0, Bytes("x")), 0u);
  StreamSetSize(*stream, 7);
  EXPECT_EQ(stream->size(), 0u);
  EXPECT_EQ(stream->position, 0u);
  EXPECT_EQ(stream->entry()->start, kEnd);
  EXPECT_EQ(made.end(), "");
}

TEST(Write, NothingIsWrittenWithoutAnEntry) {
  NewFile made;
  DirectoryEntry other;
  CompoundStream stream(made.file(), other);
  EXPECT_EQ(StreamWrite(stream, 0, Bytes("x")), 0u);
  StreamSetSize(stream, 9);
  EXPECT_EQ(other.size, 0u);
  EXPECT_EQ(made.end(), "");
}

TEST(Save, NothingIsWrittenOfNothing) {
  NewFile made;
  const uint64_t blocks[] = {0};
  EXPECT_EQ(SaveBigBlocks(made.file(), {blocks, 1}, 0, {}), 0u);
  EXPECT_EQ(SaveBigBlocks(made.file(), {}, 0, Bytes("x")), 0u);
  EXPECT_EQ(SaveBigBlocks(made.file(), {blocks, 1}, 0, {}), 0u);
  EXPECT_EQ(SaveSmallBlocks(made.file(), Blocks({0}), 0, {}), 0u);
  EXPECT_EQ(SaveSmallBlocks(made.file(), Blocks({}), 0, Bytes("x")), 0u);
  EXPECT_EQ(made.end(), "");
}

// Small block 0 lies in the container's only block, small block 8 in one that it does not have.
TEST(Save, SmallBlocksStopAfterTheContainer) {
  NewFile made;
  made.append("s", Pattern(10));
  EXPECT_EQ(SaveSmallBlocks(made.file(), Blocks({0, 8}), 0, Bytes(Pattern(128))), 64u);
  EXPECT_EQ(SaveSmallBlocks(made.file(), Blocks({8}), 0, Bytes("x")), 0u);
}

TEST(SetSize, OnOneSideOfTheLimitOnlyTheEntryChanges) {
  NewFile made;
  std::optional<CompoundStream> stream = made.file().openOrMake("s");
  StreamWrite(*stream, 0, Bytes(Pattern(200)));
  made.marks().directory.clear();
  StreamSetSize(*stream, 200);
  EXPECT_TRUE(made.marks().directory.empty());
  StreamSetSize(*stream, 4095);
  EXPECT_EQ(stream->size(), 4095u);
  EXPECT_EQ(stream->blocks.size(), 4u);
  EXPECT_TRUE(made.marks().directory.contains(0));
  StreamSetSize(*stream, 10);
  EXPECT_EQ(stream->size(), 10u);
  EXPECT_EQ(stream->blocks.size(), 4u);
}

TEST(SetSize, GoingDownGivesBigBlocksBackAndMarksByTheirPlaceInTheList) {
  NewFile made;
  CompoundFile& file = made.file();
  const std::string filler = Pattern(512 * 300);
  made.append("filler", filler);  // pushes the stream's blocks after the second table block
  std::optional<CompoundStream> stream = made.file().openOrMake("s");
  const std::string bytes = Pattern(5000, 4);
  StreamWrite(*stream, 0, Bytes(bytes));
  const uint64_t first = stream->blocks.front();
  ASSERT_GT(first, 256u);
  stream->position = 77;
  WriterOf(file).marks().bigTable.clear();
  PartsOf(file).bigTable.maybeFragmented = false;
  StreamSetSize(*stream, 100);
  EXPECT_EQ(stream->position, 77u);
  EXPECT_TRUE(PartsOf(file).bigTable.maybeFragmented);
  for (uint64_t i = 0; i < 10; ++i) EXPECT_EQ(PartsOf(file).bigTable.entries[first + i], kFree);
  // The blocks lie in the third part of the table; the mark is made for places 0 to 9.
  EXPECT_EQ(List(WriterOf(file).marks().bigTable.numbers()), (std::vector<uint64_t>{0}));
  EXPECT_EQ(List(stream->blocks), (std::vector<uint64_t>{0, 1}));
  EXPECT_EQ(stream->entry()->start, 0u);
  std::string read(100, '?');
  StreamRead(*stream, 0, Room(read));
  EXPECT_EQ(read, bytes.substr(0, 100));
  stream->position = 101;
  StreamSetSize(*stream, 4096);
  stream->position = 4000;
  StreamSetSize(*stream, 50);
  // One after the new end is not restored; writing the rest again has moved it.
  EXPECT_EQ(stream->position, 4050u);
}

TEST(SetSize, ToNothing) {
  NewFile made;
  std::optional<CompoundStream> stream = made.file().openOrMake("s");
  StreamSetSize(*stream, 5000);
  EXPECT_EQ(stream->entry()->start, kFree);
  EXPECT_TRUE(stream->blocks.empty());
  StreamSetSize(*stream, 0);
  EXPECT_EQ(stream->entry()->start, kFree);
  EXPECT_EQ(stream->size(), 0u);
}

// Against the long way ------------------------------------------------------------------------

// The same steps on both sides.
class Both {
 public:
  void append(const std::string& path, const std::string& bytes) {
    EXPECT_EQ(made_.append(path, bytes), bytes.size());
    naive_.append(path, bytes);
  }
  void resize(const std::string& path, uint32_t size) {
    std::optional<CompoundStream> stream = made_.file().openOrMake(path);
    StreamSetSize(*stream, size);
    naive_.resize(path, size);
  }
  NaiveCompound& naive() { return naive_; }

  // Compares the files; gives the bytes.
  std::string compare() {
    made_.flush();
    const std::string made = made_.end();
    const std::string expected = naive_.flush();
    if (made == expected) return made;
    EXPECT_EQ(made.size(), expected.size());
    const auto place = std::mismatch(made.begin(), made.end(), expected.begin(), expected.end());
    ADD_FAILURE() << "first difference at " << place.first - made.begin();
    return made;
  }

 private:
  NewFile made_;
  NaiveCompound naive_;
};

TEST(WholeFile, OneStreamOfManySizes) {
  for (const size_t size :
       {1u, 63u, 64u, 65u, 512u, 513u, 4095u, 4096u, 4097u, 60u * 512, 60u * 512 + 1, 61u * 512,
        62u * 512, 65u * 512, 124u * 512, 125u * 512, 128u * 512}) {
    Both both;
    const std::string bytes = Pattern(size);
    both.append("stream", bytes);
    EXPECT_EQ(LoadedFile(both.compare()).stream("stream"), bytes) << size;
  }
}

TEST(WholeFile, SevenThousandBlocksAndEightThousand) {
  for (const size_t blocks : {size_t{6800}, size_t{7000}, size_t{8000}, size_t{15200}}) {
    Both both;
    const std::string bytes = Pattern(blocks * 512 - 3);
    both.append("a", "small");
    both.append("big", bytes);
    both.append("small", Pattern(3000));
    const std::string file = both.compare();
    EXPECT_EQ(both.naive().metaBlockCount(), blocks < 6900 ? 0u : blocks < 8500 ? 1u : 3u);
    LoadedFile loaded(file);
    EXPECT_EQ(loaded.stream("big"), bytes);
    EXPECT_EQ(loaded.stream("small"), Pattern(3000));
  }
}

// The link in the middle of a meta block is a table block to a reader, once so many are in use.
TEST(WholeFile, BeyondTwentyTwoThousandBlocksItIsNotReadBackWhole) {
  for (const size_t blocks : {size_t{21000}, size_t{23000}}) {
    Both both;
    const std::string bytes = Pattern(blocks * 512);
    both.append("big", bytes);
    EXPECT_EQ(LoadedFile(both.compare()).stream("big") == bytes, blocks == 21000);
  }
}

TEST(WholeFile, ManySmallStreams) {
  Both both;
  for (int i = 0; i < 500; ++i) {
    both.append("folder" + std::to_string(i % 7) + "/s" + std::to_string(i * 37 % 500),
                Pattern(static_cast<size_t>(i * 5 % 300 + 1), static_cast<unsigned>(i)));
  }
  LoadedFile file(both.compare());
  for (int i = 0; i < 500; ++i) {
    EXPECT_EQ(file.stream("folder" + std::to_string(i % 7) + "/s" + std::to_string(i * 37 % 500)),
              Pattern(static_cast<size_t>(i * 5 % 300 + 1), static_cast<unsigned>(i)));
  }
}

TEST(WholeFile, RandomSteps) {
  for (unsigned seed = 0; seed < 60; ++seed) {
    std::mt19937 random(seed);
    Both both;
    for (int step = 0; step < 60; ++step) {
      std::string path = "s" + std::to_string(random() % 12);
      if (random() % 2 == 0) path = "f" + std::to_string(random() % 4) + "/" + path;
      const size_t length = random() % 4 == 0 ? random() % 9000 : random() % 900;
      both.append(path, Pattern(length + 1, static_cast<unsigned>(step)));
      if (random() % 5 == 0) both.resize(path, static_cast<uint32_t>(random() % 9000));
      if (HasFailure()) break;
    }
    both.compare();
    ASSERT_FALSE(HasFailure()) << seed;
  }
}

}  // namespace
}  // namespace tarn::test
