// What keeps damaged trees finite: the record of the parts that were loaded.
#include "pststore/TreePart.h"

#include <gtest/gtest.h>

#include <vector>

#include "pststore/StoreHarness.h"
#include "support/FaultSweep.h"

namespace tarn::test {

namespace {

using pststore::database_corrupt;

struct Part : pststore::tree_part {
  explicit Part(ulonglong extent = 0) : tree_part(extent) {}
  using tree_part::adopt;
  using tree_part::adopt_once;
  using tree_part::get_comparisons;
};

class PstTreePartTest : public ::testing::Test {
 protected:
  // How many numbers are compared when children of these are loaded.
  ulonglong ComparisonsFor(const std::vector<ulonglong>& numbers) {
    const Part root;
    for (const ulonglong number : numbers) {
      Part child;
      root.adopt_once(*context, 1, child, number);
    }
    return root.get_comparisons();
  }

  OpenedImage file{RawImage(true).trees()};
  std::shared_ptr<pststore::db_context> context = file.open();
};

TEST_F(PstTreePartTest, NumbersThatAFileChoosesCostWhatOthersCost) {
  // Multiplied by 0x9E3779B97F4A7C15, a usual way to spread numbers, these all have the same lower
  // 44 bits.
  ulonglong inverse = 1;
  for (int i = 0; i < 6; ++i) inverse *= 2 - 0x9E3779B97F4A7C15 * inverse;
  ASSERT_EQ(1u, inverse * 0x9E3779B97F4A7C15);
  std::vector<ulonglong> chosen;
  std::vector<ulonglong> usual;
  for (ulonglong i = 0; i < 160000; ++i) {
    chosen.push_back((1 + (i << 44)) * inverse);
    usual.push_back(2 + 4 * i);
  }
  // Two searches for each, in a tree of at most twice the 18 levels that they need.
  const ulonglong most = 160000 * 2 * (2 * 18 + 1);
  EXPECT_LE(ComparisonsFor(chosen), most);
  EXPECT_LE(ComparisonsFor(usual), most);
  EXPECT_GE(ComparisonsFor(usual), 160000u);
}

TEST_F(PstTreePartTest, APartIsTakenOnce) {
  const Part root;
  Part first;
  Part second;
  root.adopt_once(*context, 10, first, 20);
  first.adopt_once(*context, 20, second, 30);
  for (const ulonglong known : {10u, 20u, 30u}) {
    Part third;
    EXPECT_EQ(Thrown<database_corrupt>([&] { second.adopt_once(*context, 30, third, known); }),
              "part of a tree met twice");
    EXPECT_EQ(Thrown<database_corrupt>([&] { root.adopt_once(*context, 10, third, known); }),
              "part of a tree met twice");
  }
  // Another tree knows nothing of this one.
  const Part other;
  Part child;
  other.adopt_once(*context, 30, child, 20);
}

TEST_F(PstTreePartTest, SharedPartsAreTakenAgain) {
  const Part root(100);
  for (int i = 0; i < 3; ++i) {
    Part child(100);
    root.adopt(*context, child, 2);
    Part grandchild(100);
    EXPECT_EQ(Thrown<database_corrupt>([&] { child.adopt(*context, grandchild, 2); }),
              "tree too deep");
    child.adopt(*context, grandchild, 3);
  }
}

TEST_F(PstTreePartTest, ARefusedPartIsNotCounted) {
  // The file has 0x2000 bytes, so a tree may take 0x12000.
  const Part root(0x10000);
  for (int i = 0; i < 3; ++i) {
    Part large(0x2001);
    EXPECT_EQ(Thrown<database_corrupt>([&] { root.adopt_once(*context, 10, large, 20); }),
              "blocks of a tree larger than the file");
    EXPECT_EQ(Thrown<database_corrupt>([&] { root.adopt(*context, large, 8); }),
              "blocks of a tree larger than the file");
  }
  Part fits(0x1FFF);
  root.adopt_once(*context, 10, fits, 20);
  Part twice(1);
  EXPECT_THROW(root.adopt_once(*context, 10, twice, 20), database_corrupt);
  Part last(1);
  root.adopt_once(*context, 10, last, 30);
  Part more(1);
  EXPECT_THROW(fits.adopt_once(*context, 20, more, 40), database_corrupt);
  Part nothing;
  last.adopt_once(*context, 30, nothing, 40);
}

TEST_F(PstTreePartTest, WithoutMemoryNothingIsRemembered) {
  const Part root;
  Part child;
  const uint64_t calls = FailInTurn(PlainKernelFaultMemory, [&](FaultedWork& faulted) {
    bool failed = false;
    try {
      faulted([&] { root.adopt_once(*context, 10, child, 20); });
    } catch (const std::bad_alloc&) {
      failed = true;
    }
    EXPECT_EQ(failed, faulted.isReached());
  });
  EXPECT_GT(calls, 0u);
}

}  // namespace

}  // namespace tarn::test
