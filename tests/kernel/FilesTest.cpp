#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "FilesFixture.h"
#include "Tarnbase/PlainKernel.h"

namespace tarn::test {
namespace {

TEST_F(Files, ReadInPiecesUpToTheEnd) {
  Put("file", "abcdefgh");
  const uint64_t handle = Open("file");
  ASSERT_NE(handle, KERNEL_BAD_HANDLE);
  EXPECT_EQ(Usage().openHandles, 1U);
  char bytes[16] = {};
  EXPECT_EQ(KernelFileRead(handle, bytes, 3), 3U);
  EXPECT_STREQ(bytes, "abc");
  EXPECT_EQ(KernelFileReadLarge(handle, bytes, 10), 5U);
  EXPECT_STREQ(bytes, "defgh");
  EXPECT_EQ(KernelFileRead(handle, bytes, 1), 0U);
  KernelFileClose(handle);
  EXPECT_EQ(Usage().openHandles, 0U);
}

TEST_F(Files, SeekFromEachOrigin) {
  Put("file", "0123456789");
  const uint64_t handle = Open("file");
  EXPECT_EQ(KernelFileSeek(handle, 4, KERNEL_SEEK_START), 4U);
  EXPECT_EQ(KernelFileSeek(handle, -1, KERNEL_SEEK_CURRENT), 3U);
  EXPECT_EQ(KernelFileSeek(handle, 0, KERNEL_SEEK_CURRENT), 3U);
  EXPECT_EQ(KernelFileSeek(handle, -2, KERNEL_SEEK_END), 8U);
  EXPECT_EQ(KernelFileSeek(handle, 5, KERNEL_SEEK_END), 15U);
  char byte = 0;
  EXPECT_EQ(KernelFileRead(handle, &byte, 1), 0U);
  KernelFileClose(handle);
}

TEST_F(Files, AFailedSeekStays) {
  Put("file", "0123456789");
  const uint64_t handle = Open("file");
  EXPECT_EQ(KernelFileSeek(handle, 4, KERNEL_SEEK_START), 4U);
  EXPECT_EQ(KernelFileSeek(handle, -1, KERNEL_SEEK_START), UINT64_MAX);
  EXPECT_EQ(KernelFileSeek(handle, -11, KERNEL_SEEK_END), UINT64_MAX);
  EXPECT_EQ(KernelFileSeek(handle, 0, 3), UINT64_MAX);
  EXPECT_EQ(KernelFileSeek(handle, 0, -1), UINT64_MAX);
  EXPECT_EQ(KernelFileSeek(handle, 0, KERNEL_SEEK_CURRENT), 4U);
  KernelFileClose(handle);
}

TEST_F(Files, WriteCreatesAndTruncates) {
  Put("file", "what was there before");
  const uint64_t handle = Create("file");
  ASSERT_NE(handle, KERNEL_BAD_HANDLE);
  EXPECT_EQ(KernelFileWrite(handle, "ab", 2), 2U);
  EXPECT_EQ(KernelFileWriteLarge(handle, "\0cd", 3), 3U);
  KernelFileClose(handle);
  EXPECT_EQ(Get("file"), std::string("ab\0cd", 5));
  EXPECT_EQ(Usage().temporaryFiles, 0U);
}

TEST_F(Files, ACreatedFileCanBeCreatedAgain) {
  KernelFileClose(Create("again"));
  const uint64_t handle = Create("again");
  EXPECT_NE(handle, KERNEL_BAD_HANDLE);
  KernelFileClose(handle);
}

TEST_F(Files, DirectionIsKept) {
  Put("file", "abc");
  char byte = 0;
  const uint64_t reading = Open("file");
  EXPECT_EQ(KernelFileWrite(reading, "x", 1), 0U);
  KernelFileClose(reading);
  const uint64_t writing = Create("other");
  EXPECT_EQ(KernelFileRead(writing, &byte, 1), 0U);
  KernelFileClose(writing);
  EXPECT_EQ(Get("file"), "abc");
}

TEST_F(Files, PositionsGoBeyondFourGigabytes) {
  constexpr int64_t kFar = int64_t{5} << 30;
  const uint64_t writing = Create("large");
  EXPECT_EQ(KernelFileSeek(writing, kFar, KERNEL_SEEK_START), static_cast<uint64_t>(kFar));
  EXPECT_EQ(KernelFileWriteLarge(writing, "end", 3), 3U);
  KernelFileClose(writing);
  const uint64_t reading = Open("large");
  EXPECT_EQ(KernelFileSeek(reading, 0, KERNEL_SEEK_END), static_cast<uint64_t>(kFar) + 3);
  EXPECT_EQ(KernelFileSeek(reading, kFar, KERNEL_SEEK_START), static_cast<uint64_t>(kFar));
  char bytes[4] = {};
  EXPECT_EQ(KernelFileReadLarge(reading, bytes, 4), 3U);
  EXPECT_STREQ(bytes, "end");
  KernelFileClose(reading);
}

TEST_F(Files, WhatIsNoFileDoesNotOpen) {
  EXPECT_EQ(Open("missing"), KERNEL_BAD_HANDLE);
  EXPECT_EQ(OpenPath(Widen(Root())), KERNEL_BAD_HANDLE);
  EXPECT_EQ(CreatePath(Widen(Root())), KERNEL_BAD_HANDLE);
  EXPECT_EQ(Create("missing/file"), KERNEL_BAD_HANDLE);
  EXPECT_EQ(OpenPath(u""), KERNEL_BAD_HANDLE);
  EXPECT_EQ(CreatePath(u""), KERNEL_BAD_HANDLE);
  EXPECT_EQ(KernelFileOpen(nullptr, KERNEL_OPEN_READ, KERNEL_OPEN_MODE), KERNEL_BAD_HANDLE);
  EXPECT_EQ(Usage().openHandles, 0U);
}

TEST_F(Files, OtherFlagsDoNotOpen) {
  Put("file", "abc");
  const std::u16string path = WidePathOf("file");
  for (const int32_t flags : {1, 2, 256, 512, 768, 770, -1}) {
    EXPECT_EQ(KernelFileOpen(path.c_str(), flags, KERNEL_OPEN_MODE), KERNEL_BAD_HANDLE) << flags;
  }
  EXPECT_EQ(Get("file"), "abc");
}

TEST_F(Files, NamesAreUtf8OnDisk) {
  KernelFileClose(CreatePath(Widen(Root()) + u"/\u00E4\u20AC\U0001F600"));
  EXPECT_TRUE(Exists("\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"));
}

TEST_F(Files, PathsThatAreNoTextDoNotOpen) {
  for (const std::u16string bad : {u"\xD800", u"\xDC00x", u"\xDC00\xD800"}) {
    EXPECT_EQ(CreatePath(Widen(Root()) + u"/a" + bad), KERNEL_BAD_HANDLE);
  }
  EXPECT_EQ(Entries(), 0U);
}

TEST_F(Files, StaleAndForeignHandlesDoNothing) {
  Put("file", "abc");
  const uint64_t stale = Open("file");
  KernelFileClose(stale);
  const uint64_t current = Open("file");  // takes the slot of the stale one
  ASSERT_NE(current, stale);
  char byte = 0;
  for (const uint64_t handle : {stale, uint64_t{0}, uint64_t{1}, uint64_t{2}, uint64_t{3},
                                current + 1, UINT64_MAX, UINT64_MAX - 1}) {
    EXPECT_EQ(KernelFileRead(handle, &byte, 1), 0U);
    EXPECT_EQ(KernelFileReadLarge(handle, &byte, 1), 0U);
    EXPECT_EQ(KernelFileWrite(handle, "x", 1), 0U);
    EXPECT_EQ(KernelFileWriteLarge(handle, "x", 1), 0U);
    EXPECT_EQ(KernelFileSeek(handle, 0, KERNEL_SEEK_START), UINT64_MAX);
    KernelFileClose(handle);
    KernelRawFileClose(handle, 0);
  }
  EXPECT_EQ(KernelRawFileWrite(current, "x", 1, 0), 0U);
  KernelRawFileClose(current, 0);
  EXPECT_EQ(Usage().openHandles, 1U);
  EXPECT_EQ(KernelFileRead(current, &byte, 1), 1U);
  EXPECT_EQ(byte, 'a');
  KernelFileClose(current);
}

TEST_F(Files, NoBufferMovesNothing) {
  Put("file", "abc");
  const uint64_t handle = Open("file");
  EXPECT_EQ(KernelFileRead(handle, nullptr, 1), 0U);
  EXPECT_EQ(KernelFileSeek(handle, 0, KERNEL_SEEK_CURRENT), 0U);
  KernelFileClose(handle);
}

TEST_F(Files, ManyHandlesAreAllDifferent) {
  Put("file", "abc");
  std::vector<uint64_t> handles;
  for (int i = 0; i < 100; ++i) handles.push_back(Open("file"));
  EXPECT_EQ(Usage().openHandles, 100U);
  std::sort(handles.begin(), handles.end());
  EXPECT_EQ(std::unique(handles.begin(), handles.end()), handles.end());
  for (const uint64_t handle : handles) KernelFileClose(handle);
  EXPECT_EQ(Usage().openHandles, 0U);
}

}  // namespace
}  // namespace tarn::test
