#include "archive/msg/StorageCopy.h"

#include <gtest/gtest.h>

#include "compound/CompoundFile.h"
#include "support/compound/CompoundBuilder.h"

namespace tarn::archive::msg {
namespace {

using test::CompoundBuilder;
using test::CompoundFolder;
using test::CompoundImage;

std::string Pattern(size_t size) {
  std::string bytes(size, '\0');
  for (size_t at = 0; at < size; ++at) bytes[at] = static_cast<char>((at * 2654435761u) >> 13);
  return bytes;
}

// Everything below a storage: "name/" for storages, "name:bytes" for streams, in order.
std::string Contents(StorageFile& file, EntryNumber storage) {
  std::string text;
  for (const EntryNumber entry : file.children(storage)) {
    text += file.name(entry);
    if (file.isStorage(entry)) {
      text += "/(" + Contents(file, entry) + ")";
    } else {
      text += ":" + *file.read(entry, 100000000) + ";";
    }
  }
  return text;
}

struct Copy {
  std::string original;
  std::string copied;
  std::string bytes;
};

// Of the storage "object" of a file.
Copy CopyOf(const CompoundBuilder& builder) {
  const auto file = std::move(*StorageFile::OfBytes(builder.write()));
  const EntryNumber object = file->find(kRootEntry, "object").value();
  Copy copy;
  copy.original = Contents(*file, object);
  copy.bytes = *ReadAll(**CopyStorage(*file, object), 100000000);
  const auto again = StorageFile::OfBytes(copy.bytes);
  EXPECT_TRUE(again.ok());
  if (!again) return copy;
  EXPECT_FALSE((*again)->isDirectoryDamaged());
  copy.copied = Contents(**again, kRootEntry);
  return copy;
}

TEST(StorageCopyTest, AnEmptyStorageIsAnEmptyFile) {
  CompoundBuilder builder;
  builder.stream("other", "x").storage("object");
  const Copy copy = CopyOf(builder);
  EXPECT_EQ(copy.copied, "");
  EXPECT_EQ(copy.bytes.size(), 3u * 512);
}

TEST(StorageCopyTest, HoldsStreamsOfEverySize) {
  CompoundBuilder builder;
  CompoundFolder& object = builder.storage("object");
  for (const int size : {0, 1, 63, 64, 65, 511, 512, 513, 4095, 4096, 4097, 70000}) {
    object.stream("s" + std::to_string(size), Pattern(static_cast<size_t>(size)));
  }
  object.storage("below").stream("inner", Pattern(777)).storage("deeper").stream("z", "end");
  object.storage("\x03of");
  const Copy copy = CopyOf(builder);
  EXPECT_EQ(copy.copied, copy.original);
  EXPECT_NE(copy.copied.find("below/(inner:"), copy.copied.npos);
}

TEST(StorageCopyTest, HoldsManyEntries) {
  CompoundBuilder builder;
  CompoundFolder& object = builder.storage("object");
  for (int at = 0; at < 300; ++at) {
    object.stream("stream" + std::to_string(at), std::to_string(at));
  }
  const Copy copy = CopyOf(builder);
  EXPECT_EQ(copy.copied, copy.original);
  // Readers that search the tree by names find each of them.
  const auto file = std::move(*StorageFile::OfBytes(copy.bytes));
  for (const EntryNumber entry : file->children(kRootEntry)) {
    EXPECT_EQ(*file->read(entry, 10), std::string(file->name(entry).substr(6)));
  }
}

TEST(StorageCopyTest, TablesThatTheHeaderCannotHoldHaveBlocksOfTheirOwn) {
  CompoundBuilder builder;
  // More than 109 blocks of the table name.
  builder.storage("object").stream("big", Pattern(8000000)).stream("small", "x");
  const Copy copy = CopyOf(builder);
  EXPECT_TRUE(copy.copied == copy.original);
  EXPECT_EQ(copy.bytes.substr(72, 4), std::string("\x01\0\0\0", 4));
}

TEST(StorageCopyTest, KeepsClassIdsAndNamesTheRoot) {
  const std::array<unsigned char, 16> id = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
  CompoundBuilder builder;
  builder.storage("object").classId(id).storage("inner").classId(id);
  const Copy copy = CopyOf(builder);
  const auto file = std::move(*StorageFile::OfBytes(copy.bytes));
  const EntryRecord root = *file->record(kRootEntry);
  EXPECT_TRUE(std::equal(id.begin(), id.end(), root.begin() + test::RecordClassId));
  EXPECT_EQ(root[test::RecordType], 5);
  EXPECT_EQ(std::string(root.begin(), root.begin() + 6), std::string("R\0o\0o\0", 6));
  EXPECT_EQ(root[test::RecordNameSize], 22);
  const EntryRecord inner = *file->record(*file->find(kRootEntry, "inner"));
  EXPECT_TRUE(std::equal(id.begin(), id.end(), inner.begin() + test::RecordClassId));
}

TEST(StorageCopyTest, ReadsInPiecesOfAnySize) {
  CompoundBuilder builder;
  builder.storage("object").stream("a", Pattern(100)).stream("b", Pattern(5000));
  const auto file = std::move(*StorageFile::OfBytes(builder.write()));
  const EntryNumber object = file->find(kRootEntry, "object").value();
  const std::string whole = *ReadAll(**CopyStorage(*file, object), 100000);
  for (const size_t size : {size_t{1}, size_t{7}, size_t{100}, size_t{513}}) {
    const auto source = std::move(*CopyStorage(*file, object));
    std::string all;
    std::string buffer(size, '\0');
    while (const size_t count = *source->read(buffer)) all += buffer.substr(0, count);
    EXPECT_TRUE(all == whole) << size;
  }
}

TEST(StorageCopyTest, AStreamThatIsDamagedEndsTheCopy) {
  CompoundBuilder builder;
  builder.storage("object").stream("big", Pattern(70000));
  CompoundImage image = builder.image();
  const auto start =
      static_cast<uint32_t>(image.get(image.record("object/big") + test::RecordStart));
  image.put(image.tableEntry(start + 1), 0xFFFFFFFE);
  auto file = std::move(*StorageFile::OfBytes(image.bytes));
  const EntryNumber object = file->find(kRootEntry, "object").value();
  const auto source = std::move(*CopyStorage(*file, object));
  EXPECT_EQ(ReadAll(*source, 100000).trouble().kind, TroubleKind::Damaged);

  image.put(image.record("object/big") + test::RecordSize, 0x7FFFFFFF);
  file = std::move(*StorageFile::OfBytes(image.bytes));
  EXPECT_EQ(CopyStorage(*file, object).trouble().reason,
            "a stream of the object is larger than the file");
}

TEST(StorageCopyTest, StreamsThatAreRefusedEndTheCopy) {
  CompoundBuilder builder;
  builder.storage("object").stream("0", Pattern(3000000)).stream("1", Pattern(4096));
  for (const char* const name : {"2", "3", "4"}) builder.at("object").stream(name, Pattern(4096));
  CompoundImage image = builder.image();
  for (const char* const name : {"object/1", "object/2", "object/3", "object/4"}) {
    image.put(image.record(name) + test::RecordStart,
              image.get(image.record("object/0") + test::RecordStart));
    image.put(image.record(name) + test::RecordSize, 3000000);
  }
  const auto file = std::move(*StorageFile::OfBytes(image.bytes));
  const auto source = std::move(*CopyStorage(*file, *file->find(kRootEntry, "object")));
  EXPECT_EQ(ReadAll(*source, 100000000).trouble().reason,
            "the streams of the file are larger than the file");
}

}  // namespace
}  // namespace tarn::archive::msg
