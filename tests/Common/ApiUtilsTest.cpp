#include "Common/ApiUtils.h"

#include <gtest/gtest.h>

#include "KernelUse.h"
#include "support/TempDirectory.h"

namespace {

uint64_t g_memoryFilesClosed = 0;

}  // namespace

extern "C" {

int32_t __real_KernelMemFileClose(void* state, void** block, uint64_t* length, uint64_t* capacity);

int32_t __wrap_KernelMemFileClose(void* state, void** block, uint64_t* length, uint64_t* capacity) {
  ++g_memoryFilesClosed;
  return __real_KernelMemFileClose(state, block, length, capacity);
}

}  // extern "C"

namespace tarn {
namespace {

using test::Allocations;
using test::Usage;

TEST(WideLength, CountsUnitsInFrontOfTheNul) {
  EXPECT_EQ(WideLength(u""), 0u);
  EXPECT_EQ(WideLength(u"ab\0c"), 2u);
  EXPECT_EQ(WideLength(u"\U0001F600"), 2u);
}

TEST(WideText, ConvertsWithItsTerminator) {
  const WideText text("a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
  EXPECT_EQ(text.status(), StatusOk);
  ASSERT_NE(text.get(), nullptr);
  EXPECT_EQ(std::u16string(text.get()), u"a\u00E9\u20AC\U0001F600");
}

TEST(WideText, RoomIsFourCharactersAByteAndFour) {
  const uint64_t before = Usage().liveBytes;
  const WideText text("abc");
  EXPECT_EQ(Usage().liveBytes - before, (4 * 3 + 4) * 2u);
}

TEST(WideText, TheEmptyTextNeedsNoBlock) {
  const uint64_t calls = Allocations();
  const WideText empty("");
  EXPECT_EQ(empty.status(), StatusOk);
  EXPECT_EQ(std::u16string(empty.get()), u"");
  const WideText null(nullptr);
  EXPECT_EQ(null.status(), StatusOk);
  EXPECT_EQ(std::u16string(null.get()), u"");
  EXPECT_EQ(Allocations(), calls);
}

TEST(WideText, Failures) {
  const WideText malformed("a\xC3");
  EXPECT_EQ(malformed.status(), StatusPathFromUtf8Failed);
  EXPECT_EQ(malformed.get(), nullptr);
  PlainKernelFailAt(PlainKernelFaultText, 1);
  const WideText refused("a");
  EXPECT_EQ(refused.status(), StatusPathFromUtf8Failed);
  EXPECT_EQ(refused.get(), nullptr);
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  const WideText starved("a");
  EXPECT_EQ(starved.status(), StatusOutOfMemory);
  EXPECT_EQ(starved.get(), nullptr);
}

TEST(Utf8Text, ConvertsWithItsTerminator) {
  const Utf8Text text(u"a\u00E9\u20AC\U0001F600");
  EXPECT_EQ(text.status(), StatusOk);
  EXPECT_STREQ(text.get(), "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
}

TEST(Utf8Text, RoomIsFourBytesACharacterAndFour) {
  const uint64_t before = Usage().liveBytes;
  const Utf8Text text(u"abc");
  EXPECT_EQ(Usage().liveBytes - before, 4 * 3 + 4u);
}

TEST(Utf8Text, TheEmptyTextNeedsNoBlock) {
  const uint64_t calls = Allocations();
  const Utf8Text empty(u"");
  EXPECT_EQ(empty.status(), StatusOk);
  EXPECT_STREQ(empty.get(), "");
  const Utf8Text null(nullptr);
  EXPECT_EQ(null.status(), StatusOk);
  EXPECT_STREQ(null.get(), "");
  EXPECT_EQ(Allocations(), calls);
}

TEST(Utf8Text, FailuresAndTheBlockThatIsKept) {
  const uint64_t blocks = Usage().liveBlocks;
  {
    PlainKernelFailAt(PlainKernelFaultText, 1);
    const Utf8Text refused(u"a");
    EXPECT_EQ(refused.status(), StatusPathToUtf8Failed);
    EXPECT_EQ(refused.get(), nullptr);
    EXPECT_EQ(Usage().liveBlocks, blocks + 1);
  }
  EXPECT_EQ(Usage().liveBlocks, blocks);
  PlainKernelFailAt(PlainKernelFaultMemory, 1);
  const Utf8Text starved(u"a");
  EXPECT_EQ(starved.status(), StatusOutOfMemory);
  EXPECT_EQ(starved.get(), nullptr);
}

class FileGuardTest : public ::testing::Test {
 protected:
  test::TempDirectory directory_;
  const std::u16string path_ = directory_.wide() + u"/file";
};

TEST_F(FileGuardTest, ClosesHostFilesInModesBelowThree) {
  for (const auto mode : {FileGuard::Read, FileGuard::Write, FileGuard::ReadWrite}) {
    const uint64_t handles = Usage().openHandles;
    {
      FileGuard guard(mode, KernelFileOpen(path_.c_str(), KERNEL_OPEN_CREATE, KERNEL_OPEN_MODE));
      ASSERT_TRUE(guard.isOpen());
      EXPECT_EQ(KernelFileWrite(guard.handle(), "ab", 2), 2u);
      EXPECT_EQ(Usage().openHandles, handles + 1);
    }
    EXPECT_EQ(Usage().openHandles, handles);
  }
}

TEST_F(FileGuardTest, ClosesRawFilesInModeThree) {
  const uint64_t handles = Usage().openHandles;
  FileGuard guard(FileGuard::Raw, KernelRawFileCreate(path_.c_str(), 0));
  ASSERT_TRUE(guard.isOpen());
  guard.close();
  EXPECT_EQ(Usage().openHandles, handles);
  EXPECT_FALSE(guard.isOpen());
  EXPECT_EQ(guard.handle(), KERNEL_BAD_HANDLE);
  guard.close();
  KernelDeleteFile(path_.c_str());
}

TEST_F(FileGuardTest, AnEmptyOneClosesNothing) {
  FileGuard empty(FileGuard::Read);
  EXPECT_FALSE(empty.isOpen());
  FileGuard failed(FileGuard::Read, KernelFileOpen(path_.c_str(), KERNEL_OPEN_READ, 256));
  EXPECT_FALSE(failed.isOpen());
}

TEST_F(FileGuardTest, AnAbandonedFileStaysOpen) {
  uint64_t handle = KERNEL_BAD_HANDLE;
  {
    FileGuard guard(FileGuard::Write, KernelFileOpen(path_.c_str(), KERNEL_OPEN_CREATE, 256));
    handle = guard.handle();
    guard.abandon();
  }
  EXPECT_EQ(KernelFileWrite(handle, "ab", 2), 2u);
  KernelFileClose(handle);
}

class MemoryFileGuardTest : public ::testing::Test {
 protected:
  // Writes so much into a memory file over `block` under the guard that the block moves or grows.
  void WriteUnder(MemoryFileGuard& guard, void** block, uint64_t capacity, std::string_view bytes) {
    uint64_t handle = KERNEL_BAD_HANDLE;
    void* state = nullptr;
    ASSERT_EQ(KernelMemFileOpen(&handle, &state, KERNEL_MEMFILE_EMPTY, *block, 0, capacity),
              StatusOk);
    guard.open(state, block);
    EXPECT_EQ(KernelFileWriteLarge(handle, bytes.data(), bytes.size()), bytes.size());
    KernelFileClose(handle);
  }
};

TEST_F(MemoryFileGuardTest, HandsTheBlockToAPointerThatIsAsItWas) {
  void* block = nullptr;
  {
    MemoryFileGuard guard;
    WriteUnder(guard, &block, 0, "hello");
    EXPECT_EQ(block, nullptr);
    guard.end();
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(guard.length(), 5u);
    EXPECT_GE(guard.capacity(), 5u);
    guard.end();
  }
  EXPECT_EQ(std::string_view(static_cast<char*>(block), 5), "hello");
  KernelFree(block, TARN_HERE);
}

TEST_F(MemoryFileGuardTest, ABlockThatDidNotMoveStays) {
  void* block = KernelAlloc(100, 1, TARN_HERE);
  void* const given = block;
  {
    MemoryFileGuard guard;
    WriteUnder(guard, &block, 100, "hello");
  }
  EXPECT_EQ(block, given);
  EXPECT_EQ(std::string_view(static_cast<char*>(block), 5), "hello");
  KernelFree(block, TARN_HERE);
}

TEST_F(MemoryFileGuardTest, APointerThatHasChangedKeepsItsValue) {
  void* block = nullptr;
  void* const own = KernelAlloc(1, 1, TARN_HERE);
  {
    MemoryFileGuard guard;
    WriteUnder(guard, &block, 0, "hello");
    block = own;
  }
  EXPECT_EQ(block, own);
  KernelFree(own, TARN_HERE);
}

TEST_F(MemoryFileGuardTest, OpeningAnotherEndsTheFirst) {
  void* first = nullptr;
  void* second = nullptr;
  {
    MemoryFileGuard guard;
    WriteUnder(guard, &first, 0, "one");
    WriteUnder(guard, &second, 0, "second");
    // Nothing is known of the second yet.
    EXPECT_EQ(guard.length(), 0u);
    EXPECT_EQ(guard.capacity(), 0u);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(second, nullptr);
    guard.end();
    EXPECT_EQ(guard.length(), 6u);
  }
  EXPECT_EQ(std::string_view(static_cast<char*>(first), 3), "one");
  EXPECT_EQ(std::string_view(static_cast<char*>(second), 6), "second");
  KernelFree(first, TARN_HERE);
  KernelFree(second, TARN_HERE);
}

TEST_F(MemoryFileGuardTest, WhatHasEndedIsNotEndedAgain) {
  void* block = nullptr;
  g_memoryFilesClosed = 0;
  {
    MemoryFileGuard guard;
    WriteUnder(guard, &block, 0, "bytes");
    guard.end();
    EXPECT_EQ(g_memoryFilesClosed, 1u);
  }
  EXPECT_EQ(g_memoryFilesClosed, 1u);
  KernelFree(block, TARN_HERE);
}

TEST_F(MemoryFileGuardTest, OneThatNeverOpenedEndsNothing) {
  MemoryFileGuard guard;
  guard.end();
  EXPECT_EQ(guard.length(), 0u);
}

}  // namespace
}  // namespace tarn
