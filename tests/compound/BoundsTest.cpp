// What damaged files may cost: memory in proportion to the file, and a bounded number of reads.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "CompoundFiles.h"
#include "Tarnbase/PlainKernel.h"
#include "support/compound/CompoundBuilder.h"

namespace tarn::test {
namespace {

constexpr uint32_t kEnd = 0xFFFFFFFE;
constexpr uint64_t kMebibyte = uint64_t{1} << 20;

PlainKernelUsageRecord Usage() {
  PlainKernelUsageRecord usage = {};
  PlainKernelUsage(&usage);
  return usage;
}

// Whether loading a file takes no more than that much of the kernel's memory, the file's own bytes
// included. The kernel remembers the highest peak only, so memory is taken up to that much below it
// first.
bool LoadsWithin(uint64_t most, const std::string& bytes, uint64_t result) {
  const PlainKernelUsageRecord before = Usage();
  const uint64_t below = before.peakBytes - before.liveBytes;
  void* const filler = below > most ? KernelAlloc(below - most, 1, TARN_HERE) : nullptr;
  const uint64_t allowed = Usage().liveBytes + most;
  {
    LoadedFile file(bytes);
    EXPECT_EQ(file.file().result(), result);
    file.names("/");
  }
  if (filler != nullptr) KernelFree(filler, TARN_HERE);
  return Usage().peakBytes <= allowed;
}

// A header and nothing else.
CompoundImage HeaderOnly(uint32_t bigShift, uint64_t tableBlocks) {
  CompoundImage image = CompoundBuilder().image();
  image.bytes.resize(512);
  image.put(30, bigShift, 2);
  image.put(44, tableBlocks);
  for (size_t i = 0; i < 109; ++i) image.put(76 + 4 * i, 0);
  image.put(48, 0);
  image.put(60, 0);
  return image;
}

TEST(Memory, OfAHeaderWithLargeBlocks) {
  EXPECT_TRUE(LoadsWithin(10 * kMebibyte, HeaderOnly(26, 1).bytes, CompoundOk));
  EXPECT_TRUE(LoadsWithin(10 * kMebibyte, HeaderOnly(20, 64).bytes, CompoundOk));
}

TEST(Memory, OfTableBlocksThatTheFileHasOnce) {
  // A table of 64 MiB, all of it the same block of the file.
  CompoundImage image = HeaderOnly(9, 131072);
  image.bytes += std::string(512, '\1');
  EXPECT_TRUE(LoadsWithin(10 * kMebibyte, image.bytes, CompoundDamaged));
  image.put(44, 2000);
  EXPECT_TRUE(LoadsWithin(10 * kMebibyte, image.bytes, CompoundOk));
}

TEST(Memory, OfAStreamThatSaysToBeLarge) {
  CompoundImage image = CompoundBuilder().stream("b", Pattern(4500)).image();
  for (uint32_t i = 0; i < 128; ++i) image.put(image.tableEntry(i), (i + 1) % 128);
  image.put(image.record("b") + RecordSize, 0xFFFFFFFF);
  const uint64_t before = Usage().liveBytes;
  {
    LoadedFile file(image.bytes);
    std::optional<CompoundStream> stream = file.file().open("b");
    ASSERT_TRUE(stream.has_value());
    EXPECT_EQ(stream->blocks.size(), 128u);
    EXPECT_LT(Usage().liveBytes - before, kMebibyte);
  }
  EXPECT_EQ(Usage().liveBytes, before);
}

// Blocks of 4096 bytes: header, table blocks 0 to 16, and after them a directory block. From block
// 20 on a chain of that many blocks leads on and on, mostly after the end of the file.
CompoundImage LongChain(uint32_t length) {
  CompoundImage image;
  image.blockSize = 4096;
  image.bytes = CompoundBuilder(CompoundVersion::V4).write().substr(0, 512);
  image.bytes.resize((1 + 17 + 1) * 4096, '\0');
  image.put(44, 17);
  image.put(48, 17);
  image.put(60, kEnd);
  for (uint32_t i = 0; i < 17; ++i) image.put(76 + 4 * i, i);
  for (uint32_t i = 0; i < 17 * 1024; ++i) {
    image.put(4096 + 4 * i, i < 20 || i + 1 >= 20 + length ? kEnd : i + 1);
  }
  const size_t root = image.block(17);
  image.bytes[root] = 'R';
  image.put(root + RecordNameSize, 4, 2);
  image.put(root + RecordType, 5, 1);
  image.put(root + RecordStart, kEnd);
  return image;
}

TEST(Bounds, ASmallTableOf64Mebibytes) {
  for (const uint32_t blocks : {16384u, 16385u}) {
    CompoundImage image = LongChain(blocks);
    image.put(60, 20);
    EXPECT_TRUE(
        LoadsWithin(10 * kMebibyte, image.bytes, blocks == 16384 ? CompoundOk : CompoundDamaged));
  }
}

TEST(Bounds, ADirectoryOf64MebibytesOrOfTheFile) {
  for (const uint32_t blocks : {16384u, 16385u}) {
    CompoundImage image = LongChain(blocks);
    image.put(48, 20);
    LoadedFile file(image.bytes);
    EXPECT_EQ(file.file().result(), CompoundOk);
    EXPECT_TRUE(file.file().isOpened());
    EXPECT_EQ(file.parts().small.container().size(), blocks == 16384 ? 1u : 0u);
    // None of it is there: a mebibyte of zeros, or nothing when it is too long.
    EXPECT_EQ(file.parts().directory.entries().size(), blocks == 16384 ? 8192u : 0u);
    EXPECT_EQ(file.names("/"), "");
  }
}

TEST(Bounds, RecordsThatTheFileHasAreKeptBeforeThoseItHasNot) {
  CompoundImage image = LongChain(16000);
  image.put(4096 + 4 * 17, 20);  // the directory's block leads on
  LoadedFile file(image.bytes);
  EXPECT_EQ(file.file().result(), CompoundOk);
  EXPECT_EQ(file.parts().directory.entries().size(), 32u + 8192);
  EXPECT_TRUE(file.parts().directory.entries()[0].valid);
  EXPECT_FALSE(file.parts().directory.entries()[32].valid);
}

// Reads ---------------------------------------------------------------------------------------

// How many reads work makes: the fault is set far off, and what is left of the way is counted.
uint64_t ReadsOf(uint64_t handle, const std::function<void()>& work) {
  constexpr uint64_t kFar = 200000;
  PlainKernelFailAt(PlainKernelFaultRead, kFar);
  work();
  uint64_t left = 0;
  unsigned char byte = 0;
  do {
    KernelFileSeek(handle, 0, KERNEL_SEEK_START);
    ++left;
  } while (KernelFileRead(handle, &byte, 1) == 1);
  PlainKernelFailAt(PlainKernelFaultRead, 0);
  return kFar - left;
}

// Lets reads cost no more than that from now on.
void LeaveBytes(CompoundFile& file, uint64_t bytes) {
  file.spend(PartsOf(file).big.bytesLeft() - bytes);
}

void ReadStreams(CompoundFile& file, uint32_t rounds, uint32_t first, uint32_t step) {
  unsigned char bytes[4096];
  for (uint32_t i = 0; i < rounds; ++i) {
    const std::string name = "s" + std::to_string((first + i * step) % 200);
    std::optional<CompoundStream> stream = file.open(name);
    ASSERT_TRUE(stream.has_value());
    StreamRead(*stream, 0, bytes);
  }
}

// Small streams in a container of scattered blocks of 128 bytes.
std::string Scattered() {
  CompoundOptions options;
  options.bigShift = 7;
  options.order = BlockOrder::Descending;
  CompoundBuilder builder(options);
  for (int i = 0; i < 200; ++i) builder.stream("s" + std::to_string(i), Pattern(4000));
  return builder.write();
}

TEST(Reads, OfScatteredBlocksAreBounded) {
  const std::string bytes = Scattered();
  const MemoryMail mail(bytes);
  const uint64_t reads = ReadsOf(mail.handle(), [&] {
    CompoundFile file = CompoundFile::open(mail.handle());
    ASSERT_EQ(file.result(), CompoundOk);
    ReadStreams(file, 20000, 0, 7);
    EXPECT_EQ(PartsOf(file).big.bytesLeft(), 0u);
  });
  EXPECT_LT(reads, (uint64_t{256} * kMebibyte + 64 * bytes.size()) / 4096 + 2);
  EXPECT_GT(reads, 10000u);
}

TEST(Reads, GoAheadOnlyWhereBlocksLieSideBySideOrReadingGoesOn) {
  const MemoryMail mail(Scattered());
  CompoundFile file = CompoundFile::open(mail.handle());
  unsigned char byte = 0;
  const auto readsAt = [&](uint64_t smallBlock) {
    return ReadsOf(mail.handle(), [&] { LoadSmallBlock(file, smallBlock, {&byte, 1}); });
  };
  EXPECT_EQ(readsAt(600), 1u);  // two small blocks to a block
  EXPECT_EQ(readsAt(601), 0u);
  EXPECT_EQ(readsAt(602), 2u);  // goes on
  EXPECT_EQ(readsAt(605), 0u);
  EXPECT_EQ(readsAt(606), 4u);
  EXPECT_EQ(readsAt(100), 1u);
}

TEST(Reads, CostTheirBytesOnceAndNoLessThanACall) {
  LoadedFile loaded(CompoundBuilder()
                        .stream("b", Pattern(8192))
                        .stream("s", Pattern(4000))
                        .stream("t", Pattern(4000))
                        .write());
  CompoundFile& file = loaded.file();
  unsigned char bytes[8192];
  std::optional<CompoundStream> big = loaded.file().open("b");
  std::optional<CompoundStream> small = loaded.file().open("s");
  uint64_t before = PartsOf(file).big.bytesLeft();
  StreamRead(*big, 0, {bytes, 8192});
  EXPECT_EQ(before - PartsOf(file).big.bytesLeft(), 8192u);
  before = PartsOf(file).big.bytesLeft();
  StreamRead(*big, 0, {bytes, 1});
  EXPECT_EQ(before - PartsOf(file).big.bytesLeft(), 4096u);
  before = PartsOf(file).big.bytesLeft();
  StreamRead(*small, 0, {bytes, 4000});
  EXPECT_EQ(before - PartsOf(file).big.bytesLeft(), 4096u);
  before = PartsOf(file).big.bytesLeft();
  std::optional<CompoundStream> again = loaded.file().open("s");
  EXPECT_EQ(before - PartsOf(file).big.bytesLeft(), 63u * 8);
}

TEST(Reads, ZerosOfAMissingContainerBlockCostWhatTheyAre) {
  LoadedFile loaded(CompoundBuilder().stream("s", Pattern(600)).write());
  CompoundFile& file = loaded.file();
  loaded.parts().small.setContainer(Blocks({100, 0}));
  const uint64_t before = PartsOf(file).big.bytesLeft();
  unsigned char byte = 7;
  EXPECT_EQ(LoadSmallBlock(file, 0, {&byte, 1}), 1u);
  EXPECT_EQ(byte, 0);
  EXPECT_EQ(before - PartsOf(file).big.bytesLeft(), 512u);
  loaded.parts().small.setContainer(Blocks({100, 0}));
  LeaveBytes(file, 511);
  EXPECT_EQ(LoadSmallBlock(file, 0, {&byte, 1}), 0u);
}

TEST(Reads, PassOverMissingBlocksABoundedNumberOfTimes) {
  CompoundImage image = CompoundBuilder().stream("b", Pattern(4608)).image();
  for (uint32_t i = 40; i < 127; ++i) image.put(image.tableEntry(i), i + 1);
  image.put(image.tableEntry(127), kEnd);
  image.put(image.record("b") + RecordStart, 40);
  LoadedFile loaded(image.bytes);
  std::optional<CompoundStream> stream = loaded.file().open("b");
  ASSERT_EQ(stream->blocks.size(), 88u);
  unsigned char bytes[4608];
  const uint64_t before = loaded.parts().big.bytesLeft();
  EXPECT_EQ(StreamRead(*stream, 0, bytes), 0u);
  EXPECT_EQ(before - loaded.parts().big.bytesLeft(), 88u * 8);
  LeaveBytes(loaded.file(), 100);
  EXPECT_EQ(StreamRead(*stream, 0, bytes), 0u);
  EXPECT_EQ(loaded.parts().big.bytesLeft(), 0u);
}

TEST(Reads, ChainsAreAsLongAsWhatIsLeftAllows) {
  LoadedFile loaded(CompoundBuilder().stream("b", Pattern(8192)).write());
  LeaveBytes(loaded.file(), 80);
  EXPECT_EQ(loaded.file().open("b")->blocks.size(), 10u);
  EXPECT_EQ(loaded.parts().big.bytesLeft(), 0u);
  EXPECT_EQ(loaded.file().open("b")->blocks.size(), 0u);
}

}  // namespace
}  // namespace tarn::test
