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
  const auto& entries = made.parts().directory.entries();
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
  const auto& entries = made.parts().directory.entries();
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
  EXPECT_FALSE(made.file().open("two"));
  EXPECT_EQ(made.parts().directory.entries().size(), 2u);
  EXPECT_TRUE(made.file().openOrMake("two"));
  EXPECT_EQ(made.parts().directory.entries().size(), 3u);
}

// A directory that was loaded: places of invalid entries are taken, and odd links are kept.
class LoadedTree {
 public:
  // The root and these, whose first is its child.
  explicit LoadedTree(std::initializer_list<std::string_view> names)
      : was(DirectoryTree().entries()) {
    for (const std::string_view name : names) {
      DirectoryEntry& entry = was.emplace_back();
      entry.valid = true;
      entry.name = name;
    }
    was[0].child = 1;
  }
  void load() {
    made_.parts().directory = DirectoryTree(was);
    made_.marks().directory.clear();
  }
  const DirectoryTree::Entries& entries() { return made_.parts().directory.entries(); }
  const BlockMarks& marks() { return made_.marks().directory; }
  int64_t create(std::string_view path) {
    const DirectoryEntry* const entry = FindEntry(made_.file(), path, true);
    return entry == nullptr ? -1 : entry - entries().data();
  }

  DirectoryTree::Entries was;  // that load() takes

 private:
  NewFile made_;
};

TEST(Entries, TakeTheFirstInvalidPlace) {
  LoadedTree loaded({"b", "x", "y", "c"});
  loaded.was[1].next = 4;
  loaded.was[2].valid = loaded.was[3].valid = false;
  loaded.was[2].prev = loaded.was[2].next = loaded.was[2].child = 1;
  loaded.was[2].size = 7;
  loaded.load();
  const DirectoryTree::Entries& entries = loaded.entries();
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
  LoadedTree loaded({"m"});
  loaded.was[1].prev = 0;
  loaded.was[1].next = 99;
  loaded.load();
  const DirectoryTree::Entries& entries = loaded.entries();
  EXPECT_EQ(loaded.create("z"), 2);
  EXPECT_EQ(entries[1].next, 2u);
  EXPECT_EQ(entries[2].prev, 99u);  // what the link was before
  EXPECT_EQ(entries[2].next, kFree);
  EXPECT_EQ(loaded.create("a"), 3);
  EXPECT_EQ(entries[1].prev, 3u);
  EXPECT_EQ(entries[3].next, 0u);
  EXPECT_EQ(entries[3].prev, kFree);
  EXPECT_TRUE(loaded.marks().contains(0));
}

TEST(Entries, WithoutAClosestOneTheyBecomeTheFirstChild) {
  LoadedTree loaded({"m"});
  loaded.was[1].valid = false;
  loaded.load();
  const DirectoryTree::Entries& entries = loaded.entries();
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
  made.parts().writable = false;
  EXPECT_EQ(FindEntry(made.file(), "a", true), nullptr);
  made.parts().writable = true;
  EXPECT_EQ(FindEntry(made.parts().directory, "a"), nullptr);
  EXPECT_EQ(FindEntry(made.file(), "a", false), nullptr);
  EXPECT_EQ(FindEntry(made.file(), "", true), nullptr);
  made.parts().directory = DirectoryTree(DirectoryTree::Entries());
  EXPECT_EQ(FindEntry(made.file(), "a", true), nullptr);
  EXPECT_EQ(made.parts().directory.entries().size(), 0u);
}

TEST(Entries, TheDirectoryGrowsByABlockForEveryFour) {
  NewFile made;
  CompoundFile& file = made.file();
  for (const char* name : {"a", "b", "c"}) FindEntry(file, name, true);
  EXPECT_EQ(PartsOf(file).bigTable.entries[1], kEnd);
  FindEntry(file, "d", true);
  EXPECT_EQ(PartsOf(file).bigTable.entries[1], 4u);
  EXPECT_EQ(PartsOf(file).bigTable.entries[4], kEnd);
  EXPECT_TRUE(WriterOf(file).marks().directory.contains(1));
}

TEST(Entries, ManyInOrderFollowNoLinks) {
  constexpr uint64_t kMany = 20000;
  NewFile made;
  CompoundFile& file = made.file();
  const uint64_t before = PartsOf(file).directory.stepsLeft();
  for (uint64_t i = 0; i < kMany; ++i) {
    const std::string name = std::to_string(100000 + i);
    ASSERT_NE(FindEntry(file, name, true), nullptr);
  }
  for (uint64_t i = 1; i < kMany; ++i) ASSERT_EQ(PartsOf(file).directory.entries()[i].next, i + 1);
  EXPECT_EQ(ListEntryNames(made.storage(), "/").size(), kMany);
  EXPECT_EQ(PartsOf(file).directory.stepsLeft(), before);
}

}  // namespace
}  // namespace tarn::test
