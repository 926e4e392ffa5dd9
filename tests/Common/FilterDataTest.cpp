#include "Common/FilterData.h"

#include <gtest/gtest.h>

#include "KernelUse.h"

namespace tarn {
namespace {

// Twenty-four bytes an entry, and sixteen before the first.
static_assert(sizeof(FilterDataList) == 40 && sizeof(FilterDataEntry) == 24);

// The fields of packed records may lie anywhere, so comparisons take copies.
template <typename T>
T Copy(T value) {
  return value;
}

char itemA[] = "item a";
char itemB[] = "item b";

class FilterDataTest : public ::testing::Test {
 public:
  ~FilterDataTest() override {
    if (listBlock_ != nullptr) KernelFree(listBlock_, TARN_HERE);
    if (slot_.data != nullptr && slot_.dataFormat == -2 && slot_.data != listBlock_) {
      KernelFree(slot_.data, TARN_HERE);
    }
  }

 protected:
  // Puts a list with room for `capacity` entries into the slot.
  FilterDataList& putList(int32_t count, uint64_t capacity) {
    const uint64_t size = (capacity - 1) * 24 + 40;
    auto* const list = static_cast<FilterDataList*>(KernelAllocZero(size, 1, TARN_HERE));
    list->signature = 0x544C4D4C;
    list->count = count;
    list->size = size;
    slot_.data = list;
    slot_.dataSize = 0;
    slot_.dataFormat = -2;
    return *list;
  }

  FilterDataList& list() const { return *static_cast<FilterDataList*>(slot_.data); }

  // The list is broken by its test, and freed here.
  void expectMalformed() {
    listBlock_ = slot_.data;
    PstFilterData* found = nullptr;
    EXPECT_EQ(FindFilterData(&slot_, 0, &found), StatusBadArgument);
    EXPECT_EQ(found, nullptr);
    EXPECT_EQ(SlotList(&slot_), nullptr);
    const uint64_t calls = test::Allocations();
    for (const int32_t count : {0, 1, 2, 50})
      EXPECT_EQ(EnsureFilterDataList(&slot_, count), StatusBadArgument);
    EXPECT_EQ(SetFilterDataEntry(&slot_, 0, itemA, 1, 1), StatusBadArgument);
    EXPECT_EQ(SetFilterDataEntry(&slot_, 3, itemA, 1, 1), StatusBadArgument);
    EXPECT_EQ(test::Allocations(), calls);
    EXPECT_EQ(Copy(slot_.data), listBlock_);
  }

  FilterDataSlot slot_ = {};
  PstFilterData record_;
  void* listBlock_ = nullptr;
};

TEST_F(FilterDataTest, FindNeedsSlotDataAndOut) {
  PstFilterData* found = nullptr;
  EXPECT_EQ(FindFilterData(nullptr, 0, &found), StatusNullArgument);
  EXPECT_EQ(FindFilterData(&slot_, 0, &found), StatusNullArgument);
  slot_.data = &record_;
  EXPECT_EQ(FindFilterData(&slot_, 0, nullptr), StatusNullArgument);
  slot_.data = nullptr;
  slot_.dataFormat = -2;
  EXPECT_EQ(FindFilterData(&slot_, 0, &found), StatusNullArgument);
  EXPECT_EQ(found, nullptr);
}

TEST_F(FilterDataTest, FindTakesARecordWhateverTheFormatSays) {
  for (const int32_t format : {0, 387, -2}) {
    slot_.data = &record_;
    slot_.dataFormat = format;
    PstFilterData* found = nullptr;
    EXPECT_EQ(FindFilterData(&slot_, 0, &found), StatusOk);
    EXPECT_EQ(found, &record_);
    EXPECT_EQ(SlotList(&slot_), nullptr);
  }
  slot_ = {};
}

TEST_F(FilterDataTest, AnItemIsNoRecord) {
  slot_.data = itemA;
  slot_.dataFormat = 300;
  PstFilterData* found = nullptr;
  EXPECT_EQ(FindFilterData(&slot_, 0, &found), StatusBadArgument);
  // A list is one only when the format says so.
  FilterDataList& list = putList(2, 2);
  list.entries[0].data = &record_;
  slot_.dataFormat = 300;
  listBlock_ = slot_.data;
  EXPECT_EQ(FindFilterData(&slot_, 0, &found), StatusBadArgument);
  EXPECT_EQ(SlotList(&slot_), nullptr);
}

// The slot says that the item is shorter than any signature: nothing after it is read.
TEST_F(FilterDataTest, AnItemOfAFewBytesIsNotReadPastItsEnd) {
  for (const int32_t format : {300, -2}) {
    SizedBytes item = test::Bytes("PS");
    slot_.data = item.data();
    slot_.dataSize = 2;
    slot_.dataFormat = format;
    PstFilterData* found = nullptr;
    EXPECT_EQ(FindFilterData(&slot_, 0, &found), StatusBadArgument);
    slot_ = {};
  }
}

TEST_F(FilterDataTest, FindScansTheListForTheFirstRecord) {
  PstFilterData second;
  FilterDataList& list = putList(4, 4);
  PstFilterData* found = nullptr;
  EXPECT_EQ(FindFilterData(&slot_, 0, &found), StatusBadArgument);  // sound, but without a record
  EXPECT_EQ(SlotList(&slot_), &list);
  list.entries[1].data = itemA;
  list.entries[3].data = &second;
  EXPECT_EQ(FindFilterData(&slot_, 0, &found), StatusOk);
  EXPECT_EQ(found, &second);
  list.entries[2].data = &record_;
  EXPECT_EQ(FindFilterData(&slot_, 0, &found), StatusOk);
  EXPECT_EQ(found, &record_);
  list.count = 2;  // entries after the count are not in use
  EXPECT_EQ(FindFilterData(&slot_, 0, &found), StatusBadArgument);
}

TEST_F(FilterDataTest, TheSlotsSizeCountsWhenItIsNotZero) {
  FilterDataList& list = putList(2, 2);
  list.entries[0].data = &record_;
  PstFilterData* found = nullptr;
  slot_.dataSize = 64;
  EXPECT_EQ(FindFilterData(&slot_, 0, &found), StatusOk);
  EXPECT_EQ(SlotList(&slot_), &list);
}

TEST_F(FilterDataTest, AnotherSlotSizeIsMalformed) {
  putList(2, 2).entries[0].data = &record_;
  slot_.dataSize = 65;
  expectMalformed();
}

TEST_F(FilterDataTest, AnotherSignatureIsMalformed) {
  putList(2, 2).signature = 0x4C4D4C54;
  expectMalformed();
}

TEST_F(FilterDataTest, ListsOfLessThanTwoEntriesAreMalformed) {
  for (const int32_t count : {1, 0, -1, INT32_MIN}) {
    putList(count, 2).entries[0].data = &record_;
    expectMalformed();
    KernelFree(slot_.data, TARN_HERE);
    listBlock_ = nullptr;
    slot_ = {};
  }
}

TEST_F(FilterDataTest, AListTooSmallForItsCountIsMalformed) {
  FilterDataList& list = putList(2, 2);
  list.entries[0].data = &record_;
  list.size = 63;
  expectMalformed();
  list.size = 64;
  list.count = 3;
  expectMalformed();
  list.count = INT32_MAX;
  expectMalformed();
  list.size = 0;
  expectMalformed();
}

TEST_F(FilterDataTest, ASlotSizeBelowAnyListIsMalformedBeforeTheListIsRead) {
  SizedBytes small = test::Bytes("LMLT\2\0\0");
  slot_.data = small.data();
  slot_.dataSize = small.length();
  slot_.dataFormat = -2;
  expectMalformed();
  listBlock_ = nullptr;
  slot_ = {};
}

TEST_F(FilterDataTest, AListLargerThanItsCountIsSound) {
  FilterDataList& list = putList(2, 10);
  list.entries[1].data = &record_;
  PstFilterData* found = nullptr;
  EXPECT_EQ(FindFilterData(&slot_, 0, &found), StatusOk);
  EXPECT_EQ(SlotList(&slot_), &list);
}

TEST_F(FilterDataTest, SlotListOfNothingIsNull) {
  EXPECT_EQ(SlotList(nullptr), nullptr);
  EXPECT_EQ(SlotList(&slot_), nullptr);
  slot_.dataFormat = -2;
  EXPECT_EQ(SlotList(&slot_), nullptr);
}

TEST_F(FilterDataTest, EnsureOnAnEmptySlotMakesAListWithoutEntries) {
  slot_.dataSize = 99;
  EXPECT_EQ(EnsureFilterDataList(&slot_, 3), StatusOk);
  EXPECT_EQ(Copy(slot_.dataFormat), -2);
  EXPECT_EQ(Copy(slot_.dataSize), 0u);
  ASSERT_NE(Copy(slot_.data), nullptr);
  const std::string expected =
      test::Raw("LMLT\0\0\0\0\x58\0\0\0\0\0\0\0") + std::string(3 * 24, '\0');
  EXPECT_EQ(std::string(static_cast<char*>(slot_.data), 88), expected);
  // Until entries are counted it is no list.
  EXPECT_EQ(EnsureFilterDataList(&slot_, 3), StatusBadArgument);
}

TEST_F(FilterDataTest, EnsureOfOneMakesAListForAnEmptySlotOnly) {
  EXPECT_EQ(EnsureFilterDataList(&slot_, 1), StatusOk);
  EXPECT_EQ(Copy(slot_.dataFormat), -2);
  EXPECT_EQ(Copy(list().count), 0);
  EXPECT_EQ(Copy(list().size), 40u);
  KernelFree(slot_.data, TARN_HERE);

  slot_ = {};
  slot_.data = itemA;
  slot_.dataFormat = 300;
  EXPECT_EQ(EnsureFilterDataList(&slot_, 1), StatusOk);
  EXPECT_EQ(Copy(slot_.data), itemA);
  EXPECT_EQ(Copy(slot_.dataFormat), 300);
}

TEST_F(FilterDataTest, EnsureOfNothingChangesNothing) {
  EXPECT_EQ(EnsureFilterDataList(&slot_, 0), StatusOk);
  EXPECT_EQ(EnsureFilterDataList(&slot_, INT32_MIN), StatusOk);
  EXPECT_EQ(Copy(slot_.data), nullptr);
  EXPECT_EQ(EnsureFilterDataList(nullptr, 1), StatusNullArgument);
}

TEST_F(FilterDataTest, EnsureMovesASingleItemToEntryZero) {
  slot_.data = itemA;
  slot_.dataSize = 6;
  slot_.dataFormat = -1;  // kept as it is, unlike the format of an item that is stored
  slot_.defaultFormat = 400;
  EXPECT_EQ(EnsureFilterDataList(&slot_, 2), StatusOk);
  EXPECT_EQ(Copy(slot_.dataFormat), -2);
  EXPECT_EQ(Copy(slot_.dataSize), 0u);
  EXPECT_EQ(Copy(slot_.defaultFormat), 400);
  EXPECT_EQ(Copy(list().signature), 0x544C4D4Cu);
  EXPECT_EQ(Copy(list().count), 1);
  EXPECT_EQ(Copy(list().size), 64u);
  EXPECT_EQ(Copy(list().entries[0].data), itemA);
  EXPECT_EQ(Copy(list().entries[0].size), 6u);
  EXPECT_EQ(Copy(list().entries[0].format), -1);
  EXPECT_EQ(Copy(list().entries[0].flags), 0u);
  EXPECT_EQ(Copy(list().entries[1].data), nullptr);
}

TEST_F(FilterDataTest, EnsureGrowsAListAndClearsWhatIsNew) {
  FilterDataList& old = putList(2, 2);
  old.entries[0] = {&record_, 1, 2, 3};
  old.entries[1] = {itemA, 4, 5, 6};
  slot_.dataSize = 64;
  EXPECT_EQ(EnsureFilterDataList(&slot_, 2), StatusOk);
  EXPECT_EQ(Copy(slot_.dataSize), 64u);  // nothing to do
  EXPECT_EQ(EnsureFilterDataList(&slot_, 5), StatusOk);
  EXPECT_EQ(Copy(slot_.dataSize), 0u);
  EXPECT_EQ(Copy(list().count), 2);
  EXPECT_EQ(Copy(list().size), 136u);
  EXPECT_EQ(Copy(list().entries[0].data), &record_);
  EXPECT_EQ(Copy(list().entries[0].flags), 3u);
  EXPECT_EQ(Copy(list().entries[1].data), itemA);
  EXPECT_EQ(Copy(list().entries[1].size), 4u);
  const char* const fresh = static_cast<char*>(slot_.data) + 64;
  EXPECT_EQ(std::string(fresh, 72), std::string(72, '\0'));
}

// The room of a list is its count, so entries after the count are new, whatever they held.
TEST_F(FilterDataTest, EnsureTakesTheCountForTheRoom) {
  FilterDataList& old = putList(2, 10);
  old.entries[2] = {itemA, 1, 1, 1};
  EXPECT_EQ(EnsureFilterDataList(&slot_, 3), StatusOk);
  EXPECT_EQ(Copy(list().size), 88u);
  EXPECT_EQ(Copy(list().count), 2);
  EXPECT_EQ(Copy(list().entries[2].data), nullptr);
  EXPECT_EQ(Copy(list().entries[2].size), 0u);
}

TEST_F(FilterDataTest, EnsureWithoutMemoryChangesNothing) {
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_EQ(EnsureFilterDataList(&slot_, 2), StatusOutOfMemory);
  EXPECT_EQ(Copy(slot_.data), nullptr);
  EXPECT_EQ(Copy(slot_.dataFormat), 0);

  slot_.data = itemA;
  slot_.dataFormat = 300;
  slot_.dataSize = 6;
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_EQ(EnsureFilterDataList(&slot_, 2), StatusOutOfMemory);
  EXPECT_EQ(Copy(slot_.data), itemA);
  EXPECT_EQ(Copy(slot_.dataFormat), 300);
  EXPECT_EQ(Copy(slot_.dataSize), 6u);

  FilterDataList& old = putList(2, 2);
  old.entries[1].data = itemB;
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_EQ(EnsureFilterDataList(&slot_, 3), StatusOutOfMemory);
  EXPECT_EQ(Copy(slot_.data), &old);
  EXPECT_EQ(Copy(old.size), 64u);
  EXPECT_EQ(Copy(old.entries[1].data), itemB);
}

TEST_F(FilterDataTest, SetWithoutDataOrSlot) {
  EXPECT_EQ(SetFilterDataEntry(&slot_, 0, nullptr, 5, 5), StatusOk);
  EXPECT_EQ(SetFilterDataEntry(nullptr, 0, nullptr, 5, 5), StatusOk);
  EXPECT_EQ(Copy(slot_.data), nullptr);
  EXPECT_EQ(SetFilterDataEntry(nullptr, 0, itemA, 5, 5), StatusNullArgument);
}

TEST_F(FilterDataTest, SetOfAnImpossibleIndex) {
  EXPECT_EQ(SetFilterDataEntry(&slot_, -1, itemA, 5, 5), StatusListIndex);
  EXPECT_EQ(SetFilterDataEntry(&slot_, INT32_MIN, itemA, 5, 5), StatusListIndex);
  EXPECT_EQ(SetFilterDataEntry(&slot_, INT32_MAX, itemA, 5, 5), StatusListIndex);
  EXPECT_EQ(Copy(slot_.data), nullptr);
}

TEST_F(FilterDataTest, SetOfItemZeroGoesDirectlyIntoAnEmptySlot) {
  slot_.defaultFormat = 400;
  for (const auto& [format, stored] : {std::pair(300, 300), {-1, 400}, {-2, 400}, {0, 0}}) {
    slot_.data = nullptr;
    EXPECT_EQ(SetFilterDataEntry(&slot_, 0, itemA, 6, format), StatusOk);
    EXPECT_EQ(Copy(slot_.data), itemA);
    EXPECT_EQ(Copy(slot_.dataSize), 6u);
    EXPECT_EQ(Copy(slot_.dataFormat), stored);
  }
  // The same pointer is already there: nothing is stored anew.
  EXPECT_EQ(SetFilterDataEntry(&slot_, 0, itemA, 9, 500), StatusOk);
  EXPECT_EQ(Copy(slot_.dataSize), 6u);
  EXPECT_EQ(Copy(slot_.dataFormat), 0);
}

// A slot with another single item has room for one entry, so no list is made, and the item stays.
TEST_F(FilterDataTest, SetOfItemZeroIsRefusedByAnotherItem) {
  slot_.data = itemA;
  slot_.dataFormat = 300;
  EXPECT_EQ(SetFilterDataEntry(&slot_, 0, &record_, 0, -1), StatusSlotConflict);
  EXPECT_EQ(Copy(slot_.data), itemA);
  EXPECT_EQ(Copy(slot_.dataFormat), 300);
}

TEST_F(FilterDataTest, SetBesideASingleItemMakesAList) {
  slot_.data = &record_;
  slot_.dataFormat = 385;
  slot_.defaultFormat = 400;
  EXPECT_EQ(SetFilterDataEntry(&slot_, 2, itemA, 6, 369), StatusOk);
  EXPECT_EQ(Copy(slot_.dataFormat), -2);
  EXPECT_EQ(Copy(list().count), 3);
  EXPECT_EQ(Copy(list().size), 88u);
  EXPECT_EQ(Copy(list().entries[0].data), &record_);
  EXPECT_EQ(Copy(list().entries[0].format), 385);
  EXPECT_EQ(Copy(list().entries[1].data), nullptr);
  EXPECT_EQ(Copy(list().entries[2].data), itemA);
  EXPECT_EQ(Copy(list().entries[2].size), 6u);
  EXPECT_EQ(Copy(list().entries[2].format), 369);
  EXPECT_EQ(Copy(list().entries[2].flags), 0u);
  PstFilterData* found = nullptr;
  EXPECT_EQ(FindFilterData(&slot_, 0, &found), StatusOk);
  EXPECT_EQ(found, &record_);
}

// What a sibling keeps may be stored before the record is.
TEST_F(FilterDataTest, SetOnAnEmptySlotAndThenTheRecord) {
  slot_.defaultFormat = 400;
  EXPECT_EQ(SetFilterDataEntry(&slot_, 1, itemA, 6, -1), StatusOk);
  EXPECT_EQ(Copy(list().count), 2);
  EXPECT_EQ(Copy(list().entries[0].data), nullptr);
  EXPECT_EQ(Copy(list().entries[1].format), 400);
  EXPECT_EQ(EnsureFilterDataList(&slot_, 1), StatusOk);
  EXPECT_EQ(SetFilterDataEntry(&slot_, 0, &record_, 0, -2), StatusOk);
  EXPECT_EQ(Copy(list().entries[0].data), &record_);
  EXPECT_EQ(Copy(list().entries[0].format), 400);
  EXPECT_EQ(Copy(list().count), 2);
}

TEST_F(FilterDataTest, SetIntoAListKeepsOrRaisesTheCount) {
  FilterDataList& old = putList(3, 3);
  old.entries[1].flags = 9;
  EXPECT_EQ(SetFilterDataEntry(&slot_, 1, itemA, 6, 369), StatusOk);
  EXPECT_EQ(Copy(list().count), 3);
  EXPECT_EQ(Copy(list().entries[1].data), itemA);
  EXPECT_EQ(Copy(list().entries[1].flags), 0u);
  EXPECT_EQ(SetFilterDataEntry(&slot_, 4, itemB, 6, 369), StatusOk);
  EXPECT_EQ(Copy(list().count), 5);
  EXPECT_EQ(Copy(list().size), 136u);
  EXPECT_EQ(Copy(list().entries[3].data), nullptr);
  EXPECT_EQ(Copy(list().entries[4].data), itemB);
}

TEST_F(FilterDataTest, SetOverTheSameItemStoresAnewAndOverAnotherIsRefused) {
  FilterDataList& old = putList(2, 2);
  old.entries[1] = {itemA, 1, 1, 1};
  EXPECT_EQ(SetFilterDataEntry(&slot_, 1, itemA, 6, 369), StatusOk);
  EXPECT_EQ(Copy(list().entries[1].size), 6u);
  EXPECT_EQ(Copy(list().entries[1].format), 369);
  EXPECT_EQ(Copy(list().entries[1].flags), 0u);
  EXPECT_EQ(SetFilterDataEntry(&slot_, 1, itemB, 7, 226), StatusSlotConflict);
  EXPECT_EQ(Copy(list().entries[1].data), itemA);
  EXPECT_EQ(Copy(list().entries[1].size), 6u);
  EXPECT_EQ(SetFilterDataEntry(&slot_, 0, &record_, 0, 385), StatusOk);
  EXPECT_EQ(SetFilterDataEntry(&slot_, 0, itemB, 0, 385), StatusSlotConflict);
}

TEST_F(FilterDataTest, SetWithoutMemoryChangesNothing) {
  slot_.data = &record_;
  slot_.dataFormat = 385;
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_EQ(SetFilterDataEntry(&slot_, 1, itemA, 6, 369), StatusOutOfMemory);
  EXPECT_EQ(Copy(slot_.data), &record_);
  EXPECT_EQ(Copy(slot_.dataFormat), 385);
}

}  // namespace
}  // namespace tarn
