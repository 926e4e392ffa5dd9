#include <gtest/gtest.h>

#include "Scratch.h"
#include "TarnPst.h"
#include "Tarnbase/PlainKernel.h"

namespace tarn::test {
namespace {

constexpr const char16_t* kHere = u"FaultsTest.cpp";

class Faults : public Scratch {
 protected:
  uint64_t Open(const std::string& name) {
    return KernelFileOpen(WidePathOf(name).c_str(), KERNEL_OPEN_READ, KERNEL_OPEN_MODE);
  }
  uint64_t Create(const std::string& name) {
    return KernelFileOpen(WidePathOf(name).c_str(), KERNEL_OPEN_CREATE, KERNEL_OPEN_MODE);
  }
};

TEST_F(Faults, OnlyTheOrdinalCallFails) {
  PlainKernelFailAt(PlainKernelFaultMemory, 3);
  void* const first = KernelAlloc(1, 1, 1, kHere);
  void* second = KernelAllocZero(1, 1, 1, kHere);
  EXPECT_NE(first, nullptr);
  EXPECT_NE(second, nullptr);
  EXPECT_EQ(KernelRealloc(second, 9, 1, kHere), nullptr);
  second = KernelRealloc(second, 9, 1, kHere);
  EXPECT_NE(second, nullptr);
  KernelFree(first, 1, kHere);
  KernelFree(second, 1, kHere);
}

TEST_F(Faults, EachOperationOfTheMemoryGroupFails) {
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_EQ(KernelAlloc(1, 1, 1, kHere), nullptr);
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_EQ(KernelAllocZero(1, 1, 1, kHere), nullptr);
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  EXPECT_EQ(KernelRealloc(nullptr, 1, 1, kHere), nullptr);
}

TEST_F(Faults, CallsThatFailOnTheirOwnCountToo) {
  PlainKernelFailAt(PlainKernelFaultMemory, 2);
  EXPECT_EQ(KernelAlloc(UINT64_MAX, 2, 1, kHere), nullptr);
  EXPECT_EQ(KernelAlloc(1, 1, 1, kHere), nullptr);
  void* const block = KernelAlloc(1, 1, 1, kHere);
  EXPECT_NE(block, nullptr);
  KernelFree(block, 1, kHere);

  char out[4];
  PlainKernelFailAt(PlainKernelFaultText, 2);
  EXPECT_EQ(KernelWideToUtf8(u"", 0, out, 4), 0);
  EXPECT_EQ(KernelWideToUtf8(u"a", 1, out, 4), 0);
  EXPECT_EQ(KernelWideToUtf8(u"a", 1, out, 4), 1);
}

TEST_F(Faults, AReallocationThatFailsOnItsOwnCountsToo) {
  void* block = KernelAlloc(1, 1, 1, kHere);
  PlainKernelFailAt(PlainKernelFaultMemory, 2);
  EXPECT_EQ(KernelRealloc(block, UINT64_MAX, 1, kHere), nullptr);
  EXPECT_EQ(KernelAlloc(1, 1, 1, kHere), nullptr);
  void* const other = KernelAlloc(1, 1, 1, kHere);
  EXPECT_NE(other, nullptr);
  KernelFree(other, 1, kHere);
  KernelFree(block, 1, kHere);
}

TEST_F(Faults, OpensThatFailOnTheirOwnCountToo) {
  Put("file", "abc");
  PlainKernelFailAt(PlainKernelFaultOpen, 2);
  EXPECT_EQ(KernelFileOpen(u"", KERNEL_OPEN_READ, KERNEL_OPEN_MODE), KERNEL_BAD_HANDLE);
  EXPECT_EQ(Open("file"), KERNEL_BAD_HANDLE);
  const uint64_t handle = Open("file");
  EXPECT_NE(handle, KERNEL_BAD_HANDLE);
  KernelFileClose(handle);
}

TEST_F(Faults, RawCreatesThatFailOnTheirOwnCountToo) {
  const std::u16string path = WidePathOf("raw");
  PlainKernelFailAt(PlainKernelFaultOpen, 2);
  EXPECT_EQ(KernelRawFileCreate(u"", 0), KERNEL_BAD_HANDLE);
  EXPECT_EQ(KernelRawFileCreate(path.c_str(), 0), KERNEL_BAD_HANDLE);
  EXPECT_FALSE(Exists("raw"));
  const uint64_t handle = KernelRawFileCreate(path.c_str(), 0);
  EXPECT_NE(handle, KERNEL_BAD_HANDLE);
  KernelRawFileClose(handle, 0);
  KernelDeleteFile(path.c_str());
}

TEST_F(Faults, TemporaryNamesThatFailOnTheirOwnCountToo) {
  const std::u16string directory = Widen(Root());
  char16_t name[264] = {};
  PlainKernelFailAt(PlainKernelFaultOpen, 2);
  EXPECT_EQ(KernelTempFileName(directory.c_str(), nullptr, 264, 1, u"pst", nullptr),
            StatusCreateFailed);
  EXPECT_EQ(KernelTempFileName(directory.c_str(), name, 264, 1, u"pst", nullptr),
            StatusCreateFailed);
  EXPECT_EQ(Entries(), 0U);
  EXPECT_EQ(KernelTempFileName(directory.c_str(), name, 264, 1, u"pst", nullptr), StatusOk);
  EXPECT_EQ(Entries(), 1U);
  KernelDeleteFile(name);
}

TEST_F(Faults, MemoryFilesThatFailOnTheirOwnCountToo) {
  uint64_t handle = KERNEL_BAD_HANDLE;
  void* state = nullptr;
  PlainKernelFailAt(PlainKernelFaultOpen, 2);
  EXPECT_EQ(KernelMemFileOpen(nullptr, &state, KERNEL_MEMFILE_EMPTY, nullptr, 0, 0),
            StatusCreateFailed);
  EXPECT_EQ(KernelMemFileOpen(&handle, &state, KERNEL_MEMFILE_EMPTY, nullptr, 0, 0),
            StatusCreateFailed);
  EXPECT_EQ(KernelMemFileOpen(&handle, &state, KERNEL_MEMFILE_EMPTY, nullptr, 0, 0), StatusOk);
  KernelFileClose(handle);
  EXPECT_EQ(KernelMemFileClose(state, nullptr, nullptr, nullptr), StatusOk);
}

TEST_F(Faults, ReadsThatFailOnTheirOwnCountToo) {
  Put("file", "abcdefghijkl");
  const uint64_t handle = Open("file");
  char bytes[4] = {};
  PlainKernelFailAt(PlainKernelFaultRead, 2);
  EXPECT_EQ(KernelFileRead(KERNEL_BAD_HANDLE, bytes, 3), 0U);
  EXPECT_EQ(KernelFileRead(handle, bytes, 3), 2U);
  EXPECT_EQ(KernelFileRead(handle, bytes, 3), 3U);
  EXPECT_STREQ(bytes, "cde");
  PlainKernelFailAt(PlainKernelFaultRead, 2);
  EXPECT_EQ(KernelFileReadLarge(KERNEL_BAD_HANDLE, bytes, 3), 0U);
  EXPECT_EQ(KernelFileReadLarge(handle, bytes, 3), 2U);
  EXPECT_EQ(KernelFileReadLarge(handle, bytes, 3), 3U);
  EXPECT_STREQ(bytes, "hij");
  KernelFileClose(handle);
}

TEST_F(Faults, WritesThatFailOnTheirOwnCountToo) {
  const uint64_t handle = Create("file");
  PlainKernelFailAt(PlainKernelFaultWrite, 2);
  EXPECT_EQ(KernelFileWrite(KERNEL_BAD_HANDLE, "---", 3), 0U);
  EXPECT_EQ(KernelFileWrite(handle, "abc", 3), 2U);
  EXPECT_EQ(KernelFileWrite(handle, "def", 3), 3U);
  PlainKernelFailAt(PlainKernelFaultWrite, 2);
  EXPECT_EQ(KernelFileWriteLarge(KERNEL_BAD_HANDLE, "---", 3), 0U);
  EXPECT_EQ(KernelFileWriteLarge(handle, "ghi", 3), 2U);
  EXPECT_EQ(KernelFileWriteLarge(handle, "jkl", 3), 3U);
  KernelFileClose(handle);
  EXPECT_EQ(Get("file"), "abdefghjkl");

  const std::u16string raw = WidePathOf("raw");
  const uint64_t rawHandle = KernelRawFileCreate(raw.c_str(), 0);
  PlainKernelFailAt(PlainKernelFaultWrite, 2);
  EXPECT_EQ(KernelRawFileWrite(KERNEL_BAD_HANDLE, "---", 3, 0), 0U);
  EXPECT_EQ(KernelRawFileWrite(rawHandle, "123", 3, 0), 2U);
  EXPECT_EQ(KernelRawFileWrite(rawHandle, "456", 3, 0), 3U);
  KernelRawFileClose(rawHandle, 0);
  EXPECT_EQ(Get("raw"), "12456");
  KernelDeleteFile(raw.c_str());
}

TEST_F(Faults, SeeksThatFailOnTheirOwnCountToo) {
  Put("file", "abcdef");
  const uint64_t handle = Open("file");
  PlainKernelFailAt(PlainKernelFaultSeek, 2);
  EXPECT_EQ(KernelFileSeek(KERNEL_BAD_HANDLE, 3, KERNEL_SEEK_START), UINT64_MAX);
  EXPECT_EQ(KernelFileSeek(handle, 3, KERNEL_SEEK_START), UINT64_MAX);
  EXPECT_EQ(KernelFileSeek(handle, 3, KERNEL_SEEK_START), 3U);
  KernelFileClose(handle);
}

TEST_F(Faults, RefusalsOfTheBudgetCountToo) {
  PlainKernelSetMemoryBudget(10);
  PlainKernelFailAt(PlainKernelFaultBudget, 2);
  EXPECT_EQ(KernelMemoryReport(KERNEL_MEMORY_WANT, 11, 0), StatusOutOfMemory);
  EXPECT_EQ(KernelMemoryReport(KERNEL_MEMORY_WANT, 1, 0), StatusOutOfMemory);
  EXPECT_EQ(KernelMemoryReport(KERNEL_MEMORY_WANT, 1, 0), StatusOk);
  EXPECT_EQ(Usage().reportedBytes, 1U);
  EXPECT_EQ(KernelMemoryReport(KERNEL_MEMORY_RETURN, 1, 0), StatusOk);
}

TEST_F(Faults, OrdinalZeroEndsTheInjection) {
  PlainKernelFailAt(PlainKernelFaultSeek, 1);
  PlainKernelFailAt(PlainKernelFaultSeek, 0);
  Put("file", "abc");
  const uint64_t handle = Open("file");
  EXPECT_EQ(KernelFileSeek(handle, 2, KERNEL_SEEK_START), 2U);
  KernelFileClose(handle);
}

TEST_F(Faults, EarlierCallsAreNotCounted) {
  char16_t wide[4];
  EXPECT_EQ(KernelUtf8ToWide("a", 1, wide, 4), 1);
  PlainKernelFailAt(PlainKernelFaultText, 2);
  EXPECT_EQ(KernelUtf8ToWide("a", 1, wide, 4), 1);
  EXPECT_EQ(KernelUtf8ToWide("a", 1, wide, 4), 0);
  EXPECT_EQ(KernelUtf8ToWide("a", 1, wide, 4), 1);
}

TEST_F(Faults, GroupsCountIndependently) {
  PlainKernelFailAt(PlainKernelFaultText, 1);
  PlainKernelFailAt(PlainKernelFaultBudget, 1);
  void* const block = KernelAlloc(1, 1, 1, kHere);
  EXPECT_NE(block, nullptr);
  KernelFree(block, 1, kHere);
  char out[2];
  EXPECT_EQ(KernelWideToUtf8(u"a", 1, out, 2), 0);
  EXPECT_EQ(KernelMemoryReport(KERNEL_MEMORY_WANT, 1, 0), StatusOutOfMemory);
}

TEST_F(Faults, EachOperationOfTheOpenGroupFailsAndLeavesNothing) {
  Put("file", "abc");
  PlainKernelFailAt(PlainKernelFaultOpen, 1);
  EXPECT_EQ(Open("file"), KERNEL_BAD_HANDLE);
  PlainKernelFailAt(PlainKernelFaultOpen, 1);
  EXPECT_EQ(KernelRawFileCreate(WidePathOf("raw").c_str(), 0), KERNEL_BAD_HANDLE);
  PlainKernelFailAt(PlainKernelFaultOpen, 1);
  char16_t name[264];
  EXPECT_EQ(KernelTempFileName(Widen(Root()).c_str(), name, 264, 1, u"pst", nullptr),
            StatusCreateFailed);
  PlainKernelFailAt(PlainKernelFaultOpen, 1);
  uint64_t handle = 0;
  void* state = nullptr;
  EXPECT_EQ(KernelMemFileOpen(&handle, &state, KERNEL_MEMFILE_EMPTY, nullptr, 0, 0),
            StatusCreateFailed);
  EXPECT_EQ(Entries(), 1U);
  EXPECT_EQ(Usage().temporaryFiles, 0U);
}

TEST_F(Faults, AFailedReadDeliversOneByteLess) {
  Put("file", "abcdef");
  const uint64_t handle = Open("file");
  char bytes[8] = {};
  PlainKernelFailAt(PlainKernelFaultRead, 1);
  EXPECT_EQ(KernelFileRead(handle, bytes, 3), 2U);
  EXPECT_STREQ(bytes, "ab");
  EXPECT_EQ(KernelFileSeek(handle, 0, KERNEL_SEEK_CURRENT), 2U);
  PlainKernelFailAt(PlainKernelFaultRead, 1);
  EXPECT_EQ(KernelFileReadLarge(handle, bytes, 4), 3U);
  EXPECT_STREQ(bytes, "cde");
  PlainKernelFailAt(PlainKernelFaultRead, 1);
  EXPECT_EQ(KernelFileRead(handle, bytes, 0), 0U);
  KernelFileClose(handle);
}

TEST_F(Faults, OnlyTheOrdinalReadDeliversLess) {
  Put("file", "abcdefghijklmnop");
  const uint64_t handle = Open("file");
  char bytes[4] = {};
  PlainKernelFailAt(PlainKernelFaultRead, 2);
  EXPECT_EQ(KernelFileRead(handle, bytes, 3), 3U);
  EXPECT_STREQ(bytes, "abc");
  EXPECT_EQ(KernelFileRead(handle, bytes, 3), 2U);
  EXPECT_EQ(KernelFileRead(handle, bytes, 3), 3U);
  EXPECT_STREQ(bytes, "fgh");
  PlainKernelFailAt(PlainKernelFaultRead, 2);
  EXPECT_EQ(KernelFileReadLarge(handle, bytes, 3), 3U);
  EXPECT_STREQ(bytes, "ijk");
  EXPECT_EQ(KernelFileReadLarge(handle, bytes, 3), 2U);
  EXPECT_EQ(KernelFileReadLarge(handle, bytes, 3), 3U);
  EXPECT_STREQ(bytes, "nop");
  KernelFileClose(handle);
}

TEST_F(Faults, AFailedWriteTakesOneByteLess) {
  const uint64_t handle = Create("file");
  PlainKernelFailAt(PlainKernelFaultWrite, 1);
  EXPECT_EQ(KernelFileWrite(handle, "abc", 3), 2U);
  PlainKernelFailAt(PlainKernelFaultWrite, 1);
  EXPECT_EQ(KernelFileWriteLarge(handle, "xyz", 3), 2U);
  KernelFileClose(handle);
  EXPECT_EQ(Get("file"), "abxy");

  const std::u16string raw = WidePathOf("raw");
  const uint64_t rawHandle = KernelRawFileCreate(raw.c_str(), 0);
  PlainKernelFailAt(PlainKernelFaultWrite, 2);
  EXPECT_EQ(KernelRawFileWrite(rawHandle, "12", 2, 0), 2U);
  EXPECT_EQ(KernelRawFileWrite(rawHandle, "34", 2, 0), 1U);
  KernelRawFileClose(rawHandle, 0);
  EXPECT_EQ(Get("raw"), "123");
  KernelDeleteFile(raw.c_str());
}

TEST_F(Faults, AFailedSeekDoesNotMove) {
  Put("file", "abcdef");
  const uint64_t handle = Open("file");
  ASSERT_EQ(KernelFileSeek(handle, 4, KERNEL_SEEK_START), 4U);
  PlainKernelFailAt(PlainKernelFaultSeek, 1);
  EXPECT_EQ(KernelFileSeek(handle, 1, KERNEL_SEEK_START), UINT64_MAX);
  EXPECT_EQ(KernelFileSeek(handle, 0, KERNEL_SEEK_CURRENT), 4U);
  KernelFileClose(handle);
}

TEST_F(Faults, OnlyAskingForMemoryCountsForTheBudgetGroup) {
  PlainKernelFailAt(PlainKernelFaultBudget, 1);
  EXPECT_EQ(KernelMemoryReport(KERNEL_MEMORY_RETURN, 0, 0), StatusOk);
  EXPECT_EQ(KernelMemoryReport(KERNEL_MEMORY_FAILED, 5, 0), StatusOutOfMemory);
  EXPECT_EQ(KernelMemoryReport(KERNEL_MEMORY_WANT, 5, 0), StatusOutOfMemory);
  EXPECT_EQ(Usage().reportedBytes, 0U);
}

TEST_F(Faults, FromAnOrdinalOnEachCallFails) {
  PlainKernelFailFrom(PlainKernelFaultMemory, 2);
  void* const block = KernelAlloc(1, 1, 1, kHere);
  EXPECT_NE(block, nullptr);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(KernelAlloc(1, 1, 1, kHere), nullptr);
    EXPECT_EQ(KernelAllocZero(1, 1, 1, kHere), nullptr);
    EXPECT_EQ(KernelRealloc(block, 2, 1, kHere), nullptr);
  }
  char out[2];
  EXPECT_EQ(KernelWideToUtf8(u"a", 1, out, 2), 1);  // another group
  PlainKernelFailFrom(PlainKernelFaultMemory, 0);
  void* const other = KernelAlloc(1, 1, 1, kHere);
  EXPECT_NE(other, nullptr);
  KernelFree(other, 1, kHere);
  KernelFree(block, 1, kHere);
}

TEST_F(Faults, CallsThatFailOnTheirOwnCountOnTheWayToTheFirstOfMany) {
  PlainKernelFailFrom(PlainKernelFaultMemory, 2);
  EXPECT_EQ(KernelAlloc(UINT64_MAX, 2, 1, kHere), nullptr);
  EXPECT_EQ(KernelAlloc(1, 1, 1, kHere), nullptr);
  EXPECT_EQ(KernelAlloc(1, 1, 1, kHere), nullptr);
}

TEST_F(Faults, EachControlReplacesWhatTheOtherSet) {
  char16_t wide[2];
  PlainKernelFailFrom(PlainKernelFaultText, 1);
  PlainKernelFailAt(PlainKernelFaultText, 1);
  EXPECT_EQ(KernelUtf8ToWide("a", 1, wide, 2), 0);
  EXPECT_EQ(KernelUtf8ToWide("a", 1, wide, 2), 1);
  PlainKernelFailAt(PlainKernelFaultText, 1);
  PlainKernelFailFrom(PlainKernelFaultText, 2);
  EXPECT_EQ(KernelUtf8ToWide("a", 1, wide, 2), 1);
  EXPECT_EQ(KernelUtf8ToWide("a", 1, wide, 2), 0);
  EXPECT_EQ(KernelUtf8ToWide("a", 1, wide, 2), 0);
  PlainKernelFailAt(PlainKernelFaultText, 0);
  EXPECT_EQ(KernelUtf8ToWide("a", 1, wide, 2), 1);
}

TEST_F(Faults, TheLargestOrdinalIsNeverReached) {
  char16_t wide[2];
  for (const auto set : {&PlainKernelFailAt, &PlainKernelFailFrom}) {
    set(PlainKernelFaultText, UINT64_MAX);
    EXPECT_EQ(KernelUtf8ToWide("a", 1, wide, 2), 1);
    EXPECT_EQ(KernelUtf8ToWide("a", 1, wide, 2), 1);
    set(PlainKernelFaultText, 0);
  }
}

TEST_F(Faults, UnknownGroupsAreIgnored) {
  for (const int32_t group : {INT32_MIN, -1, 0, 8, INT32_MAX}) {
    PlainKernelFailAt(group, 1);
    PlainKernelFailFrom(group, 1);
  }
  KernelFree(KernelAlloc(1, 1, 1, kHere), 1, kHere);
}

}  // namespace
}  // namespace tarn::test
