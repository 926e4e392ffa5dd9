// The host's slot across calls: the record, the sibling's data in the list, conflicts.

#include <gtest/gtest.h>

#include "Internal/Tarnclasses_.h"
#include "support/FakeHost.h"
#include "support/SampleMails.h"

namespace tarn::test {
namespace {

TEST(SlotRoad, TakesTheRecordDirectlyWhenEmpty) {
  FakeHost host(kPlainMail);
  host.slot.dataSize = 99;
  ASSERT_EQ(host.info(), StatusOk);
  ASSERT_NE(Copy(host.slot.data), nullptr);
  EXPECT_EQ(Copy(host.slot.dataSize), 0u);
  EXPECT_EQ(host.slot.dataFormat, 4242);
  uint32_t signature;
  std::memcpy(&signature, host.slot.data, 4);
  EXPECT_EQ(signature, 0x545350u);
}

TEST(SlotRoad, KeepsTheSiblingsDataInAList) {
  char kept[8] = "kept";
  FakeHost host(kPlainMail);
  host.answer.data = kept;
  host.answer.size = sizeof kept;
  host.answer.dataFormat = 77;
  ASSERT_EQ(host.info(), StatusOk);
  EXPECT_EQ(host.calls[0].options.flags & HOST_LOAD_OPTIONS_HAS_DATA, 0u);

  ASSERT_EQ(host.slot.dataFormat, FILTER_DATA_LIST_FORMAT);
  EXPECT_EQ(Copy(host.slot.dataSize), 0u);
  const auto* const list = static_cast<const FilterDataList*>(host.slot.data);
  EXPECT_EQ(list->signature, 0x544C4D4Cu);
  EXPECT_EQ(list->count, 2);
  EXPECT_EQ(Copy(list->size), 64u);
  const auto* const entries = &list->entries[0];
  EXPECT_EQ(Copy(entries[0].size), 0u);
  EXPECT_EQ(entries[0].format, 4242);
  EXPECT_EQ(entries[0].flags, 0u);
  EXPECT_EQ(Copy(entries[1].data), kept);
  EXPECT_EQ(Copy(entries[1].size), sizeof kept);
  EXPECT_EQ(entries[1].format, 77);

  // The next calls pass it on.
  host.infoContext->messageNumber = 1;
  host.infoContext->raster.xResolution = 42;
  ASSERT_EQ(host.info(), StatusOk);
  EXPECT_EQ(host.calls[1].options.flags & HOST_LOAD_OPTIONS_HAS_DATA, HOST_LOAD_OPTIONS_HAS_DATA);
  EXPECT_EQ(Copy(host.calls[1].options.data), kept);
  EXPECT_EQ(Copy(host.calls[1].options.dataSize), sizeof kept);
  EXPECT_EQ(host.calls[1].options.dataFormat, 77);
  ASSERT_EQ(host.load(), StatusOk);
  EXPECT_EQ(Copy(host.calls[2].options.data), kept);
  EXPECT_EQ(host.calls[2].options.flags & HOST_LOAD_OPTIONS_HAS_DATA, HOST_LOAD_OPTIONS_HAS_DATA);
}

TEST(SlotRoad, PassesNothingBeyondTheList) {
  char kept[8] = "kept";
  FakeHost host(kPlainMail);
  host.answer.data = kept;
  ASSERT_EQ(host.info(), StatusOk);
  host.answer.data = nullptr;
  host.infoContext->raster.xResolution = 42;
  for (int32_t number : {2, 1000000, INT32_MAX, -1, -1000000}) {
    host.infoContext->messageNumber = number;
    host.infoContext->raster.yResolution += 1;
    ASSERT_EQ(host.info(), StatusOk);
    EXPECT_EQ(host.calls.back().options.flags & HOST_LOAD_OPTIONS_HAS_DATA, 0u) << number;
  }
}

TEST(SlotRoad, PassesEntryZeroForMessageNumberZero) {
  char kept[8] = "kept";
  FakeHost host(kPlainMail);
  host.answer.data = kept;
  ASSERT_EQ(host.info(), StatusOk);
  const auto* const list = static_cast<const FilterDataList*>(host.slot.data);
  host.answer.data = nullptr;
  host.infoContext->messageNumber = 0;
  host.infoContext->raster.xResolution = 42;
  ASSERT_EQ(host.info(), StatusOk);
  EXPECT_EQ(host.calls[1].options.data, Copy(list->entries[0].data));
}

TEST(SlotRoad, RefusesTheRecordWhereAnotherItemIs) {
  char other[64] = "another filter's item";
  FakeHost host(kHtmlMail);
  host.slot.data = other;
  host.slot.dataSize = 5;
  host.slot.dataFormat = 12;
  ASSERT_EQ(host.info(), StatusOk);  // the answer is given all the same
  EXPECT_EQ(host.hostInfo->pageCount, 3);
  EXPECT_EQ(Copy(host.slot.data), other);
  EXPECT_EQ(Copy(host.slot.dataSize), 5u);
  EXPECT_EQ(host.slot.dataFormat, 12);
  EXPECT_EQ(host.directory().listing(), "mail");
  host.slot.data = nullptr;
}

TEST(SlotRoad, PassesTheOtherItemOnForMessageNumberZero) {
  char other[64] = "another filter's item";
  FakeHost host(kPlainMail);
  host.slot.data = other;
  host.slot.dataSize = 5;
  host.slot.dataFormat = 12;
  host.infoContext->messageNumber = 0;
  ASSERT_EQ(host.info(), StatusOk);
  EXPECT_EQ(Copy(host.calls[0].options.data), other);
  EXPECT_EQ(Copy(host.calls[0].options.dataSize), 5u);
  EXPECT_EQ(host.calls[0].options.dataFormat, 12);
  EXPECT_EQ(host.calls[0].options.flags & HOST_LOAD_OPTIONS_HAS_DATA, HOST_LOAD_OPTIONS_HAS_DATA);
  host.slot.data = nullptr;
}

TEST(SlotRoad, MovesAnotherItemToEntryZeroForTheSiblingsData) {
  char other[64] = "another filter's item";
  char kept[8] = "kept";
  FakeHost host(kPlainMail);
  host.slot.data = other;
  host.slot.dataSize = 5;
  host.slot.dataFormat = 12;
  host.answer.data = kept;
  ASSERT_EQ(host.info(), StatusOk);
  ASSERT_EQ(host.slot.dataFormat, FILTER_DATA_LIST_FORMAT);
  auto* const list = static_cast<FilterDataList*>(host.slot.data);
  EXPECT_EQ(Copy(list->entries[0].data), other);
  EXPECT_EQ(Copy(list->entries[0].size), 5u);
  EXPECT_EQ(list->entries[0].format, 12);
  KernelFree(list, TARN_HERE);
  host.slot.data = nullptr;
}

TEST(SlotRoad, SurvivesAMalformedList) {
  FilterDataList list = {};
  list.signature = 0x544C4D4C;
  list.count = 1000;
  list.size = 64;
  FakeHost host(kPlainMail);
  host.slot.data = &list;
  host.slot.dataFormat = FILTER_DATA_LIST_FORMAT;
  for (int32_t number : {0, 1, 2}) {
    host.infoContext->messageNumber = number;
    ASSERT_EQ(host.info(), StatusOk);
    EXPECT_EQ(host.calls.back().options.flags & HOST_LOAD_OPTIONS_HAS_DATA, 0u);
  }
  ASSERT_EQ(host.load(), StatusOk);
  host.slot.data = nullptr;
}

TEST(SlotRoad, SurvivesANegativeMessageNumberWithSiblingData) {
  char kept[8] = "kept";
  FakeHost host(kPlainMail);
  host.answer.data = kept;
  host.infoContext->messageNumber = -1000;
  ASSERT_EQ(host.info(), StatusOk);
  EXPECT_NE(Copy(host.slot.data), nullptr);
}

}  // namespace
}  // namespace tarn::test
