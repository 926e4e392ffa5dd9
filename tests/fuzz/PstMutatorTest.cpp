// Mutants of stores: many open and are read to the end, and differ in what they hold.
#include "mutators/PstMutator.h"

#include <gtest/gtest.h>

#include <set>

#include "PlainBytes.h"
#include "pststore/StoreObjects.h"
#include "support/RtfCompressor.h"
#include "support/StoreReading.h"
#include "support/TempDirectory.h"
#include "support/pst/PstDamage.h"
#include "support/pst/PstImageMap.h"
#include "support/pst/StoreBuilder.h"

namespace tarn::test {
namespace {

std::string Store(PstLayout layout) {
  StoreBuilder store(StoreOptions::Smallest(layout, PstEncoding::Permute));
  MessageBuilder& message = store.folder(u"Inbox").message().subject(u"Seed");
  message.html("<p>Hi").rtf(PackRtf("{\\rtf1 Hello}")).attachment(u"a.txt", std::string(900, 'x'));
  return store.bytes();
}

struct Reading {
  bool isOpen = false;
  StoreTotals totals = {};
};

Reading ReadImage(const TempDirectory& directory, const std::string& image) {
  Reading reading;
  const auto path = directory.write("store", image);
  try {
    const auto store = pststore::open_database(path.u16string().c_str());
    reading.isOpen = true;
    reading.totals = ReadStore(store, {.maxBytes = 1 << 20, .maxRows = 500, .maxFailures = 500});
  } catch (const std::exception& caught) {
    EXPECT_TRUE(IsStoreException(caught)) << caught.what();
  }
  return reading;
}

class PstMutatorLayouts : public ::testing::TestWithParam<PstLayout> {};

INSTANTIATE_TEST_SUITE_P(Layouts, PstMutatorLayouts,
                         ::testing::Values(PstLayout::Ansi, PstLayout::Unicode));

TEST_P(PstMutatorLayouts, TakesAnyBytes) {
  ExpectTakesAnyBytes(fuzz::MutatePstImage, Store(GetParam()));
}

TEST_P(PstMutatorLayouts, MutantsStillOpen) {
  const TempDirectory directory;
  const std::string store = Store(GetParam());
  const Reading whole = ReadImage(directory, store);
  ASSERT_TRUE(whole.isOpen);
  ASSERT_EQ(whole.totals.failures, 0U);
  size_t count = 0;
  size_t open = 0;
  size_t unharmed = 0;
  std::set<uint64_t> sums;
  MakeMutants(fuzz::MutatePstImage, store, 60000, 300, [&](const std::string& mutant) {
    ++count;
    const Reading reading = ReadImage(directory, mutant);
    open += reading.isOpen ? 1 : 0;
    unharmed += reading.isOpen && reading.totals.failures == 0 ? 1 : 0;
    sums.insert(reading.totals.bytes);
  });
  EXPECT_GE(count, 250U);
  EXPECT_GE(open, 200U);
  EXPECT_GE(unharmed, 60U);
  EXPECT_GE(sums.size(), 20U);
}

// But where damage makes pages and blocks lie in one another.
TEST_P(PstMutatorLayouts, ChecksumsFit) {
  size_t count = 0;
  size_t fitting = 0;
  MakeMutants(fuzz::MutatePstImage, Store(GetParam()), 60000, 100, [&](const std::string& mutant) {
    std::string mended = mutant;
    RepairPstImage(mended);
    ++count;
    fitting += mended == mutant ? 1 : 0;
  });
  EXPECT_GE(count, 80U);
  EXPECT_GE(fitting, count * 9 / 10);
}

// What grows beyond its place moves to the end of the image.
TEST(PstMutator, BlocksGrow) {
  const std::string store = Store(PstLayout::Unicode);
  bool hasGrown = false;
  MakeMutants(fuzz::MutatePstImage, store, 60000, 300, [&](const std::string& mutant) {
    const auto map = MapPstImage(mutant);
    if (!map) return;
    for (const PstImageBlock& block : map->blocks) hasGrown |= block.offset >= store.size();
  });
  EXPECT_TRUE(hasGrown);
}

TEST(PstImageMap, NamesPagesAndBlocks) {
  PstFileBuilder file({.nbt = {.leafFanOut = 2, .innerFanOut = 2}});
  for (uint32_t i = 1; i <= 5; ++i) file.node(i << 5 | 4, file.data(std::string(i, 'a')), 0);
  const std::optional<PstImageMap> map = MapPstImage(file.bytes());
  ASSERT_TRUE(map);
  EXPECT_EQ(map->layout, PstLayout::Unicode);
  size_t extents = 0;
  for (const PstExtent& extent : file.extents()) {
    if (extent.kind >= PstExtentKind::NbtPage) ++extents;
  }
  EXPECT_EQ(map->pages.size() + map->blocks.size(), extents);
  ASSERT_EQ(map->blocks.size(), 5U);
  for (size_t i = 0; i < 5; ++i) EXPECT_EQ(map->blocks[i].size, i + 1);
  EXPECT_FALSE(MapPstImage(std::string(600, '\0').substr(0, 500)));
}

}  // namespace
}  // namespace tarn::test
