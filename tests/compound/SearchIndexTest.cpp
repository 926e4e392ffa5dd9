// Searches in trees that are not balanced: the same answers as along the links, for less.

#include <gtest/gtest.h>

#include <random>

#include "CompoundFiles.h"
#include "Tarnbase/PlainKernel.h"
#include "support/FaultSweep.h"
#include "support/compound/CompoundBuilder.h"

namespace tarn::test {
namespace {

using Entries = DirectoryTree::Entries;

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

// The root of a directory.
Entries Root(uint64_t child) {
  Entries entries = DirectoryTree().entries();
  entries[0].child = child;
  return entries;
}

// What following the links from the root's child on leads to, step by step.
uint64_t FollowLinks(const Entries& entries, std::string_view name) {
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
bool AgreesWithTheLinks(const Entries& entries, const std::vector<std::string>& names) {
  SearchIndex index;
  index.add(entries, 0);
  EXPECT_LE(index.looks(), 2 * entries.size());
  if (!index.find(entries, 0, "a")) return false;
  for (const std::string& name : names) {
    EXPECT_EQ(index.find(entries, 0, name), FollowLinks(entries, name)) << name;
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
    Entries entries = Root(1);
    for (size_t i = 0; i < 3; ++i) {
      const std::string name(1, static_cast<char>('b' + 2 * i));
      entries.push_back(Entry(name, links[2 * i], links[2 * i + 1]));
    }
    taken += AgreesWithTheLinks(entries, names) ? 1 : 0;
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
    Entries entries = Root(random() % count);
    entries[0].prev = random() % count;
    // Mostly trees: links lead on. Others lead anywhere.
    const auto link = [&](uint64_t from) -> uint64_t {
      if (random() % 3 == 0) return kNone;
      if (random() % 20 == 0) return random() % (count + 2);
      return from + 1 + random() % 4;
    };
    for (uint64_t i = 1; i < count; ++i) {
      entries.push_back(Entry(anyName(), link(i), link(i)));
      entries[i].valid = random() % 16 != 0;
    }
    taken += AgreesWithTheLinks(entries, names) ? 1 : 0;
    ASSERT_FALSE(HasFailure()) << round;
  }
  EXPECT_GT(taken, 15000u);
}

TEST(SearchIndex, AStorageThatWasNotTakenInIsUnknown) {
  Entries entries = Root(1);
  entries.push_back(Entry("b", kNone, kNone));
  SearchIndex index;
  EXPECT_FALSE(index.find(entries, 0, "b"));
  index.add(entries, 0);
  EXPECT_EQ(index.find(entries, 0, "b"), 1u);
  EXPECT_FALSE(index.find(entries, 1, "b"));
  index.clear();
  EXPECT_FALSE(index.find(entries, 0, "b"));
}

// Searches of a file -----------------------------------------------------------------------------

constexpr uint64_t kMany = 20000;

std::string ManyName(uint64_t i) { return std::to_string(100000 + i); }

// So many streams of the root, in order from entry 1 on.
Entries ManyEntries(SiblingShape shape) {
  Entries entries = Root(shape == SiblingShape::LeftList ? kMany : 1);
  for (uint64_t i = 1; i <= kMany; ++i) {
    const bool left = shape == SiblingShape::LeftList;
    entries.push_back(
        Entry(ManyName(i), left && i > 1 ? i - 1 : kNone, !left && i < kMany ? i + 1 : kNone));
  }
  return entries;
}

uint64_t StepsOf(const DirectoryTree& tree) {
  return DirectoryTree::kSearchSteps - tree.stepsLeft();
}

TEST(UnbalancedTree, AllAreFoundInStepsInProportionToTheirNumber) {
  for (const SiblingShape shape : {SiblingShape::RightList, SiblingShape::LeftList}) {
    DirectoryTree tree(ManyEntries(shape));
    for (uint64_t i = 1; i <= kMany; ++i) {
      ASSERT_EQ(FindEntry(tree, ManyName(i)), &tree.entries()[i]);
      ASSERT_EQ(FindEntry(tree, ManyName(i) + "x"), nullptr);
    }
    // Short searches along the links, and one long one.
    EXPECT_LT(StepsOf(tree), 2 * kMany);
    EXPECT_EQ(tree.searchIndex().looks(), kMany);
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
  EXPECT_EQ(file.parts().directory.searchIndex().looks(), 200u);
  LoadedFile other(bytes("b"));
  const KernelVector<unsigned char> saved = SaveDirectory(other.parts().directory);
  LoadDirectory(file.parts().directory, {saved.data(), saved.size()});
  EXPECT_FALSE(file.has("a199"));
  EXPECT_TRUE(file.has("b199"));
}

TEST(UnbalancedTree, ABalancedOneIsNeverIndexed) {
  CompoundBuilder builder;
  for (uint64_t i = 0; i < 5000; ++i) builder.stream(ManyName(i), "");
  LoadedFile file(builder.write());
  for (uint64_t i = 0; i < 5000; ++i) ASSERT_TRUE(file.has(ManyName(i)));
  EXPECT_EQ(file.parts().directory.searchIndex().looks(), 0u);
  // Two black levels for each level of a balanced tree.
  EXPECT_LT(StepsOf(file.parts().directory), 5000u * 24);
}

// A damaged directory: storages without number have the same children.
TEST(UnbalancedTree, StoragesThatShareAListCostABoundedWork) {
  Entries entries = ManyEntries(SiblingShape::RightList);
  for (uint64_t i = 1; i <= kMany; ++i) {
    entries[i].isDirectory = true;
    entries[i].child = 1;
  }
  DirectoryTree tree(entries, 50 * kMany);
  const std::string last = ManyName(kMany);
  uint64_t found = 0;
  for (uint64_t i = 1; i <= kMany; ++i) {
    found += FindEntry(tree, ManyName(i) + "/" + last) != nullptr ? 1 : 0;
  }
  EXPECT_LE(tree.searchIndex().looks(), 2 * (kMany + 1));
  EXPECT_EQ(tree.stepsLeft(), 0u);
  // The searches give up once the work is used up.
  EXPECT_GT(found, 40u);
  EXPECT_LT(found, 60u);
}

TEST(UnbalancedTree, IsSearchedWithoutMemoryToo) {
  const Entries entries = ManyEntries(SiblingShape::RightList);
  std::optional<DirectoryTree> tree;
  const auto round = [&](FaultedWork& faulted) {
    tree.emplace(entries);
    const DirectoryEntry* const entry = faulted([&] { return FindEntry(*tree, ManyName(kMany)); });
    ASSERT_EQ(entry, &tree->entries()[kMany]);
  };
  // The tree keeps its index.
  EXPECT_GT(FailInTurn(PlainKernelFaultMemory, round, FaultKinds::OneAndFrom), 0u);
}

TEST(UnbalancedTree, NewEntriesAreFound) {
  NewFile made;
  Entries entries = Root(1);
  for (uint64_t i = 1; i <= 100; ++i) {
    entries.push_back(Entry(ManyName(2 * i), kNone, i < 100 ? i + 1 : kNone));
  }
  DirectoryTree& tree = made.parts().directory;
  tree = DirectoryTree(entries);
  ASSERT_NE(FindEntry(tree, ManyName(200)), nullptr);
  EXPECT_EQ(tree.searchIndex().looks(), 100u);
  ASSERT_EQ(FindEntry(tree, ManyName(151)), nullptr);
  const DirectoryEntry* const entry = FindEntry(made.file(), ManyName(151), true);
  ASSERT_EQ(entry, &tree.entries()[101]);
  EXPECT_EQ(FindEntry(tree, ManyName(151)), entry);
  EXPECT_EQ(tree.entries()[76].prev, 101u);
}

}  // namespace
}  // namespace tarn::test
