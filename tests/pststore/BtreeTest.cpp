// Search and iteration of the B-trees, on trees in memory.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "pststore/BtreeNode.h"

namespace {

using Tree = pststore::btree_node<uint32_t, std::string>;
using Leaf = pststore::btree_node_leaf<uint32_t, std::string>;
using Nonleaf = pststore::btree_node_nonleaf<uint32_t, std::string>;
using Iter = pststore::btree_iter_impl<uint32_t, std::string>;
using NotFound = pststore::key_not_found<uint32_t>;
using pststore::database_corrupt;

constexpr uint32_t kNone = UINT32_MAX;

struct TestLeaf final : Leaf {
  explicit TestLeaf(std::vector<std::pair<uint32_t, std::string>> entries_)
      : entries(std::move(entries_)) {}
  uint32_t get_key(uint32_t pos) const override {
    ++keysRead;
    return entries.at(pos).first;
  }
  uint32_t num_values() const override { return static_cast<uint32_t>(entries.size()); }
  const std::string& get_value(uint32_t pos) const override { return entries.at(pos).second; }

  std::vector<std::pair<uint32_t, std::string>> entries;
  mutable int keysRead = 0;
};

struct TestNonleaf final : Nonleaf {
  explicit TestNonleaf(std::vector<std::pair<uint32_t, std::shared_ptr<Tree>>> children_)
      : children(std::move(children_)) {}
  uint32_t get_key(uint32_t pos) const override { return children.at(pos).first; }
  uint32_t num_values() const override { return static_cast<uint32_t>(children.size()); }
  const Tree& get_child(uint32_t pos) const override {
    ++childrenRead;
    if (pos >= children.size()) throw database_corrupt("no such child");
    return *children[pos].second;
  }
  Tree& get_child(uint32_t pos) override {
    return const_cast<Tree&>(std::as_const(*this).get_child(pos));
  }

  std::vector<std::pair<uint32_t, std::shared_ptr<Tree>>> children;
  mutable int childrenRead = 0;
};

std::shared_ptr<TestLeaf> MakeLeaf(std::vector<std::pair<uint32_t, std::string>> entries) {
  return std::make_shared<TestLeaf>(std::move(entries));
}
std::shared_ptr<TestNonleaf> MakeNonleaf(
    std::vector<std::pair<uint32_t, std::shared_ptr<Tree>>> children) {
  return std::make_shared<TestNonleaf>(std::move(children));
}

// Two levels of non-leaves:  ((10 20) (30)) ((40 50) (60)).
std::shared_ptr<TestNonleaf> DeepTree() {
  auto left = MakeNonleaf({{10, MakeLeaf({{10, "a"}, {20, "b"}})}, {30, MakeLeaf({{30, "c"}})}});
  auto right = MakeNonleaf({{40, MakeLeaf({{40, "d"}, {50, "e"}})}, {60, MakeLeaf({{60, "f"}})}});
  return MakeNonleaf({{10, left}, {40, right}});
}

Iter EndOf(const Tree& tree) {
  Iter end;
  tree.last(end);
  ++end.leaf_pos;
  return end;
}

std::string Walk(const Tree& tree) {
  const Iter end = EndOf(tree);
  Iter iter;
  tree.first(iter);
  std::string values;
  while (iter != end) {
    values += iter.leaf->get_value(iter.leaf_pos);
    iter.leaf->next(iter);
  }
  return values;
}

std::string WalkBack(const Tree& tree) {
  Iter iter;
  tree.last(iter);
  std::string values;
  while (iter.leaf != nullptr && values.size() < 100) {
    values += iter.leaf->get_value(iter.leaf_pos);
    iter.leaf->prev(iter);
  }
  return values;
}

// Search --------------------------------------------------------------------------------------

TEST(PstBtreeTest, AnEmptyLeafHasNothing) {
  const auto leaf = MakeLeaf({});
  EXPECT_EQ(kNone, leaf->binary_search(5));
  EXPECT_THROW(leaf->lookup(5), NotFound);
  EXPECT_EQ(0, leaf->keysRead);
}

TEST(PstBtreeTest, BinarySearchGivesTheGreatestKeyNotAbove) {
  for (uint32_t count = 1; count <= 9; ++count) {
    std::vector<std::pair<uint32_t, std::string>> entries;
    for (uint32_t i = 0; i < count; ++i) entries.emplace_back(10 * (i + 1), "v");
    const auto leaf = MakeLeaf(entries);
    for (uint32_t i = 0; i < count; ++i) {
      EXPECT_EQ(i, leaf->binary_search(10 * (i + 1)));
      EXPECT_EQ(i == 0 ? kNone : i - 1, leaf->binary_search(10 * (i + 1) - 1));
      EXPECT_EQ(i, leaf->binary_search(10 * (i + 1) + 1));
    }
  }
}

TEST(PstBtreeTest, ASearchComparesAsManyKeysAsItHalves) {
  std::vector<std::pair<uint32_t, std::string>> entries;
  for (uint32_t i = 0; i < 1000; ++i) entries.emplace_back(i * 2, "v");
  const auto leaf = MakeLeaf(entries);
  leaf->binary_search(1001);
  EXPECT_LE(leaf->keysRead, 10);
}

TEST(PstBtreeTest, AnEqualKeyEndsTheSearchAtOnce) {
  // Of equal keys the search finds the one it meets first, the middle one.
  EXPECT_EQ("b", MakeLeaf({{5, "a"}, {5, "b"}, {5, "c"}})->lookup(5));
  const auto leaf = MakeLeaf({{1, "a"}, {5, "b"}, {7, "c"}});
  EXPECT_EQ(1u, leaf->binary_search(5));
  EXPECT_EQ(1, leaf->keysRead);
}

TEST(PstBtreeTest, KeysOutOfOrderAreTakenAsTheyAre) {
  const auto leaf = MakeLeaf({{9, "a"}, {5, "b"}, {1, "c"}});
  EXPECT_EQ("b", leaf->lookup(5));
  EXPECT_THROW(leaf->lookup(9), NotFound);
}

TEST(PstBtreeTest, LeafLookups) {
  const auto leaf = MakeLeaf({{10, "a"}, {20, "b"}});
  EXPECT_EQ("a", leaf->lookup(10));
  EXPECT_EQ("b", leaf->lookup(20));
  for (const uint32_t key : {0u, 9u, 15u, 21u, kNone}) {
    try {
      leaf->lookup(key);
      ADD_FAILURE() << key;
    } catch (const NotFound& failure) {
      EXPECT_EQ(key, failure.key);
    }
  }
}

TEST(PstBtreeTest, AKeyBelowTheFirstSeparatorReadsNoChild) {
  const auto tree = DeepTree();
  EXPECT_THROW(tree->lookup(9), NotFound);
  EXPECT_EQ(0, tree->childrenRead);
}

TEST(PstBtreeTest, NonleafLookups) {
  const auto tree = DeepTree();
  EXPECT_EQ("a", tree->lookup(10));
  EXPECT_EQ("c", tree->lookup(30));
  EXPECT_EQ("d", tree->lookup(40));  // equal to a separator: the child after it
  EXPECT_EQ("f", tree->lookup(60));
  EXPECT_EQ(4, tree->childrenRead);
  EXPECT_THROW(tree->lookup(35), NotFound);
  EXPECT_THROW(tree->lookup(61), NotFound);
}

TEST(PstBtreeTest, LooksUpWithoutAnException) {
  const auto tree = DeepTree();
  for (const uint32_t key : {0u, 9u, 11u, 25u, 31u, 61u, kNone}) {
    EXPECT_EQ(nullptr, tree->find(key)) << key;
  }
  std::string all;
  for (const uint32_t key : {10u, 20u, 30u, 40u, 50u, 60u}) {
    ASSERT_NE(nullptr, tree->find(key)) << key;
    all += *tree->find(key);
  }
  EXPECT_EQ(all, "abcdef");
  EXPECT_EQ(nullptr, MakeLeaf({})->find(10));
  EXPECT_EQ(nullptr, MakeNonleaf({})->find(10));
}

TEST(PstBtreeTest, ANonleafWithoutChildren) {
  const auto tree = MakeNonleaf({});
  EXPECT_THROW(tree->lookup(1), NotFound);
  Iter iter;
  EXPECT_THROW(tree->first(iter), database_corrupt);
  EXPECT_THROW(tree->last(iter), database_corrupt);
}

// Iteration -----------------------------------------------------------------------------------

TEST(PstBtreeTest, WalksALeaf) {
  const auto leaf = MakeLeaf({{1, "a"}, {2, "b"}});
  EXPECT_EQ("ab", Walk(*leaf));
  Iter iter;
  leaf->last(iter);
  EXPECT_EQ(1u, iter.leaf_pos);
  leaf->next(iter);
  EXPECT_EQ(leaf.get(), iter.leaf);
  EXPECT_EQ(2u, iter.leaf_pos);
  EXPECT_TRUE(iter.path.empty());
}

TEST(PstBtreeTest, TheEndOfAnEmptyLeafIsItsBeginning) {
  const auto leaf = MakeLeaf({});
  Iter first;
  leaf->first(first);
  EXPECT_EQ(leaf.get(), first.leaf);
  EXPECT_EQ(0u, first.leaf_pos);
  EXPECT_EQ(0u, EndOf(*leaf).leaf_pos);
  EXPECT_EQ("", Walk(*leaf));
}

TEST(PstBtreeTest, WalksAcrossChildren) {
  const auto tree = DeepTree();
  EXPECT_EQ("abcdef", Walk(*tree));
  EXPECT_EQ("fedcba", WalkBack(*tree));
}

TEST(PstBtreeTest, ThePathLeadsFromTheRootDownwards) {
  const auto tree = DeepTree();
  Iter iter;
  tree->first(iter);
  ASSERT_EQ(2u, iter.path.size());
  EXPECT_EQ(tree.get(), iter.path[0].first);
  EXPECT_EQ(0u, iter.path[0].second);
  EXPECT_EQ(0u, iter.path[1].second);
  for (int i = 0; i < 3; ++i) iter.leaf->next(iter);
  // From "c" to "d" the used-up level was taken off and another put on.
  ASSERT_EQ(2u, iter.path.size());
  EXPECT_EQ(1u, iter.path[0].second);
  EXPECT_EQ(0u, iter.path[1].second);
  EXPECT_EQ(tree->children[1].second.get(), static_cast<const Tree*>(iter.path[1].first));
  EXPECT_EQ("d", iter.leaf->get_value(iter.leaf_pos));
  EXPECT_EQ(0u, iter.leaf_pos);
}

TEST(PstBtreeTest, PlacesAreEqualWhateverTheirPaths) {
  const auto tree = DeepTree();
  Iter iter;
  tree->first(iter);
  Iter other;
  iter.leaf->first(other);
  EXPECT_NE(iter.path.size(), other.path.size());
  EXPECT_TRUE(iter == other);
  iter.leaf->next(iter);
  EXPECT_FALSE(iter == other);
  // The same position of another leaf.
  tree->children[1].second->first(other);
  other.leaf_pos = iter.leaf_pos;
  EXPECT_FALSE(iter == other);
}

TEST(PstBtreeTest, NextIntoAChildThatFailsLosesTheLeaf) {
  const auto tree = MakeNonleaf({{1, MakeLeaf({{1, "a"}})}, {2, MakeNonleaf({})}});
  Iter iter;
  tree->first(iter);
  EXPECT_THROW(iter.leaf->next(iter), database_corrupt);
  EXPECT_EQ(nullptr, iter.leaf);
}

TEST(PstBtreeTest, NextAfterTheLastEntryStaysInTheLastLeaf) {
  const auto tree = DeepTree();
  Iter iter;
  tree->last(iter);
  const Leaf* const last = iter.leaf;
  iter.leaf->next(iter);
  EXPECT_EQ(last, iter.leaf);
  EXPECT_EQ(1u, iter.leaf_pos);
  EXPECT_EQ(EndOf(*tree).leaf, iter.leaf);
  EXPECT_EQ(EndOf(*tree).leaf_pos, iter.leaf_pos);
  // And back.
  iter.leaf->prev(iter);
  EXPECT_EQ("f", iter.leaf->get_value(iter.leaf_pos));
}

TEST(PstBtreeTest, PrevOnTheFirstEntryOfALeafChangesNothing) {
  const auto leaf = MakeLeaf({{1, "a"}, {2, "b"}});
  Iter iter;
  leaf->first(iter);
  leaf->prev(iter);
  EXPECT_EQ(leaf.get(), iter.leaf);
  EXPECT_EQ(0u, iter.leaf_pos);
}

TEST(PstBtreeTest, PrevOnTheFirstEntryOfADeeperTreeLosesTheLeaf) {
  const auto tree = DeepTree();
  Iter iter;
  tree->first(iter);
  iter.leaf->prev(iter);
  EXPECT_EQ(nullptr, iter.leaf);
  EXPECT_EQ(2u, iter.path.size());
}

TEST(PstBtreeTest, PrevTakesUsedUpLevelsOff) {
  const auto tree = DeepTree();
  Iter iter;
  tree->first(iter);
  for (int i = 0; i < 3; ++i) iter.leaf->next(iter);
  iter.leaf->prev(iter);
  EXPECT_EQ("c", iter.leaf->get_value(iter.leaf_pos));
  ASSERT_EQ(2u, iter.path.size());
  EXPECT_EQ(0u, iter.path[0].second);
  EXPECT_EQ(1u, iter.path[1].second);
}

TEST(PstBtreeTest, OnlyChildrenAreWalkedThrough) {
  const auto tree = MakeNonleaf({{1, MakeNonleaf({{1, MakeLeaf({{1, "a"}})}})},
                                 {2, MakeNonleaf({{2, MakeLeaf({{2, "b"}})}})}});
  EXPECT_EQ("ab", Walk(*tree));
  EXPECT_EQ("ba", WalkBack(*tree));
}

TEST(PstBtreeTest, AnEmptyLastLeafIsTheEnd) {
  const auto tree = MakeNonleaf({{1, MakeLeaf({{1, "a"}})}, {2, MakeLeaf({})}});
  EXPECT_EQ("a", Walk(*tree));
}

TEST(PstBtreeTest, AnEmptyLeafBeforeOthersIsDamage) {
  const auto empty = MakeLeaf({});
  const auto first = MakeNonleaf({{1, empty}, {2, MakeLeaf({{2, "b"}})}});
  EXPECT_THROW(Walk(*first), database_corrupt);
  EXPECT_THROW(WalkBack(*first), database_corrupt);
  const auto middle =
      MakeNonleaf({{1, MakeLeaf({{1, "a"}})}, {2, empty}, {3, MakeLeaf({{3, "c"}})}});
  EXPECT_THROW(Walk(*middle), database_corrupt);
  EXPECT_THROW(WalkBack(*middle), database_corrupt);
  // The leaf is the last of its parent, but not of the tree.
  const auto deep = MakeNonleaf({{1, MakeNonleaf({{1, MakeLeaf({{1, "a"}})}, {2, empty}})},
                                 {3, MakeNonleaf({{3, MakeLeaf({{3, "c"}})}})}});
  EXPECT_THROW(Walk(*deep), database_corrupt);
}

}  // namespace
