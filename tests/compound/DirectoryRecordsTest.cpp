// The directory between its records and the tree in memory, on exact bytes.

#include <gtest/gtest.h>

#include "CompoundFiles.h"

namespace tarn::test {
namespace {

std::string Number(uint32_t value) {
  std::string bytes;
  for (int i = 0; i < 4; ++i) bytes.push_back(static_cast<char>(value >> (8 * i)));
  return bytes;
}

// A name of 64 bytes: each character and a zero byte.
std::string NameField(std::string_view name) {
  std::string bytes;
  for (const char c : name) bytes += {c, '\0'};
  bytes.resize(64, '\0');
  return bytes;
}

struct RecordFields {
  std::string nameField = std::string(64, '\0');
  uint16_t nameSize = 0;
  char type = 2;
  char colour = 1;
  uint32_t prev = 0xFFFFFFFF;
  uint32_t next = 0xFFFFFFFF;
  uint32_t child = 0xFFFFFFFF;
  std::string classId = std::string(16, '\0');
  uint32_t start = 0;
  uint32_t size = 0;
  uint32_t highSize = 0;
  std::string times = std::string(20, '\0');

  std::string bytes() const {
    return nameField + std::string{static_cast<char>(nameSize), static_cast<char>(nameSize >> 8)} +
           type + colour + Number(prev) + Number(next) + Number(child) + classId + times +
           Number(start) + Number(size) + Number(highSize);
  }
};

RecordFields Named(std::string_view name, char type = 2) {
  RecordFields record;
  record.nameField = NameField(name);
  record.nameSize = static_cast<uint16_t>(2 * name.size() + 2);
  record.type = type;
  return record;
}

DirectoryTree Load(std::string_view bytes) {
  DirectoryTree tree;
  LoadDirectory(tree, Bytes(bytes));
  return tree;
}

DirectoryEntry LoadOne(const RecordFields& record) {
  const std::string bytes = record.bytes();
  EXPECT_EQ(bytes.size(), 128u);
  return Load(bytes).entries().at(0);
}

std::string Save(DirectoryTree& tree) {
  const KernelVector<unsigned char> bytes = SaveDirectory(tree);
  return std::string(bytes.begin(), bytes.end());
}

TEST(NewDirectory, HoldsTheRoot) {
  const DirectoryTree tree;
  EXPECT_EQ(tree.rootKind, 0u);
  ASSERT_EQ(tree.entries().size(), 1u);
  const DirectoryEntry& root = tree.entries()[0];
  EXPECT_TRUE(root.valid);
  EXPECT_EQ(root.name, "Root Entry");
  EXPECT_TRUE(root.isDirectory);
  EXPECT_EQ(root.size, 0u);
  for (const uint64_t link : {root.start, root.prev, root.next, root.child}) {
    EXPECT_EQ(link, 0xFFFFFFFFu);
  }
  EXPECT_EQ(List(DirtyMarks().directory.numbers()), (std::vector<uint64_t>{0}));
}

TEST(LoadRecord, NumbersAreAtTheirOffsets) {
  RecordFields record = Named("abc");
  record.prev = 0x11121314;
  record.next = 0x21222324;
  record.child = 0x31323334;
  record.start = 0x41424344;
  record.size = 0xF1525354;
  record.highSize = 0x61626364;
  record.colour = 0;
  record.classId = std::string(16, 'c');
  record.times = std::string(20, 't');
  const DirectoryEntry entry = LoadOne(record);
  EXPECT_TRUE(entry.valid);
  EXPECT_EQ(entry.name, "abc");
  EXPECT_FALSE(entry.isDirectory);
  EXPECT_EQ(entry.prev, 0x11121314u);
  EXPECT_EQ(entry.next, 0x21222324u);
  EXPECT_EQ(entry.child, 0x31323334u);
  EXPECT_EQ(entry.start, 0x41424344u);
  EXPECT_EQ(entry.size, 0xF1525354u);  // the high size is not read
}

TEST(LoadRecord, TypesOneTwoAndFiveAreValid) {
  for (int type = 0; type < 256; ++type) {
    const DirectoryEntry entry = LoadOne(Named("n", static_cast<char>(type)));
    EXPECT_EQ(entry.valid, type == 1 || type == 2 || type == 5) << type;
    EXPECT_EQ(entry.isDirectory, type != 2) << type;
    EXPECT_EQ(entry.name, "n") << type;
  }
}

TEST(LoadRecord, ANameSizeOf0IsInvalidWhateverTheType) {
  for (const char type : {'\1', '\2', '\5'}) {
    RecordFields record = Named("name", type);
    record.nameSize = 0;
    const DirectoryEntry entry = LoadOne(record);
    EXPECT_FALSE(entry.valid);
    EXPECT_EQ(entry.name, "");
  }
}

TEST(LoadRecord, TheNameEndsAtItsSizeAndAtAZero) {
  RecordFields record = Named("abcdef");
  for (const auto& [size, name] : {std::pair<uint16_t, const char*>{1, "a"},
                                   {2, "a"},
                                   {3, "ab"},
                                   {6, "abc"},
                                   {14, "abcdef"},
                                   {64, "abcdef"},
                                   {65, "abcdef"},
                                   {0xFFFF, "abcdef"}}) {
    record.nameSize = size;
    EXPECT_EQ(LoadOne(record).name, name) << size;
    EXPECT_TRUE(LoadOne(record).valid);
  }
  record.nameField[4] = '\0';
  record.nameField[5] = '\x01';  // a character whose low byte is zero
  EXPECT_EQ(LoadOne(record).name, "ab");
}

TEST(LoadRecord, NamesOf32CharactersNeedNoTerminator) {
  const std::string_view name = "abcdefghijklmnopqrstuvwxyz012345";
  RecordFields record = Named(name);
  record.nameField = NameField(name);
  EXPECT_EQ(LoadOne(record).name, name);
  record.nameSize = 0xFFFF;
  EXPECT_EQ(LoadOne(record).name, name);
}

TEST(LoadRecord, HighBytesOfANameAreDropped) {
  RecordFields record = Named("ab");
  record.nameField[1] = '\x04';
  record.nameField[3] = '\xFF';
  EXPECT_EQ(LoadOne(record).name, "ab");
}

TEST(LoadRecord, AControlCharacterThatBeginsANameIsLeftOut) {
  EXPECT_EQ(LoadOne(Named("\x05SummaryInformation")).name, "SummaryInformation");
  EXPECT_EQ(LoadOne(Named("\x1F"
                          "x"))
                .name,
            "x");
  EXPECT_EQ(LoadOne(Named(" x")).name, " x");
  EXPECT_EQ(LoadOne(Named("\x80x")).name, "\x80x");
  EXPECT_EQ(LoadOne(Named("\x05")).name, "");
  EXPECT_TRUE(LoadOne(Named("\x05")).valid);
  EXPECT_EQ(LoadOne(Named("\x05\x06y")).name, "\x06y");
  EXPECT_EQ(LoadOne(Named("")).name, "");
  EXPECT_TRUE(LoadOne(Named("")).valid);
}

TEST(LoadRecords, InvalidOnesKeepTheirPlaceAndATailIsDropped) {
  const std::string bytes = Named("r", 5).bytes() + Named("x", 6).bytes() + Named("s", 1).bytes();
  DirectoryTree tree = Load(bytes + std::string(127, 'n'));
  ASSERT_EQ(tree.entries().size(), 3u);
  EXPECT_FALSE(tree.entries()[1].valid);
  EXPECT_EQ(tree.entries()[1].name, "x");
  EXPECT_EQ(tree.entries()[2].name, "s");
  LoadDirectory(tree, Bytes(bytes).first(128));
  EXPECT_EQ(tree.entries().size(), 1u);
  LoadDirectory(tree, {});
  EXPECT_TRUE(tree.entries().empty());
}

TEST(SaveRecords, TheRoot) {
  DirectoryTree::Entries entries(1);
  entries[0].child = 0x12345678;
  entries[0].name = "not this";
  entries[0].start = 3;
  entries[0].size = 4;
  entries[0].prev = 5;
  DirectoryTree tree(entries);
  RecordFields root = Named("Root Entry", 5);
  EXPECT_EQ(root.nameSize, 22);
  root.colour = 0;
  root.child = 0x12345678;
  root.start = 0xFFFFFFFF;
  EXPECT_EQ(Save(tree), root.bytes());

  const std::pair<uint32_t, std::string_view> kinds[] = {
      {1, std::string_view("\x06\x09\x02\0\0\0\0\0\xC0\0\0\0\0\0\0\x46", 16)},
      {2, std::string_view("\x06\x08\x02\0\0\0\0\0\xC0\0\0\0\0\0\0\x46", 16)},
      {3, std::string_view("\x10\x8D\x81\x64\x9B\x4F\xCF\x11\x86\xEA\0\xAA\0\xB9\x29\xE8", 16)},
      {4, std::string_view("\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 16)}};
  for (const auto& [kind, id] : kinds) {
    tree.rootKind = kind;
    root.classId = id;
    EXPECT_EQ(Save(tree), root.bytes()) << kind;
  }
}

TEST(SaveRecords, StreamsStoragesAndInvalidOnes) {
  DirectoryTree::Entries entries(4);
  DirectoryEntry& stream = entries[1];
  stream.valid = true;
  stream.name = "s\xE4";
  stream.isDirectory = false;
  stream.start = 0x0102030405;  // only the low 32 bits are written
  stream.size = 0x0A0B0C0D0E;
  stream.prev = 2;
  stream.next = 3;
  stream.child = 4;
  DirectoryEntry& storage = entries[2];
  storage.valid = true;
  storage.name = "st";
  storage.start = 7;
  storage.size = 8;
  entries[3].isDirectory = false;
  entries[3].name = "gone";
  entries[3].start = 9;
  DirectoryTree tree(entries);

  const std::string bytes = Save(tree);
  ASSERT_EQ(bytes.size(), 4 * 128u);
  RecordFields expected = Named("s\xE4");
  expected.start = 0x02030405;
  expected.size = 0x0B0C0D0E;
  expected.prev = 2;
  expected.next = 3;
  expected.child = 4;
  EXPECT_EQ(bytes.substr(128, 128), expected.bytes());
  RecordFields folder = Named("st", 1);
  folder.start = 0xFFFFFFFF;
  EXPECT_EQ(bytes.substr(256, 128), folder.bytes());
  EXPECT_EQ(tree.entries()[2].start, 0xFFFFFFFFu);
  EXPECT_EQ(tree.entries()[2].size, 0u);
  RecordFields invalid = Named("gone", 0);
  invalid.start = 9;
  EXPECT_EQ(bytes.substr(384, 128), invalid.bytes());
}

TEST(SaveRecords, NamesAreCutTo32Characters) {
  const std::string name = "0123456789012345678901234567890";
  for (const std::string more : {"", "1", "12"}) {
    DirectoryTree::Entries entries(2);
    entries[1].valid = true;
    entries[1].isDirectory = false;
    entries[1].name = name + more;
    entries[1].start = 0;
    DirectoryTree tree(entries);
    RecordFields expected = Named(name + more.substr(0, 1));
    EXPECT_EQ(expected.nameSize, more.empty() ? 64 : 66);
    EXPECT_EQ(Save(tree).substr(128), expected.bytes());
    EXPECT_EQ(std::string_view(tree.entries()[1].name), name + more);
  }
}

TEST(FlushDirectory, WritesTheMarkedBlocksAndTheLastOneInPart) {
  NewFile made;
  CompoundFile& file = made.file();
  const std::string old(512, '.');
  for (const uint64_t block : {4u, 5u, 6u}) SaveBigBlock(file, block, 0, Bytes(old));
  DirectoryTree::Entries entries(6);
  for (uint64_t i = 1; i < 6; ++i) entries[i].name = "e";
  DirectoryTree tree(entries);
  BlockMarks marks;
  MarkDirectoryDirty(marks, 5, 512);
  FlushDirectory(tree, marks, Blocks({5, 4, 6}), made.parts().big, {77, 88});
  EXPECT_TRUE(marks.empty());
  MarkDirectoryDirty(marks, 3, 512);
  EXPECT_TRUE(marks.contains(0));
  FlushDirectory(tree, marks, Blocks({6}), made.parts().big, {77, 88});
  const std::string bytes = made.end();

  RecordFields invalid = Named("e", 0);
  invalid.start = 0xFFFFFFFF;
  RecordFields root = Named("Root Entry", 5);
  root.colour = 0;
  root.start = 77;
  root.size = 88;
  EXPECT_EQ(bytes.substr(5 * 512, 512), invalid.bytes() + invalid.bytes() + std::string(256, '.'));
  EXPECT_EQ(bytes.substr(6 * 512, 512), old);
  EXPECT_EQ(bytes.substr(7 * 512, 512),
            root.bytes() + invalid.bytes() + invalid.bytes() + invalid.bytes());
}

TEST(FlushDirectory, AnEmptyOneWritesNothing) {
  NewFile made;
  DirectoryTree tree((DirectoryTree::Entries()));
  BlockMarks marks = DirtyMarks().directory;
  FlushDirectory(tree, marks, Blocks({4}), made.parts().big, {77, 88});
  EXPECT_EQ(made.end(), "");
}

}  // namespace
}  // namespace tarn::test
