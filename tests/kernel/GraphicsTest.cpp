#include <gtest/gtest.h>

#include "LogFontRecord.h"
#include "Scratch.h"
#include "Tarnbase/PlainKernel.h"

namespace tarn::test {
namespace {

constexpr const char16_t* kHere = u"GraphicsTest.cpp";

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

TEST(Graphics, NoRecordNoFont) { EXPECT_EQ(KernelCreateFont(nullptr, 1, kHere), nullptr); }

TEST(GraphicsDeathTest, DeletingWhatIsNotLiveAborts) {
  int other = 0;
  void* const context = KernelCreateDC(0, 1, kHere);
  EXPECT_DEATH(KernelDeleteFont(context, 5, kHere),
               "^Tarnbase: KernelDeleteFont: not a live object of this kind: 0x\\w+ "
               "\\(line 5 of GraphicsTest.cpp\\)");
  EXPECT_DEATH(KernelDeleteDC(&other, 6, kHere), "KernelDeleteDC: not a live object");
  EXPECT_DEATH(KernelUntrackObject(KERNEL_TRACK_OBJECT, context, 7, kHere), "not tracked");
  KernelDeleteDC(context, 2, kHere);
}

}  // namespace
}  // namespace tarn::test
