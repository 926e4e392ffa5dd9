#include "archive/msg/StorageFile.h"

#include <gtest/gtest.h>

#include "archive/msg/StorageStream.h"
#include "support/TempDirectory.h"
#include "support/compound/CompoundBuilder.h"

namespace tarn::archive::msg {
namespace {

using test::CompoundBuilder;
using test::CompoundImage;
using test::CompoundOptions;
using test::RecordSize;
using test::RecordStart;

std::unique_ptr<StorageFile> FileOf(const CompoundImage& image) {
  return std::move(*StorageFile::OfBytes(image.bytes));
}

// Bytes that are different everywhere.
std::string Pattern(size_t size) {
  std::string bytes(size, '\0');
  for (size_t at = 0; at < size; ++at) bytes[at] = static_cast<char>((at * 2654435761u) >> 13);
  return bytes;
}

std::vector<std::string> NamesBelow(const StorageFile& file, EntryNumber storage) {
  std::vector<std::string> names;
  for (const EntryNumber entry : file.children(storage)) names.emplace_back(file.name(entry));
  return names;
}

// In pieces of a size that fits no block.
std::string ReadInPieces(StorageFile& file, EntryNumber stream) {
  std::string all;
  const auto source = std::move(*file.open(stream));
  std::array<char, 777> buffer;
  while (const size_t count = *source->read(buffer)) all.append(buffer.data(), count);
  return all;
}

CompoundBuilder Sample(const CompoundOptions& options) {
  CompoundBuilder builder(options);
  builder.stream("empty", "").stream("small", Pattern(4095)).stream("big", Pattern(70001));
  builder.storage("below").stream("tiny", "x").storage("deeper").stream("last", Pattern(300));
  return builder;
}

TEST(StorageFileTest, GivesWhatIsInEveryLayout) {
  for (const auto version : {test::CompoundVersion::V3, test::CompoundVersion::V4}) {
    for (const auto order : {test::BlockOrder::Ascending, test::BlockOrder::Descending,
                             test::BlockOrder::Interleaved}) {
      for (const auto shape : {test::SiblingShape::Balanced, test::SiblingShape::RightList,
                               test::SiblingShape::LeftList}) {
        const auto file =
            FileOf(Sample({.version = version, .shape = shape, .order = order}).image());
        EXPECT_EQ(NamesBelow(*file, kRootEntry),
                  (std::vector<std::string>{"big", "below", "empty", "small"}));
        const EntryNumber below = file->find(kRootEntry, "below").value();
        EXPECT_TRUE(file->isStorage(below));
        EXPECT_EQ(file->sizeOf(below), 0u);
        EXPECT_EQ(NamesBelow(*file, below), (std::vector<std::string>{"tiny", "deeper"}));
        EXPECT_EQ(ReadInPieces(*file, *file->find(kRootEntry, "big")), Pattern(70001));
        EXPECT_EQ(ReadInPieces(*file, *file->find(kRootEntry, "small")), Pattern(4095));
        EXPECT_EQ(*file->read(*file->find(kRootEntry, "empty"), 0), "");
        EXPECT_EQ(*file->read(*file->find(below, "tiny"), 1), "x");
        EXPECT_FALSE(file->find(below, "big").has_value());
        EXPECT_TRUE(file->children(*file->find(below, "tiny")).empty());
        EXPECT_FALSE(file->isDirectoryDamaged());
      }
    }
  }
}

TEST(StorageFileTest, OpensPaths) {
  const test::TempDirectory directory;
  const CompoundImage image = Sample({}).image();
  const auto path = directory.write("m\u00FCller.msg", image.bytes);
  const auto file = StorageFile::Open(path);
  ASSERT_TRUE(file.ok());
  EXPECT_EQ((*file)->size(), image.bytes.size());
  EXPECT_EQ(StorageFile::Open(directory.path() / "none").trouble().kind, TroubleKind::Unreadable);
  EXPECT_EQ(StorageFile::Open("/no\xFF").trouble().kind, TroubleKind::Unreadable);
}

TEST(StorageFileTest, TellsWhyAFileIsNone) {
  EXPECT_EQ(StorageFile::OfBytes("").trouble().kind, TroubleKind::Unsupported);
  EXPECT_EQ(StorageFile::OfBytes("From: ann").trouble().kind, TroubleKind::Unsupported);
  CompoundImage image = Sample({}).image();
  image.put(30, 1, 2);  // blocks of two bytes
  EXPECT_EQ(StorageFile::OfBytes(image.bytes).trouble().kind, TroubleKind::Damaged);
  EXPECT_EQ(StorageFile::OfBytes(image.bytes.substr(0, 512)).trouble().kind, TroubleKind::Damaged);
}

TEST(StorageFileTest, AStreamIsNoStorage) {
  const auto file = FileOf(Sample({}).image());
  const EntryNumber below = file->find(kRootEntry, "below").value();
  EXPECT_EQ(file->open(below).trouble().kind, TroubleKind::Missing);
  EXPECT_EQ(file->read(below, 10).trouble().kind, TroubleKind::Missing);
  EXPECT_EQ(file->read(*file->find(kRootEntry, "small"), 4094).trouble().kind,
            TroubleKind::TooLarge);
}

TEST(StorageFileTest, AChainThatEndsEarlyGivesItsBlocksAndThenATrouble) {
  for (const char* const name : {"big", "small"}) {
    CompoundImage image = Sample({}).image();
    const auto start = static_cast<uint32_t>(image.get(image.record(name) + RecordStart));
    const bool isBig = name == std::string("big");
    const size_t blockSize = isBig ? 512 : 64;
    image.put(isBig ? image.tableEntry(start + 1) : image.smallTableEntry(start + 1), 0xFFFFFFFE);
    const auto file = FileOf(image);
    const auto source = std::move(*file->open(*file->find(kRootEntry, name)));
    std::string bytes(5000, '\0');
    EXPECT_EQ(*source->read(bytes), 2 * blockSize) << name;
    EXPECT_EQ(bytes.substr(0, 2 * blockSize), Pattern(2 * blockSize));
    EXPECT_EQ(source->read(bytes).trouble().reason, "blocks of the file are missing");
  }
}

TEST(StorageFileTest, SmallBlocksBeyondTheirContainerAreMissing) {
  CompoundImage image = Sample({}).image();
  image.put(image.tableEntry(image.containerBlocks[2]), 0xFFFFFFFE);
  const auto file = FileOf(image);
  const EntryNumber small = *file->find(kRootEntry, "small");
  EXPECT_EQ(file->read(small, 5000).trouble().kind, TroubleKind::Damaged);
}

TEST(StorageFileTest, AFileThatIsCutOffGivesWhatIsLeft) {
  CompoundImage image = CompoundBuilder().stream("big", Pattern(70001)).image();
  // The stream's blocks come first; without one, the others have their places.
  const auto start = static_cast<uint32_t>(image.get(image.record("big") + RecordStart));
  image.put(image.tableEntry(start + 9), image.bytes.size() / 512 + 5);
  const auto file = FileOf(image);
  const auto source = std::move(*file->open(*file->find(kRootEntry, "big")));
  std::string bytes(80000, '\0');
  EXPECT_EQ(*source->read(bytes), 10u * 512);
  EXPECT_EQ(source->read(bytes).trouble().kind, TroubleKind::Damaged);
}

TEST(StorageFileTest, AnEntryBelongsToTheStorageThatCameFirst) {
  CompoundImage image = Sample({}).image();
  // The inner storage has the root's children again.
  const uint64_t child = image.get(image.record("") + test::RecordChild);
  image.put(image.record("below/deeper") + test::RecordChild, child);
  const auto file = FileOf(image);
  EXPECT_TRUE(file->isDirectoryDamaged());
  EXPECT_EQ(file->children(kRootEntry).size(), 4u);
  const EntryNumber below = file->find(kRootEntry, "below").value();
  EXPECT_TRUE(file->children(*file->find(below, "deeper")).empty());
}

TEST(StorageFileTest, LinksOfADamagedDirectoryEnd) {
  for (const uint64_t link : {uint64_t{0}, uint64_t{4711}}) {
    for (const size_t field : {test::RecordLeft, test::RecordRight}) {
      CompoundImage image = Sample({.shape = test::SiblingShape::RightList}).image();
      image.put(image.record("small") + field, link);
      const auto file = FileOf(image);
      EXPECT_TRUE(file->isDirectoryDamaged());
      EXPECT_EQ(file->children(kRootEntry).size(), 4u);
    }
  }
}

TEST(StorageFileTest, StreamsTogetherGiveNoMoreThanTwiceTheFile) {
  // Many streams that all claim the same blocks.
  CompoundBuilder builder;
  builder.stream("00", Pattern(3000000));
  for (int at = 1; at < 10; ++at) builder.stream("0" + std::to_string(at), Pattern(4096));
  CompoundImage image = builder.image();
  const uint64_t start = image.get(image.record("00") + RecordStart);
  for (int at = 1; at < 10; ++at) {
    const size_t record = image.record("0" + std::to_string(at));
    image.put(record + RecordStart, start);
    image.put(record + RecordSize, 3000000);
  }
  const auto file = FileOf(image);
  uint64_t total = 0;
  size_t refused = 0;
  for (const EntryNumber entry : file->children(kRootEntry)) {
    const auto bytes = file->read(entry, 4000000);
    if (bytes) {
      total += bytes->size();
    } else {
      EXPECT_EQ(bytes.trouble().kind, TroubleKind::Damaged);
      ++refused;
    }
  }
  EXPECT_EQ(total, 6000000u);
  EXPECT_EQ(refused, 8u);
}

TEST(StorageFileTest, GivesRecordsAsTheyAre) {
  const CompoundImage image = Sample({}).image();
  const auto file = FileOf(image);
  for (const char* const path : {"big", "below"}) {
    const EntryRecord record = *file->record(*file->find(kRootEntry, path));
    EXPECT_EQ(std::string(record.begin(), record.end()),
              image.bytes.substr(image.record(path), 128));
  }
}

}  // namespace
}  // namespace tarn::archive::msg
