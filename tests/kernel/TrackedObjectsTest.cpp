#include <gtest/gtest.h>

#include "Scratch.h"
#include "Tarnbase/PlainKernel.h"

namespace tarn::test {
namespace {

constexpr const char16_t* kHere = u"TrackedObjectsTest.cpp";

TEST(TrackedObjects, CountsObjectsAndArrays) {
  int object = 0;
  int array[2] = {};
  KernelTrackObject(KERNEL_TRACK_OBJECT, &object, 1, kHere);
  KernelTrackObject(KERNEL_TRACK_ARRAY, array, 2, kHere);
  EXPECT_EQ(Usage().liveTrackedObjects, 2U);
  KernelUntrackObject(KERNEL_TRACK_OBJECT, &object, 3, kHere);
  EXPECT_EQ(Usage().liveTrackedObjects, 1U);
  KernelUntrackObject(KERNEL_TRACK_ARRAY, array, 4, kHere);
  EXPECT_EQ(Usage().liveTrackedObjects, 0U);
}

TEST(TrackedObjects, NullIsNoObject) {
  KernelTrackObject(KERNEL_TRACK_OBJECT, nullptr, 1, kHere);
  EXPECT_EQ(Usage().liveTrackedObjects, 0U);
}

TEST(TrackedObjects, OneAddressMayBeAnArrayAndItsFirstElement) {
  int array[2] = {};
  KernelTrackObject(KERNEL_TRACK_ARRAY, array, 1, kHere);
  KernelTrackObject(KERNEL_TRACK_OBJECT, &array[0], 2, kHere);
  EXPECT_EQ(Usage().liveTrackedObjects, 2U);
  KernelUntrackObject(KERNEL_TRACK_ARRAY, array, 3, kHere);
  KernelUntrackObject(KERNEL_TRACK_OBJECT, &array[0], 4, kHere);
  EXPECT_EQ(Usage().liveTrackedObjects, 0U);
}

TEST(TrackedObjects, AnObjectTrackedTwiceIsUntrackedTwice) {
  int object = 0;
  KernelTrackObject(KERNEL_TRACK_OBJECT, &object, 1, kHere);
  KernelTrackObject(KERNEL_TRACK_OBJECT, &object, 2, kHere);
  KernelUntrackObject(KERNEL_TRACK_OBJECT, &object, 3, kHere);
  EXPECT_EQ(Usage().liveTrackedObjects, 1U);
  KernelUntrackObject(KERNEL_TRACK_OBJECT, &object, 4, kHere);
  EXPECT_EQ(Usage().liveTrackedObjects, 0U);
}

TEST(TrackedObjectsDeathTest, UntrackingAnUntrackedObjectAborts) {
  int object = 0;
  EXPECT_DEATH(KernelUntrackObject(KERNEL_TRACK_OBJECT, &object, 42, kHere),
               "^Tarnbase: KernelUntrackObject: not tracked with this kind: 0x\\w+ "
               "\\(line 42 of TrackedObjectsTest.cpp\\)");
  EXPECT_DEATH(KernelUntrackObject(KERNEL_TRACK_OBJECT, nullptr, 43, kHere), "not tracked");
}

TEST(TrackedObjectsDeathTest, UntrackingWithTheOtherKindAborts) {
  int object = 0;
  KernelTrackObject(KERNEL_TRACK_OBJECT, &object, 1, kHere);
  EXPECT_DEATH(KernelUntrackObject(KERNEL_TRACK_ARRAY, &object, 2, kHere), "not tracked");
  KernelUntrackObject(KERNEL_TRACK_OBJECT, &object, 3, kHere);
}

}  // namespace
}  // namespace tarn::test
