// Searches in the directory's trees, well-formed and not.

#include <gtest/gtest.h>

#include <vector>

#include "CompoundFiles.h"
#include "support/compound/CompoundBuilder.h"

namespace tarn::test {
namespace {

constexpr uint64_t kNone = 0xFFFFFFFF;

// A tree without a file: entry 0 is the root, the others are streams unless said otherwise.
class Tree {
 public:
  explicit Tree(uint64_t rootChild) : entries(DirectoryTree().entries()) {
    entries[0].child = rootChild;
  }

  Tree& add(std::string_view name, uint64_t prev, uint64_t next, uint64_t child = kNone) {
    DirectoryEntry& entry = entries.emplace_back();
    entry.valid = true;
    entry.name = name;
    entry.isDirectory = child != kNone;
    entry.prev = prev;
    entry.next = next;
    entry.child = child;
    return *this;
  }

  // The tree as it is loaded.
  DirectoryTree load() const { return DirectoryTree(entries); }

  // The index that a path leads to, -1 for none.
  int64_t find(std::string_view path) const {
    DirectoryTree tree = load();
    const DirectoryEntry* const entry = FindEntry(tree, path);
    return entry == nullptr ? -1 : entry - tree.entries().data();
  }

  DirectoryTree::Entries entries;
};

//   root: bb(1) with a(2) and cc(3) beside it; below cc: d(4)
Tree SmallTree() {
  return Tree(1)
      .add("bb", 2, 3)
      .add("a", kNone, kNone)
      .add("cc", kNone, kNone, 4)
      .add("d", kNone, kNone);
}

TEST(Find, PathsLeadThroughStorages) {
  Tree tree = SmallTree();
  EXPECT_EQ(tree.find("bb"), 1);
  EXPECT_EQ(tree.find("a"), 2);
  EXPECT_EQ(tree.find("cc"), 3);
  EXPECT_EQ(tree.find("cc/d"), 4);
  EXPECT_EQ(tree.find("d"), -1);
  EXPECT_EQ(tree.find("cc/a"), -1);
  EXPECT_EQ(tree.find("zz/d"), -1);
}

TEST(Find, EmptyPathsAndTheRoot) {
  Tree tree = SmallTree();
  EXPECT_EQ(tree.find(""), -1);
  EXPECT_EQ(tree.find("/"), 0);
  tree.entries = KernelVector<DirectoryEntry>();
  EXPECT_EQ(tree.find("/"), -1);
  EXPECT_EQ(tree.find("a"), -1);
}

TEST(Find, SlashesAtTheEndsAddNothing) {
  Tree tree = SmallTree();
  EXPECT_EQ(tree.find("/a"), 2);
  EXPECT_EQ(tree.find("a/"), 2);
  EXPECT_EQ(tree.find("/cc/d/"), 4);
  EXPECT_EQ(tree.find("//a"), -1);
  EXPECT_EQ(tree.find("a//"), -1);
}

TEST(Find, EmptyPiecesInTheMiddleAreNames) {
  Tree tree = Tree(1).add("", kNone, 2, 3).add("s", kNone, kNone, 1).add("x", kNone, kNone);
  EXPECT_EQ(tree.find("//"), 1);
  EXPECT_EQ(tree.find("//x"), 3);
  EXPECT_EQ(tree.find("s//x"), 3);
}

TEST(Find, BelowAStreamThereIsNothing) { EXPECT_EQ(SmallTree().find("a/b"), -1); }

TEST(Find, AStreamsChildrenAreSearched) {
  Tree tree = SmallTree();
  tree.entries[2].child = 4;
  EXPECT_FALSE(tree.entries[2].isDirectory);
  EXPECT_EQ(tree.find("a/d"), 4);
}

TEST(Find, CaseMatters) {
  Tree tree = SmallTree();
  EXPECT_EQ(tree.find("A"), -1);
  EXPECT_EQ(tree.find("BB"), -1);
  EXPECT_EQ(tree.find("Bb"), -1);
}

TEST(Find, LengthComesBeforeLetters) {
  const std::string twenty(20, 'z');
  const std::string longer(23, 'a');
  EXPECT_EQ(Tree(1).add(twenty, kNone, 2).add(longer, kNone, kNone).find(longer), 2);
  EXPECT_EQ(Tree(1).add(longer, 2, kNone).add(twenty, kNone, kNone).find(twenty), 2);
  EXPECT_EQ(Tree(1).add(twenty, 2, kNone).add(longer, kNone, kNone).find(longer), -1);
}

TEST(Find, EqualLengthsGoByBytes) {
  // The left of a smaller name is never looked at; bytes above 0x7F come last.
  EXPECT_EQ(Tree(1).add("b", 2, 3).add("a", kNone, kNone).add("\xE4", kNone, kNone).find("\xE4"),
            3);
  EXPECT_EQ(Tree(1).add("b", 2, 3).add("\xE4", kNone, kNone).add("a", kNone, kNone).find("\xE4"),
            -1);
  EXPECT_EQ(Tree(1).add("b", 2, 3).add("c", kNone, kNone).add("a", kNone, kNone).find("a"), -1);
}

TEST(Find, ALinkOf0IsNoLink) {
  EXPECT_EQ(Tree(1).add("b", 0, 0).find("Root Entry"), -1);
  EXPECT_EQ(Tree(1).add("b", 0, 0).find("a"), -1);
}

TEST(Find, AChildOf0IsAChild) {
  Tree tree = Tree(0);
  EXPECT_EQ(tree.find("Root Entry"), 0);
  EXPECT_EQ(tree.find("Root Entry/Root Entry"), 0);
  EXPECT_EQ(tree.find("a"), -1);
}

TEST(Find, InvalidEntriesEndASearch) {
  Tree tree = SmallTree();
  tree.entries[2].valid = false;
  EXPECT_EQ(tree.find("a"), -1);
  tree.entries[1].valid = false;
  EXPECT_EQ(tree.find("cc"), -1);
  tree.entries[1].valid = true;
  tree.entries[3].valid = false;
  EXPECT_EQ(tree.find("cc/d"), -1);
  tree.entries[0].valid = false;
  EXPECT_EQ(tree.find("bb"), -1);
  EXPECT_EQ(tree.find("/"), 0);  // its validity is not asked for
}

TEST(Find, LinksBeyondTheDirectoryEndASearch) {
  EXPECT_EQ(Tree(9).add("a", kNone, kNone).find("a"), -1);
  EXPECT_EQ(Tree(1).add("b", 2, 2).find("a"), -1);
}

TEST(Sibling, TellsWhereItEnded) {
  Tree small = SmallTree();
  DirectoryTree tree = small.load();
  uint64_t closest = kNone;
  EXPECT_EQ(FindSibling(tree, 1, "cc", closest), 3u);
  EXPECT_EQ(closest, kNone);
  EXPECT_EQ(FindSibling(tree, 1, "c", closest), 0u);
  EXPECT_EQ(closest, 2u);
  EXPECT_EQ(FindSibling(tree, 1, "ccc", closest), 0u);
  EXPECT_EQ(closest, 3u);
  closest = 77;
  small.entries[2].valid = false;
  tree = small.load();
  EXPECT_EQ(FindSibling(tree, 1, "c", closest), 0u);
  EXPECT_EQ(FindSibling(tree, 5, "c", closest), 0u);
  EXPECT_EQ(closest, 77u);
}

TEST(Sibling, ACircleGivesNothing) {
  DirectoryTree tree = Tree(1).add("b", 2, 3).add("c", 3, 1).add("d", 1, 2).load();
  uint64_t closest = kNone;
  EXPECT_EQ(FindSibling(tree, 1, "a", closest), 0u);
  EXPECT_EQ(FindSibling(tree, 1, "zz", closest), 0u);
  EXPECT_EQ(closest, kNone);
  EXPECT_EQ(FindSibling(tree, 1, "d", closest), 3u);
  Tree self = Tree(1).add("b", 1, 1);
  EXPECT_EQ(self.find("a"), -1);
}

// Entries that refer to each other in every possible way: a search ends, and finds what it would
// by the definition.
TEST(Sibling, AllTreesOfThree) {
  const std::string_view names[] = {"", "b", "d", "f"};
  for (uint32_t code = 0; code < 5 * 5 * 5 * 5 * 5 * 5; ++code) {
    uint64_t links[6];
    for (uint32_t i = 0, rest = code; i < 6; ++i, rest /= 5) {
      links[i] = rest % 5 == 4 ? kNone : rest % 5;
    }
    Tree tree(1);
    for (size_t i = 0; i < 3; ++i) tree.add(names[i + 1], links[2 * i], links[2 * i + 1]);
    for (const std::string_view wanted : {"a", "b", "c", "d", "e", "f", "g", "Root Entry"}) {
      int64_t expected = -1;
      uint64_t at = 1;
      for (int step = 0; step < 10; ++step) {
        if (names[at] == wanted) {
          expected = static_cast<int64_t>(at);
          break;
        }
        const bool right = names[at].size() != wanted.size() || names[at] < wanted;
        at = links[2 * (at - 1) + (right ? 1 : 0)];
        if (at == 0 || at == kNone) break;
      }
      ASSERT_EQ(tree.find(wanted), expected) << code << " " << wanted;
    }
  }
}

TEST(ListNames, InTheOrderOfTheTree) {
  CompoundBuilder builder;
  builder.stream("ccc", "").stream("a", "").stream("bb", "").stream("z", "");
  builder.storage("s").stream("inner", "x");
  LoadedFile file(builder.write());
  EXPECT_EQ(file.names("/"), "a s z bb ccc");
  EXPECT_EQ(file.names("s"), "inner");
  EXPECT_EQ(file.names("/s/"), "inner");
}

// Published trees are ordered by upper-cased names, searches by bytes: names of mixed case can hang
// where no search comes by.
TEST(Find, MixedCaseCanHideAName) {
  CompoundBuilder builder;
  builder.stream("s", "1").stream("Z", "2").stream("a", "3");
  LoadedFile file(builder.write());
  EXPECT_EQ(file.names("/"), "a s Z");
  EXPECT_TRUE(file.has("s"));
  EXPECT_TRUE(file.has("a"));
  EXPECT_FALSE(file.has("Z"));
}

TEST(ListNames, StreamsAndMissingPathsAreEmpty) {
  CompoundBuilder builder;
  builder.stream("a", "x").storage("empty");
  LoadedFile file(builder.write());
  EXPECT_EQ(file.names("a"), "");
  EXPECT_EQ(file.names("nothing"), "");
  EXPECT_EQ(file.names(""), "");
  EXPECT_EQ(file.names("empty"), "");
}

// A file that nothing can be read from.
struct NoFile {
  explicit NoFile(DirectoryTree tree) { PartsOf(file).directory = std::move(tree); }
  DirectoryTree& tree() { return PartsOf(file).directory; }

  CompoundFile file = CompoundFile(KERNEL_BAD_HANDLE);
  CompoundStorage storage{&file};
};

std::string NamesOf(const Tree& tree) {
  const NoFile file(tree.load());
  std::string all;
  for (const KernelString& name : ListEntryNames(file.storage, "/")) all += std::string(name) + " ";
  return all;
}

TEST(ListNames, InvalidEntriesAreListed) {
  Tree tree = SmallTree();
  tree.entries[1].valid = false;
  EXPECT_EQ(NamesOf(tree), "a bb cc ");
}

TEST(ListNames, AnInvalidRootHasNoNames) {
  Tree tree = SmallTree();
  tree.entries[0].valid = false;
  EXPECT_EQ(NamesOf(tree), "");
}

TEST(ListNames, ALinkOf0LeadsToTheRoot) {
  Tree tree = Tree(1).add("b", 0, kNone);
  EXPECT_EQ(NamesOf(tree), "Root Entry b ");
  Tree child = Tree(0);
  EXPECT_EQ(NamesOf(child), "Root Entry ");
}

TEST(ListNames, AnEntryThatIsMetAgainIsPassedOver) {
  Tree circle = Tree(1).add("b", 2, 3).add("a", 1, 3).add("c", 3, 2);
  EXPECT_EQ(NamesOf(circle), "a c b ");
  Tree shared = Tree(1).add("b", 2, 2).add("a", kNone, 3).add("x", 9, 1);
  EXPECT_EQ(NamesOf(shared), "a x b ");
}

TEST(ListNames, TheSecondListingIsLikeTheFirst) {
  CompoundBuilder builder;
  builder.stream("a", "").stream("b", "").storage("c").stream("d", "");
  LoadedFile file(builder.write());
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(file.names("/"), "a b c");
    EXPECT_EQ(file.names("c"), "d");
  }
}

// Many entries ----------------------------------------------------------------------------------

constexpr uint64_t kMany = 100000;

std::string ManyName(uint64_t i) {
  std::string digits = std::to_string(i);
  return std::string(7 - digits.size(), '0') + digits;
}

// The children of the root, in order from entry 1 on.
DirectoryTree ManyEntries(bool asList, uint64_t steps = DirectoryTree::kSearchSteps) {
  DirectoryTree::Entries entries = DirectoryTree().entries();
  entries.resize(kMany + 1);
  for (uint64_t i = 1; i <= kMany; ++i) {
    entries[i].valid = true;
    entries[i].name = ManyName(i);
  }
  struct Range {
    uint64_t first, last;
    uint64_t* link;
  };
  std::vector<Range> ranges = {{1, kMany + 1, &entries[0].child}};
  while (!ranges.empty()) {
    const Range range = ranges.back();
    ranges.pop_back();
    if (range.first == range.last) continue;
    const uint64_t middle = asList ? range.first : range.first + (range.last - range.first) / 2;
    *range.link = middle;
    ranges.push_back({range.first, middle, &entries[middle].prev});
    ranges.push_back({middle + 1, range.last, &entries[middle].next});
  }
  return DirectoryTree(std::move(entries), steps);
}

TEST(ManyEntries, BalancedAllAreFoundInAFewStepsEach) {
  NoFile file(ManyEntries(false));
  const uint64_t before = file.tree().stepsLeft();
  for (uint64_t i = 1; i <= kMany; ++i) {
    const DirectoryEntry* const entry = FindEntry(file.tree(), ManyName(i));
    ASSERT_EQ(entry, &file.tree().entries()[i]);
  }
  EXPECT_LT(before - file.tree().stepsLeft(), 17 * kMany);
  EXPECT_EQ(file.tree().searchIndex().looks(), 0u);
  EXPECT_EQ(ListEntryNames(file.storage, "/").size(), kMany);
}

TEST(ManyEntries, AListIsWalkedAndSearched) {
  NoFile file(ManyEntries(true));
  const KernelVector<KernelString> names = ListEntryNames(file.storage, "/");
  ASSERT_EQ(names.size(), kMany);
  EXPECT_EQ(std::string_view(names.back()), "0100000");
  // As often as there are entries, for the last of the list.
  const uint64_t before = file.tree().stepsLeft();
  for (uint64_t i = 0; i < kMany; ++i) {
    ASSERT_NE(FindEntry(file.tree(), "0100000"), nullptr);
  }
  EXPECT_LE(before - file.tree().stepsLeft(), kMany);
  EXPECT_EQ(file.tree().searchIndex().looks(), kMany);
}

// Searches that tell where a new entry would hang go along the links, until these are used up.
TEST(ManyEntries, SearchesTogetherAreBounded) {
  NewFile made;
  made.parts().directory = ManyEntries(true, 3 * kMany);
  const DirectoryTree& tree = made.parts().directory;
  uint64_t found = 0;
  for (int i = 0; i < 10; ++i) {
    found += FindEntry(made.file(), "0099999", true) == &tree.entries()[99999] ? 1 : 0;
  }
  EXPECT_EQ(found, 3u);
  EXPECT_EQ(tree.stepsLeft(), 0u);
}

}  // namespace
}  // namespace tarn::test
