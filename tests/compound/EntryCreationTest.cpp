// Entries that FindEntry makes.

#include <gtest/gtest.h>

#include "CompoundFiles.h"

namespace tarn::test {
namespace {

constexpr uint32_t kEnd = 0xFFFFFFFE;
constexpr uint32_t kFree = 0xFFFFFFFF;

TEST(Entries, HangBelowTheClosestOne) {
  NewFile made;
  for (const char* name : {"m", "f", "t", "c", "ff", "a"}) made.append(name, "x");
  const auto& entries = made.file().directory.entries;
  ASSERT_EQ(entries.size(), 7u);
  EXPECT_EQ(entries[0].child, 1u);
  EXPECT_EQ(entries[1].prev, 2u);  // m -> f
  EXPECT_EQ(entries[1].next, 3u);  // m -> t
  EXPECT_EQ(entries[2].prev, 4u);  // f -> c
  EXPECT_EQ(entries[2].next, kFree);
  EXPECT_EQ(entries[3].next, 5u);  // t -> ff
  EXPECT_EQ(entries[4].prev, 6u);  // c -> a
}

TEST(Entries, StoragesComeIntoBeingOnTheWay) {
  NewFile made;
  made.append("/one/two/three/", "text");
  const auto& entries = made.file().directory.entries;
  ASSERT_EQ(entries.size(), 4u);
  EXPECT_TRUE(entries[1].isDirectory);
  EXPECT_TRUE(entries[2].isDirectory);
  EXPECT_FALSE(entries[3].isDirectory);
  EXPECT_EQ(entries[1].child, 2u);
  EXPECT_EQ(entries[2].child, 3u);
  EXPECT_EQ(entries[1].start, kEnd);
  made.flush();
  LoadedFile file(made.end());
  EXPECT_EQ(file.stream("one/two/three"), "text");
  EXPECT_EQ(file.names("/one"), "two");
}

TEST(Entries, OpeningAStreamMakesNoneUnlessToldSo) {
  NewFile made;
  made.append("one", "x");
  EXPECT_FALSE(OpenStream(made.storage(), "two"));
  EXPECT_EQ(made.file().directory.entries.size(), 2u);
  EXPECT_TRUE(OpenStream(made.storage(), "two", true));
  EXPECT_EQ(made.file().directory.entries.size(), 3u);
}

// A directory that was loaded: places of invalid entries are taken, and odd links are kept.
class LoadedTree {
 public:
  LoadedTree() : made_() {
    tree().isIndexed = false;
    tree().dirtyBlocks.clear();
  }
  DirectoryTree& tree() { return made_.file().directory; }
  DirectoryEntry& add(std::string_view name) {
    DirectoryEntry& entry = tree().entries.emplace_back();
    entry.valid = true;
    entry.name = name;
    return entry;
  }
  int64_t create(std::string_view path) {
    const DirectoryEntry* const entry = FindEntry(tree(), path, true, 512, &made_.file());
    return entry == nullptr ? -1 : entry - tree().entries.data();
  }

 private:
  NewFile made_;
};

TEST(Entries, TakeTheFirstInvalidPlace) {
  LoadedTree loaded;
  for (const char* name : {"b", "x", "y", "c"}) loaded.add(name);
  auto& entries = loaded.tree().entries;
  entries[0].child = 1;
  entries[1].next = 4;
  entries[2].valid = entries[3].valid = false;
  entries[2].prev = entries[2].next = entries[2].child = 1;
  entries[2].size = 7;
  EXPECT_EQ(loaded.create("a"), 2);
  EXPECT_EQ(entries[1].prev, 2u);
  EXPECT_EQ(std::string_view(entries[2].name), "a");
  EXPECT_TRUE(entries[2].valid);
  EXPECT_FALSE(entries[2].isDirectory);
  EXPECT_EQ(entries[2].prev, kFree);
  EXPECT_EQ(entries[2].next, kFree);
  EXPECT_EQ(entries[2].child, kFree);
  EXPECT_EQ(entries[2].size, 0u);
  EXPECT_EQ(entries[2].start, kEnd);
  EXPECT_EQ(loaded.create("d"), 3);
  EXPECT_EQ(entries[4].next, 3u);
  EXPECT_EQ(loaded.create("e"), 5);
  EXPECT_EQ(loaded.create("a"), 2);
}

TEST(Entries, TakeOverTheLinkOfTheClosestOne) {
  LoadedTree loaded;
  loaded.add("m").prev = 0;
  auto& entries = loaded.tree().entries;
  entries[1].next = 99;
  entries[0].child = 1;
  EXPECT_EQ(loaded.create("z"), 2);
  EXPECT_EQ(entries[1].next, 2u);
  EXPECT_EQ(entries[2].prev, 99u);  // what stood at the link before
  EXPECT_EQ(entries[2].next, kFree);
  EXPECT_EQ(loaded.create("a"), 3);
  EXPECT_EQ(entries[1].prev, 3u);
  EXPECT_EQ(entries[3].next, 0u);
  EXPECT_EQ(entries[3].prev, kFree);
  EXPECT_TRUE(loaded.tree().dirtyBlocks.contains(0));
}

TEST(Entries, WithoutAClosestOneTheyBecomeTheFirstChild) {
  LoadedTree loaded;
  loaded.add("m");
  auto& entries = loaded.tree().entries;
  entries[0].child = 1;
  entries[1].valid = false;
  // The place of the invalid child is taken, and its link is to itself.
  EXPECT_EQ(loaded.create("a"), 1);
  EXPECT_EQ(entries[0].child, 1u);
  EXPECT_EQ(entries[1].prev, kFree);
  EXPECT_EQ(entries[1].next, 1u);
  EXPECT_EQ(loaded.create("a"), 1);
  EXPECT_EQ(loaded.create("A"), 2);
}

TEST(Entries, AreMadeInWritableFilesOnly) {
  NewFile made;
  made.file().writable = false;
  EXPECT_EQ(FindEntry(made.file().directory, "a", true, 512, &made.file()), nullptr);
  made.file().writable = true;
  EXPECT_EQ(FindEntry(made.file().directory, "a", true, 512, nullptr), nullptr);
  EXPECT_EQ(FindEntry(made.file().directory, "a", false, 512, &made.file()), nullptr);
  EXPECT_EQ(FindEntry(made.file().directory, "", true, 512, &made.file()), nullptr);
  made.file().directory.entries.clear();
  EXPECT_EQ(FindEntry(made.file().directory, "a", true, 512, &made.file()), nullptr);
  EXPECT_EQ(made.file().directory.entries.size(), 0u);
}

TEST(Entries, TheDirectoryGrowsByABlockForEveryFour) {
  NewFile made;
  CompoundFile& file = made.file();
  for (const char* name : {"a", "b", "c"}) FindEntry(file.directory, name, true, 512, &file);
  EXPECT_EQ(file.bigTable.entries[1], kEnd);
  FindEntry(file.directory, "d", true, 512, &file);
  EXPECT_EQ(file.bigTable.entries[1], 4u);
  EXPECT_EQ(file.bigTable.entries[4], kEnd);
  EXPECT_TRUE(file.directory.dirtyBlocks.contains(1));
}

TEST(Entries, ManyInOrderFollowNoLinks) {
  constexpr uint64_t kMany = 20000;
  NewFile made;
  CompoundFile& file = made.file();
  const uint64_t before = file.directory.stepsLeft;
  for (uint64_t i = 0; i < kMany; ++i) {
    const std::string name = std::to_string(100000 + i);
    ASSERT_NE(FindEntry(file.directory, name, true, 512, &file), nullptr);
  }
  for (uint64_t i = 1; i < kMany; ++i) ASSERT_EQ(file.directory.entries[i].next, i + 1);
  EXPECT_EQ(ListEntryNames(made.storage(), "/").size(), kMany);
  EXPECT_EQ(file.directory.stepsLeft, before);
}

}  // namespace
}  // namespace tarn::test
