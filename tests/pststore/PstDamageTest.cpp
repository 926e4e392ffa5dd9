// Changes to written images, and checksums that fit again.
#include <gtest/gtest.h>

#include <initializer_list>
#include <stdexcept>

#include "NaivePst.h"
#include "support/pst/PstBytes.h"
#include "support/pst/PstDamage.h"
#include "support/pst/PstFileBuilder.h"

namespace tarn::test {
namespace {

TEST(PstDamage, KeepsChecksumsOfWhatItChanges) {
  PstFileBuilder file({.encoding = PstEncoding::Cyclic});
  const uint64_t bid = file.data("stream");
  file.node(0x122, bid, 0);
  PstDamage damage(file);
  damage.put(damage.block(bid), 1, 'T', 1);
  damage.put(damage.at(PstExtentKind::NbtPage), 24, 0x8022, 4);
  damage.header(40, 77, 4);
  const NaivePst read(damage.image());
  EXPECT_EQ(read.problems(), "");
  EXPECT_EQ(read.data(bid), "sTream");
  EXPECT_EQ(read.nodes().at(0x122).parent, 0x8022U);
  EXPECT_THROW(damage.put(damage.block(bid), 6, 0, 1), std::out_of_range);
}

class PstDamageLayouts : public ::testing::TestWithParam<PstLayout> {};

INSTANTIATE_TEST_SUITE_P(Layouts, PstDamageLayouts,
                         ::testing::Values(PstLayout::Ansi, PstLayout::Unicode));

TEST_P(PstDamageLayouts, RepairRestoresEveryTrailer) {
  PstFileOptions shaped = {.layout = GetParam(), .encoding = PstEncoding::Permute};
  shaped.nbt = {.leafFanOut = 2, .innerFanOut = 2};
  shaped.bbt = {.leafFanOut = 2, .innerFanOut = 2};
  PstFileBuilder file(shaped);
  for (uint32_t i = 1; i <= 9; ++i) file.node(i << 5 | 4, file.data(std::string(i * 3000, 'a')), 0);
  PstDamage damage(file);
  const std::string whole = damage.image();
  std::string walked = whole;
  for (const PstExtent& extent : damage.extents()) {
    // All of a trailer but the type of a page, which a repair has to take from it.
    const size_t skipped = IsBlock(extent.kind) ? 0 : 1;
    for (size_t i = skipped; i < 12; ++i) {
      damage.image()[damage.trailer(extent) + i] ^= 0x55;
      if (extent.kind >= PstExtentKind::NbtPage) walked[damage.trailer(extent) + i] ^= 0x55;
    }
  }
  damage.image()[4] ^= 1;
  walked[4] ^= 1;
  EXPECT_NE(NaivePst(whole).problems(), NaivePst(walked).problems());
  damage.repairAll();
  EXPECT_TRUE(damage.image() == whole);
  RepairPstImage(walked);
  EXPECT_TRUE(walked == whole);
}

TEST(PstDamage, RepairTakesAnyBytes) {
  for (size_t size : std::initializer_list<size_t>{0, 11, 12, 511, 512, 600}) {
    std::string image(size, '\xFF');
    RepairPstImage(image);
    EXPECT_EQ(image.size(), size);
  }
  // A root that is its own child.
  PstFileBuilder file;
  const PstPageRef page = file.reservePage();
  std::string body = LeBytes(0, 8) + LeBytes(page.bid, 8) + LeBytes(page.ib, 8);
  body.resize(488);
  body += "\x01\x14\x18\x01";
  file.writePage(page, PstExtentKind::NbtPage, body);
  file.setNbtRoot(page);
  std::string image = file.bytes();
  const std::string whole = image;
  image[static_cast<size_t>(page.ib) + 498] ^= 1;
  RepairPstImage(image);
  EXPECT_TRUE(image == whole);
}

}  // namespace
}  // namespace tarn::test
