#include <gtest/gtest.h>

#include <array>
#include <cstring>

#include "Scratch.h"
#include "Tarnbase/PlainKernel.h"

namespace tarn::test {
namespace {

constexpr const char16_t* kHere = u"GraphicsTest.cpp";

using LogFont = std::array<unsigned char, 92>;

LogFont LogFontWithFace(const char16_t* face, size_t units) {
  LogFont record = {};
  std::memcpy(record.data() + 28, face, units * 2);
  return record;
}

TEST(Graphics, ContextsAndFontsAreTracked) {
  const LogFont record = LogFontWithFace(u"Arial", 5);
  void* const context = KernelCreateDC(0, 1, kHere);
  void* const font = KernelCreateFont(record.data(), 2, kHere);
  ASSERT_NE(context, nullptr);
  ASSERT_NE(font, nullptr);
  EXPECT_EQ(Usage().liveTrackedObjects, 2U);
  KernelDeleteFont(font, 3, kHere);
  EXPECT_EQ(Usage().liveTrackedObjects, 1U);
  KernelDeleteDC(context, 4, kHere);
  EXPECT_EQ(Usage().liveTrackedObjects, 0U);
}

TEST(Graphics, AFontHoldsTheRecordItWasMadeFrom) {
  LogFont record = LogFontWithFace(u"Courier New", 11);
  record[0] = 0xF4;
  void* const font = KernelCreateFont(record.data(), 1, kHere);
  ASSERT_NE(font, nullptr);
  record.fill(0);
  const auto* const bytes = static_cast<const unsigned char*>(font);
  EXPECT_EQ(bytes[0], 0xF4);
  EXPECT_EQ(std::memcmp(bytes + 28, u"Courier New", 24), 0);
  KernelDeleteFont(font, 2, kHere);
}

TEST(Graphics, NoRecordNoFont) { EXPECT_EQ(KernelCreateFont(nullptr, 1, kHere), nullptr); }

TEST(GraphicsDeathTest, DeletingWhatIsNotLiveAborts) {
  int other = 0;
  void* const context = KernelCreateDC(0, 1, kHere);
  EXPECT_DEATH(KernelDeleteFont(context, 5, kHere),
               "^Tarnbase: KernelDeleteFont: not a live object of this kind: 0x[0-9a-f]+ "
               "\\(line 5 of GraphicsTest.cpp\\)");
  EXPECT_DEATH(KernelDeleteDC(&other, 6, kHere), "KernelDeleteDC: not a live object");
  EXPECT_DEATH(KernelUntrackObject(KERNEL_TRACK_OBJECT, context, 7, kHere), "not tracked");
  KernelDeleteDC(context, 2, kHere);
}

}  // namespace
}  // namespace tarn::test
