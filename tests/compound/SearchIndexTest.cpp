// Searches in trees that are not balanced: the same answers as along the links, for less.

#include <gtest/gtest.h>

#include <random>

#include "CompoundFiles.h"
#include "Tarnbase/PlainKernel.h"
#include "support/FaultSweep.h"
#include "support/compound/CompoundBuilder.h"

namespace tarn::test {
namespace {

constexpr uint64_t kNone = 0xFFFFFFFF;

DirectoryEntry Entry(std::string_view name, uint64_t prev, uint64_t next) {
  DirectoryEntry entry;
  entry.valid = true;
  entry.name = name;
  entry.isDirectory = false;
  entry.prev = prev;
  entry.next = next;
  return entry;
}

// A tree without a file, as if it had been loaded.
DirectoryTree Loaded(uint64_t rootChild) {
  DirectoryTree tree;
  tree.isIndexed = false;
  tree.entries[0].child = rootChild;
  return tree;
}

// What following the links from the root's child on leads to, step by step.
uint64_t FollowLinks(const KernelVector<DirectoryEntry>& entries, std::string_view name) {
  uint64_t at = entries[0].child;
  for (uint64_t steps = 0; steps <= entries.size(); ++steps) {
    if (at >= entries.size() || !entries[at].valid) return kNone;
    const DirectoryEntry& node = entries[at];
    if (node.name == name) return at;
    const bool smaller = node.name.size() != name.size() ? node.name.size() < name.size()
                                                         : std::string_view(node.name) < name;
    at = smaller ? node.next : node.prev;
    if (at == 0) return kNone;
  }
  return kNone;
}

// Compares all answers for the root's children. False when the index does not take the root in.
bool AgreesWithTheLinks(const DirectoryTree& tree, const std::vector<std::string>& names) {
  SearchIndex index;
  index.add(tree.entries, 0);
  EXPECT_LE(index.looks(), 2 * tree.entries.size());
  uint64_t found = 0;
  if (!index.find(tree.entries, 0, "a", found)) return false;
  for (const std::string& name : names) {
    EXPECT_TRUE(index.find(tree.entries, 0, name, found));
    EXPECT_EQ(found, FollowLinks(tree.entries, name)) << name;
  }
  return true;
}

TEST(SearchIndex, AllTreesOfThree) {
  const std::vector<std::string> names = {"a", "b", "c", "d", "e", "f", "g", "Root Entry", ""};
  uint32_t taken = 0;
  for (uint32_t code = 0; code < 5 * 5 * 5 * 5 * 5 * 5; ++code) {
    uint64_t links[6];
    for (uint32_t i = 0, rest = code; i < 6; ++i, rest /= 5) {
      links[i] = rest % 5 == 4 ? kNone : rest % 5;
    }
    DirectoryTree tree = Loaded(1);
    for (size_t i = 0; i < 3; ++i) {
      const std::string name(1, static_cast<char>('b' + 2 * i));
      tree.entries.push_back(Entry(name, links[2 * i], links[2 * i + 1]));
    }
    taken += AgreesWithTheLinks(tree, names) ? 1 : 0;
    ASSERT_FALSE(HasFailure()) << code;
  }
  EXPECT_EQ(taken, 4668u);  // the others have circles
}

TEST(SearchIndex, RandomTrees) {
  std::mt19937 random(5);
  const auto anyName = [&random] {
    std::string name;
    for (auto size = random() % 3; size > 0; --size) {
      name += static_cast<char>('a' + random() % 4);
    }
    return name;
  };
  std::vector<std::string> names = {"Root Entry", "zzz"};
  for (int i = 0; i < 60; ++i) names.push_back(anyName());
  uint32_t taken = 0;
  for (int round = 0; round < 20000; ++round) {
    const uint64_t count = 2 + random() % 20;
    DirectoryTree tree = Loaded(random() % count);
    tree.entries[0].prev = random() % count;
    // Mostly trees: links lead on. Others lead anywhere.
    const auto link = [&](uint64_t from) -> uint64_t {
      if (random() % 3 == 0) return kNone;
      if (random() % 20 == 0) return random() % (count + 2);
      return from + 1 + random() % 4;
    };
    for (uint64_t i = 1; i < count; ++i) {
      tree.entries.push_back(Entry(anyName(), link(i), link(i)));
      tree.entries[i].valid = random() % 16 != 0;
    }
    taken += AgreesWithTheLinks(tree, names) ? 1 : 0;
    ASSERT_FALSE(HasFailure()) << round;
  }
  EXPECT_GT(taken, 15000u);
}

TEST(SearchIndex, AStorageThatWasNotTakenInIsUnknown) {
  DirectoryTree tree = Loaded(1);
  tree.entries.push_back(Entry("b", kNone, kNone));
  SearchIndex index;
  uint64_t found = 7;
  EXPECT_FALSE(index.find(tree.entries, 0, "b", found));
  index.add(tree.entries, 0);
  EXPECT_TRUE(index.find(tree.entries, 0, "b", found));
  EXPECT_EQ(found, 1u);
  EXPECT_FALSE(index.find(tree.entries, 1, "b", found));
  index.clear();
  EXPECT_FALSE(index.find(tree.entries, 0, "b", found));
}

// Searches of a file -----------------------------------------------------------------------------

constexpr uint64_t kMany = 20000;

std::string ManyName(uint64_t i) { return std::to_string(100000 + i); }

// So many streams of the root, in order from entry 1 on.
DirectoryTree ManyEntries(SiblingShape shape) {
  DirectoryTree tree = Loaded(shape == SiblingShape::LeftList ? kMany : 1);
  for (uint64_t i = 1; i <= kMany; ++i) {
    const bool left = shape == SiblingShape::LeftList;
    tree.entries.push_back(
        Entry(ManyName(i), left && i > 1 ? i - 1 : kNone, !left && i < kMany ? i + 1 : kNone));
  }
  return tree;
}

uint64_t StepsOf(const DirectoryTree& tree) { return DirectoryTree().stepsLeft - tree.stepsLeft; }

TEST(UnbalancedTree, AllAreFoundInStepsInProportionToTheirNumber) {
  for (const SiblingShape shape : {SiblingShape::RightList, SiblingShape::LeftList}) {
    DirectoryTree tree = ManyEntries(shape);
    for (uint64_t i = 1; i <= kMany; ++i) {
      ASSERT_EQ(FindEntry(tree, ManyName(i), false, 512, nullptr), &tree.entries[i]);
      ASSERT_EQ(FindEntry(tree, ManyName(i) + "x", false, 512, nullptr), nullptr);
    }
    // Short searches along the links, and one long one.
    EXPECT_LT(StepsOf(tree), 2 * kMany);
    EXPECT_EQ(tree.searched.looks(), kMany);
  }
}

TEST(UnbalancedTree, IsSearchedAnewWhenItIsLoadedAnew) {
  const auto bytes = [](const char* name) {
    CompoundOptions options;
    options.shape = SiblingShape::RightList;
    CompoundBuilder builder(options);
    for (uint64_t i = 0; i < 200; ++i) builder.stream(name + std::to_string(i), "");
    return builder.write();
  };
  LoadedFile file(bytes("a"));
  EXPECT_TRUE(file.has("a199"));
  EXPECT_EQ(file.file().directory.searched.looks(), 200u);
  LoadedFile other(bytes("b"));
  const KernelVector<unsigned char> saved = SaveDirectory(other.file().directory);
  LoadDirectory(file.file().directory, saved.data(), saved.size());
  EXPECT_FALSE(file.has("a199"));
  EXPECT_TRUE(file.has("b199"));
}

TEST(UnbalancedTree, ABalancedOneIsNeverIndexed) {
  CompoundBuilder builder;
  for (uint64_t i = 0; i < 5000; ++i) builder.stream(ManyName(i), "");
  LoadedFile file(builder.write());
  for (uint64_t i = 0; i < 5000; ++i) ASSERT_TRUE(file.has(ManyName(i)));
  EXPECT_EQ(file.file().directory.searched.looks(), 0u);
  // Two black levels for each level of a balanced tree.
  EXPECT_LT(StepsOf(file.file().directory), 5000u * 24);
}

// A damaged directory: storages without number have the same children.
TEST(UnbalancedTree, StoragesThatShareAListCostABoundedWork) {
  DirectoryTree tree = ManyEntries(SiblingShape::RightList);
  for (uint64_t i = 1; i <= kMany; ++i) {
    tree.entries[i].isDirectory = true;
    tree.entries[i].child = 1;
  }
  tree.stepsLeft = 50 * kMany;
  const std::string last = ManyName(kMany);
  uint64_t found = 0;
  for (uint64_t i = 1; i <= kMany; ++i) {
    found += FindEntry(tree, ManyName(i) + "/" + last, false, 512, nullptr) != nullptr ? 1 : 0;
  }
  EXPECT_LE(tree.searched.looks(), 2 * (kMany + 1));
  EXPECT_EQ(tree.stepsLeft, 0u);
  // The searches give up once the work is used up.
  EXPECT_GT(found, 40u);
  EXPECT_LT(found, 60u);
}

TEST(UnbalancedTree, IsSearchedWithoutMemoryToo) {
  DirectoryTree tree = ManyEntries(SiblingShape::RightList);
  const auto round = [&](FaultedWork& faulted) {
    tree.searched.clear();
    const DirectoryEntry* const entry =
        faulted([&] { return FindEntry(tree, ManyName(kMany), false, 512, nullptr); });
    ASSERT_EQ(entry, &tree.entries[kMany]);
  };
  // The tree keeps its index.
  EXPECT_GT(FailInTurn(PlainKernelFaultMemory, round, FaultKinds::OneAndFrom), 0u);
}

TEST(UnbalancedTree, NewEntriesAreFound) {
  NewFile made;
  DirectoryTree& tree = made.file().directory;
  tree.isIndexed = false;
  tree.entries[0].child = 1;
  for (uint64_t i = 1; i <= 100; ++i) {
    tree.entries.push_back(Entry(ManyName(2 * i), kNone, i < 100 ? i + 1 : kNone));
  }
  ASSERT_NE(FindEntry(tree, ManyName(200), false, 512, nullptr), nullptr);
  EXPECT_EQ(tree.searched.looks(), 100u);
  ASSERT_EQ(FindEntry(tree, ManyName(151), true, 512, nullptr), nullptr);
  const DirectoryEntry* const entry = FindEntry(tree, ManyName(151), true, 512, &made.file());
  ASSERT_EQ(entry, &tree.entries[101]);
  EXPECT_EQ(FindEntry(tree, ManyName(151), false, 512, nullptr), entry);
  EXPECT_EQ(tree.entries[76].prev, 101u);
}

}  // namespace
}  // namespace tarn::test
