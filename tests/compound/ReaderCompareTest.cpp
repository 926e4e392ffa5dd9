// Sound and damaged files against a reader of the long way: the same result, the same tables and
// entries, and the same bytes of every stream.

#include <gtest/gtest.h>

#include <random>

#include "CompoundFiles.h"
#include "NaiveReader.h"
#include "support/compound/CompoundBuilder.h"

namespace tarn::test {
namespace {

std::string ReadPart(CompoundStream& stream, uint64_t position, uint64_t length) {
  std::string bytes(length, '?');
  const uint64_t read = StreamRead(stream, position, Room(bytes));
  EXPECT_LE(read, length);
  EXPECT_EQ(bytes.substr(read), std::string(length - read, '?'));
  return bytes.substr(0, read);
}

void CompareStream(CompoundFile& file, const NaiveReader& naive, size_t entry) {
  const NaiveReader::Entry& expected = naive.entries()[entry];
  CompoundStream stream(file, PartsOf(file).directory.entries()[entry]);
  for (const uint64_t position : {0u, 1u, 64u, 70u, 512u, 700u, 5000u}) {
    for (const uint64_t length : {1u, 65u, 600u, 9000u}) {
      ASSERT_EQ(ReadPart(stream, position, length), naive.read(expected, position, length))
          << "entry " << entry << " at " << position << " of " << length;
    }
  }
}

void Compare(const std::string& bytes) {
  const NaiveReader naive(bytes);
  LoadedFile loaded(bytes);
  CompoundFile& file = loaded.file();
  ASSERT_EQ(file.result(), naive.result());
  if (naive.result() != 0) return;
  ASSERT_EQ(List(PartsOf(file).bigTable.entries), naive.bigTable());
  ASSERT_EQ(List(PartsOf(file).smallTable.entries), naive.smallTable());
  ASSERT_EQ(List(PartsOf(file).small.container()), naive.container());
  ASSERT_EQ(PartsOf(file).directory.entries().size(), naive.entries().size());
  for (size_t i = 0; i < naive.entries().size(); ++i) {
    const DirectoryEntry& entry = PartsOf(file).directory.entries()[i];
    const NaiveReader::Entry& expected = naive.entries()[i];
    ASSERT_EQ(std::string_view(entry.name), expected.name);
    ASSERT_EQ(entry.valid, expected.valid);
    ASSERT_EQ(entry.isDirectory, expected.isDirectory);
    ASSERT_EQ(entry.size, expected.size);
    ASSERT_EQ(entry.start, expected.start);
    ASSERT_NO_FATAL_FAILURE(CompareStream(file, naive, i));
  }
  ASSERT_NE(PartsOf(file).big.bytesLeft(), 0u);
}

CompoundImage Sample(uint32_t bigShift, BlockOrder order) {
  CompoundOptions options;
  options.bigShift = bigShift;
  options.order = order;
  CompoundBuilder builder(options);
  builder.stream("big", Pattern(4500)).stream("bigger", Pattern(9000, 2));
  builder.stream("small", Pattern(150)).stream("edge", Pattern(1400, 5)).stream("none", "");
  builder.storage("folder").stream("inner", Pattern(70));
  return builder.image();
}

// A number that a table or a record may lead astray with.
uint64_t AnyNumber(std::mt19937& random, uint64_t blocks) {
  switch (random() % 6) {
    case 0:
      return 0xFFFFFFFF - random() % 4;
    case 1:
      return blocks + random() % 40;
    case 2:
      return random() % 10000;
    default:
      return random() % (blocks + 1);
  }
}

void Damage(CompoundImage& image, std::mt19937& random) {
  const auto blocks = static_cast<uint32_t>(image.bytes.size() / image.blockSize - 1);
  const auto entries = static_cast<uint32_t>(image.entries.size());
  const auto entry = static_cast<uint32_t>(random() % entries);
  const uint64_t number = AnyNumber(random, blocks);
  switch (random() % 7) {
    case 0:
    case 1: {
      const uint32_t tabled = std::min<uint32_t>(blocks + 20, 32);
      image.put(image.tableEntry(static_cast<uint32_t>(random() % tabled)), number);
      break;
    }
    case 2:
      image.put(image.smallTableEntry(static_cast<uint32_t>(random() % 32)), number);
      break;
    case 3:
      image.put(image.record(entry) + RecordStart, number);
      break;
    case 4:
      image.put(image.record(entry) + RecordSize, random() % 12000);
      break;
    case 5:
      image.put(48 + 12 * (random() % 2), number);  // where directory or small table begins
      break;
    default:
      image.put(random() % image.bytes.size(), random() % 256, 1);
      break;
  }
}

class Mutated : public ::testing::TestWithParam<uint32_t> {};

TEST_P(Mutated, IsReadTheSame) {
  for (const BlockOrder order :
       {BlockOrder::Ascending, BlockOrder::Descending, BlockOrder::Interleaved}) {
    const CompoundImage image = Sample(GetParam(), order);
    ASSERT_NO_FATAL_FAILURE(Compare(image.bytes));
    for (unsigned seed = 0; seed < 120; ++seed) {
      std::mt19937 random(seed);
      CompoundImage damaged = image;
      for (auto i = random() % 6 + 1; i-- > 0;) Damage(damaged, random);
      if (damaged.get(30, 2) > 13) damaged.put(30, 13, 2);  // large blocks have bounds of their own
      if (random() % 4 == 0) damaged.bytes.resize(random() % damaged.bytes.size());
      ASSERT_NO_FATAL_FAILURE(Compare(damaged.bytes)) << GetParam() << " " << seed;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Reader, Mutated, ::testing::Values(7u, 8u, 9u, 12u, 13u));

TEST(WholeChain, AReadGoesOnAfterBlocksWhereNothingIs) {
  // A container of two blocks holds small blocks 0 to 15.
  CompoundImage image = CompoundBuilder().stream("s", Pattern(900)).stream("t", "ab").image();
  image.put(image.record("t") + RecordStart, 17);
  image.put(image.smallTableEntry(17), 0);
  LoadedFile loaded(image.bytes);
  EXPECT_EQ(loaded.stream("t"), Pattern(900).substr(0, 2));
  ASSERT_NO_FATAL_FAILURE(Compare(image.bytes));
}

TEST(WholeChain, OfABigStreamToo) {
  CompoundImage image = CompoundBuilder().stream("b", Pattern(4608)).image();
  const auto first = static_cast<uint32_t>(image.get(image.record("b") + RecordStart));
  // Ten blocks after the end of the file, and then those of the stream.
  for (uint32_t i = 0; i < 10; ++i) image.put(image.tableEntry(100 + i), i < 9 ? 101 + i : first);
  image.put(image.record("b") + RecordStart, 100);
  EXPECT_EQ(LoadedFile(image.bytes).stream("b"), Pattern(4608));
  ASSERT_NO_FATAL_FAILURE(Compare(image.bytes));
}

TEST(MetaBlocks, OfManyShapesAreReadTheSame) {
  for (const uint32_t metaBlocks : {0u, 1u, 2u, 3u, 7u}) {
    for (const uint32_t tables : {108u, 109u, 110u, 111u, 237u}) {
      CompoundOptions options;
      options.freeBlocks = (tables - 1) * 128;
      CompoundImage image = CompoundBuilder(options).stream("b", Pattern(5000)).image();
      image.put(72, metaBlocks);
      ASSERT_NO_FATAL_FAILURE(Compare(image.bytes)) << metaBlocks << " " << tables;
    }
  }
}

}  // namespace
}  // namespace tarn::test
