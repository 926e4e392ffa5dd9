// Damaged files: everything in them is listed and read, within bounds, and nothing outside of the
// file's own bytes and zeros comes out.

#include <gtest/gtest.h>

#include "CompoundFiles.h"
#include "support/compound/CompoundBuilder.h"

namespace tarn::test {
namespace {

constexpr uint64_t kMostEntries = 2000;  // that one walk looks at
constexpr int kDeepest = 12;

struct Walk {
  uint64_t entries = 0;
  uint64_t bytes = 0;
  std::string text;
};

void ReadBelow(LoadedFile& file, const std::string& path, int depth, Walk& walk) {
  for (const KernelString& name : ListEntryNames(file.storage(), path)) {
    if (++walk.entries > kMostEntries) return;
    const std::string child = path + std::string(name);
    std::optional<CompoundStream> stream = file.file().open(child);
    if (stream) {
      const uint64_t size = std::min<uint64_t>(stream->size(), 100000);
      std::string buffer(size + 1, '?');
      const uint64_t read = StreamRead(*stream, 0, Room(buffer).first(size));
      ASSERT_LE(read, size);
      ASSERT_EQ(buffer[read], '?');
      walk.bytes += read;
      walk.text += child + "=" + buffer.substr(0, read) + "\n";
    } else if (depth < kDeepest) {
      ReadBelow(file, child + "/", depth + 1, walk);
    }
  }
}

// Loads a file and reads all that it has.
Walk ReadAll(std::string_view bytes) {
  LoadedFile file(bytes);
  EXPECT_LE(file.file().result(), CompoundDamaged);
  EXPECT_EQ(file.file().isOpened(), file.file().result() == CompoundOk);
  Walk walk;
  if (file.file().isOpened()) ReadBelow(file, "/", 0, walk);
  return walk;
}

CompoundImage SmallFile(uint32_t bigShift) {
  CompoundOptions options;
  options.bigShift = bigShift;
  CompoundBuilder builder(options);
  builder.stream("big", Pattern(4500)).stream("small", Pattern(150)).stream("empty", "");
  builder.storage("folder").stream("inner", Pattern(70)).stream("z", "zz");
  return builder.image();
}

// Each byte of a part in turn, with all bits turned, one bit turned, and as 0, 1 and FF.
void DamageEach(const CompoundImage& image, size_t first, size_t count) {
  for (size_t i = first; i < first + count; ++i) {
    const auto old = static_cast<unsigned char>(image.bytes[i]);
    for (const unsigned value : {old ^ 0xFFu, old ^ 1u, old ^ 0x80u, 0u, 1u, 0xFFu}) {
      if (value == old) continue;
      CompoundImage damaged = image;
      damaged.put(i, value, 1);
      ReadAll(damaged.bytes);
      ASSERT_FALSE(testing::Test::HasFailure()) << i << " " << value;
    }
  }
}

TEST(Damage, TheFileItselfIsReadWhole) {
  for (const uint32_t shift : {7u, 9u, 12u}) {
    const Walk walk = ReadAll(SmallFile(shift).bytes);
    EXPECT_EQ(walk.entries, 6u);
    EXPECT_EQ(walk.bytes, 4500u + 150 + 70 + 2);
  }
}

TEST(Damage, EveryByteOfTheHeader) {
  DamageEach(SmallFile(9), 0, 76 + 8);
  DamageEach(SmallFile(9), 500, 12);
}

TEST(Damage, EveryByteOfTheTables) {
  const CompoundImage image = SmallFile(9);
  DamageEach(image, image.block(image.tableBlocks[0]), 80);
  DamageEach(image, image.block(image.smallTableBlocks[0]), 32);
}

TEST(Damage, EveryByteOfTheDirectory) {
  const CompoundImage image = SmallFile(9);
  for (const uint32_t block : image.directoryBlocks) DamageEach(image, image.block(block), 512);
}

TEST(Damage, EveryLength) {
  const std::string bytes = SmallFile(9).bytes;
  for (size_t length = 0; length < bytes.size(); ++length) {
    ReadAll(std::string_view(bytes).substr(0, length));
    ASSERT_FALSE(HasFailure()) << length;
  }
}

TEST(Damage, EveryLinkOfTheDirectoryToEveryEntry) {
  const CompoundImage image = SmallFile(9);
  const auto entries = static_cast<uint32_t>(image.entries.size());
  for (uint32_t entry = 0; entry < entries; ++entry) {
    for (const size_t field : {RecordLeft, RecordRight, RecordChild, RecordStart}) {
      for (uint32_t to = 0; to <= entries; ++to) {
        CompoundImage damaged = image;
        damaged.put(damaged.record(entry) + field, to);
        ReadAll(damaged.bytes);
        ASSERT_FALSE(HasFailure()) << entry << " " << field << " " << to;
      }
    }
  }
}

TEST(Damage, EveryEntryOfTheTableToEveryBlock) {
  const CompoundImage image = SmallFile(9);
  const auto blocks = static_cast<uint32_t>(image.bytes.size() / 512 - 1);
  for (uint32_t from = 0; from < blocks; ++from) {
    for (uint32_t to = 0; to <= blocks; ++to) {
      CompoundImage damaged = image;
      damaged.put(damaged.tableEntry(from), to);
      ReadAll(damaged.bytes);
      ASSERT_FALSE(HasFailure()) << from << " " << to;
    }
  }
}

// Bounds --------------------------------------------------------------------------------------

// Whatever shape the tree has, each search takes a few steps.
TEST(Bounds, ManyRecordsInAFile) {
  constexpr uint32_t kRecords = 20000;
  for (const SiblingShape shape :
       {SiblingShape::Balanced, SiblingShape::RightList, SiblingShape::LeftList}) {
    CompoundOptions options;
    options.shape = shape;
    CompoundBuilder builder(options);
    for (uint32_t i = 0; i < kRecords; ++i) builder.stream(std::to_string(1000000 + i), "");
    LoadedFile file(builder.write());
    ASSERT_EQ(file.file().result(), CompoundOk);
    EXPECT_EQ(ListEntryNames(file.storage(), "/").size(), kRecords);
    const DirectoryTree& tree = file.parts().directory;
    const uint64_t before = tree.stepsLeft();
    for (uint32_t i = 0; i < kRecords; ++i) {
      ASSERT_TRUE(file.has(std::to_string(1000000 + i)));
    }
    EXPECT_LT(before - tree.stepsLeft(), 24u * kRecords);
    EXPECT_LE(tree.searchIndex().looks(), 2u * kRecords);
  }
}

TEST(Bounds, ManyStreamsThatClaimTheSameLongChain) {
  constexpr uint32_t kBlocks = 2000;
  constexpr uint32_t kStreams = 3000;
  CompoundBuilder builder;
  builder.stream("long", Pattern(512 * kBlocks));
  for (uint32_t i = 0; i < kStreams; ++i) builder.stream("s" + std::to_string(i), "x");
  CompoundImage image = builder.image();
  const uint64_t start = image.get(image.record("long") + RecordStart);
  for (uint32_t i = 0; i < kStreams; ++i) {
    const size_t record = image.record("s" + std::to_string(i));
    image.put(record + RecordStart, start);
    image.put(record + RecordSize, 512 * kBlocks);
  }
  LoadedFile file(image.bytes);
  const uint64_t budget = file.parts().big.bytesLeft();
  std::string buffer(512 * kBlocks, '?');
  uint64_t read = 0;
  uint64_t blocks = 0;
  for (uint32_t i = 0; i < kStreams; ++i) {
    std::optional<CompoundStream> stream = file.file().open("s" + std::to_string(i));
    ASSERT_TRUE(stream.has_value());
    blocks += stream->blocks.size();
    read += StreamRead(*stream, 0, Room(buffer));
  }
  EXPECT_EQ(file.parts().big.bytesLeft(), 0u);
  EXPECT_LE(read + 8 * blocks, budget);
  EXPECT_GT(read, budget / 2);
}

TEST(Bounds, AFileReadsAHundredTimesOverWhatItHolds) {
  // What programs do to sound files stays far below the bound.
  const std::string bytes = SmallFile(9).bytes;
  const std::string big = Pattern(4500);
  LoadedFile file(bytes);
  for (uint64_t read = 0; read < 100 * bytes.size(); read += big.size()) {
    ASSERT_EQ(file.stream("big"), big);
  }
  EXPECT_NE(file.parts().big.bytesLeft(), 0u);
}

}  // namespace
}  // namespace tarn::test
