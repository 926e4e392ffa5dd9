// What the kernel asks the system for, and what it makes of answers that are hard to get from it.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "FilesFixture.h"
#include "KernelImports.h"
#include "support/Environment.h"

namespace tarn::test {
namespace {

constexpr DWORD kLargestStep = 16 << 20;
constexpr uint64_t kLength = 33'000'000;  // one whole step, and a bit more than another

const wchar_t* Native16(const std::u16string& text) {
  return reinterpret_cast<const wchar_t*>(text.c_str());
}

DWORD largestStep = 0;

BOOL WINAPI NoteRead(HANDLE file, void* buffer, DWORD count, DWORD* moved, OVERLAPPED* overlapped) {
  largestStep = std::max(largestStep, count);
  return ::ReadFile(file, buffer, count, moved, overlapped);
}

BOOL WINAPI NoteWrite(HANDLE file, const void* buffer, DWORD count, DWORD* moved,
                      OVERLAPPED* overlapped) {
  largestStep = std::max(largestStep, count);
  return ::WriteFile(file, buffer, count, moved, overlapped);
}

TEST_F(Files, MoveInStepsThatEverySystemTakes) {
  const std::vector<char> bytes(kLength, 'x');
  std::vector<char> back(kLength);
  const ImportStandIn writes("WriteFile", &NoteWrite);
  const ImportStandIn reads("ReadFile", &NoteRead);
  largestStep = 0;
  const uint64_t writing = Create("file");
  EXPECT_EQ(KernelFileWriteLarge(writing, bytes.data(), kLength), kLength);
  KernelFileClose(writing);
  EXPECT_EQ(largestStep, kLargestStep);
  largestStep = 0;
  const uint64_t reading = Open("file");
  EXPECT_EQ(KernelFileReadLarge(reading, back.data(), kLength), kLength);
  KernelFileClose(reading);
  EXPECT_EQ(largestStep, kLargestStep);
  EXPECT_EQ(back, bytes);
}

BOOL WINAPI ReadHalfAndFail(HANDLE file, void* buffer, DWORD count, DWORD* moved,
                            OVERLAPPED* overlapped) {
  ::ReadFile(file, buffer, count / 2, moved, overlapped);
  ::SetLastError(ERROR_MORE_DATA);
  return FALSE;
}

BOOL WINAPI WriteHalfAndFail(HANDLE file, const void* buffer, DWORD count, DWORD* moved,
                             OVERLAPPED* overlapped) {
  ::WriteFile(file, buffer, count / 2, moved, overlapped);
  ::SetLastError(ERROR_DISK_FULL);
  return FALSE;
}

TEST_F(Files, WhatAStepMovedBeforeItFailedCounts) {
  Put("file", "12345678");
  {
    const ImportStandIn reads("ReadFile", &ReadHalfAndFail);
    const uint64_t reading = Open("file");
    char bytes[9] = {};
    EXPECT_EQ(KernelFileRead(reading, bytes, 6), 3U);
    EXPECT_STREQ(bytes, "123");
    KernelFileClose(reading);
  }
  const ImportStandIn writes("WriteFile", &WriteHalfAndFail);
  const uint64_t writing = Create("other");
  EXPECT_EQ(KernelFileWrite(writing, "abcdef", 6), 3U);
  KernelFileClose(writing);
  EXPECT_EQ(Get("other"), "abc");
}

// As documented, but not so in Wine: a hidden file or one of the system is not made anew unless the
// caller wants it hidden again.
HANDLE WINAPI CreateAsDocumented(const wchar_t* path, DWORD access, DWORD share,
                                 SECURITY_ATTRIBUTES* security, DWORD creation, DWORD flags,
                                 HANDLE like) {
  constexpr DWORD kMarks = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM;
  const DWORD attributes = ::GetFileAttributesW(path);
  if (creation == CREATE_ALWAYS && attributes != INVALID_FILE_ATTRIBUTES &&
      (attributes & kMarks & ~flags) != 0) {
    ::SetLastError(ERROR_ACCESS_DENIED);
    return INVALID_HANDLE_VALUE;
  }
  return ::CreateFileW(path, access, share, security, creation, flags, like);
}

TEST_F(Files, HiddenFilesAndThoseOfTheSystemAreWrittenLikeAnyOther) {
  const ImportStandIn standIn("CreateFileW", &CreateAsDocumented);
  for (const DWORD mark : {FILE_ATTRIBUTE_HIDDEN, FILE_ATTRIBUTE_SYSTEM}) {
    Put("file", "what was there before");
    ASSERT_TRUE(::SetFileAttributesW(Native16(WidePathOf("file")), mark));
    const uint64_t handle = Create("file");
    ASSERT_NE(handle, KERNEL_BAD_HANDLE) << mark;
    EXPECT_EQ(KernelFileWrite(handle, "new", 3), 3U);
    KernelFileClose(handle);
    EXPECT_EQ(Get("file"), "new");
    EXPECT_NE(::GetFileAttributesW(Native16(WidePathOf("file"))) & mark, 0U);
    std::filesystem::remove(NativePathOf("file"));
  }
}

BOOL WINAPI KeepTheEnd(HANDLE) {
  ::SetLastError(ERROR_USER_MAPPED_FILE);
  return FALSE;
}

TEST_F(Files, AFileThatCannotBeEmptiedDoesNotOpenAndANewOneDoes) {
  const ImportStandIn standIn("SetEndOfFile", &KeepTheEnd);
  Put("file", "precious");
  EXPECT_EQ(Create("file"), KERNEL_BAD_HANDLE);
  EXPECT_EQ(KernelRawFileCreate(WidePathOf("file").c_str(), 0), KERNEL_BAD_HANDLE);
  EXPECT_EQ(Get("file"), "precious");
  EXPECT_EQ(Usage().temporaryFiles, 0U);
  const uint64_t made = Create("new");
  EXPECT_NE(made, KERNEL_BAD_HANDLE);
  KernelFileClose(made);
  const uint64_t raw = KernelRawFileCreate(WidePathOf("raw").c_str(), 0);
  EXPECT_NE(raw, KERNEL_BAD_HANDLE);
  KernelRawFileClose(raw, 0);
  KernelDeleteFile(WidePathOf("raw").c_str());
}

HANDLE inHeap = nullptr;

void* NeverResize(void*, size_t) {
  ::SetEvent(inHeap);
  ::Sleep(INFINITE);
  return nullptr;
}

// The system ends all threads but one before libraries say goodbye, also a thread that is inside
// the kernel at that time.
TEST(LeakReportDeathTest, AThreadThatWasEndedInsideTheKernelHangsNobody) {
  const auto end = [] {
    SetVariable("TARNBASE_REPORT_LEAKS", "1");
    static const int object = 0;
    KernelTrackObject(KERNEL_TRACK_OBJECT, &object, 124, u"Tracking.cpp");
    void* const block = KernelAlloc(1, 1, 123, u"Leaking.cpp");
    inHeap = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
    static const ImportStandIn standIn("realloc", &NeverResize);
    std::thread([block] { KernelRealloc(block, 2, 1, u"Leaking.cpp"); }).detach();
    ::WaitForSingleObject(inHeap, INFINITE);
    std::exit(0);
  };
  EXPECT_EXIT(end(), ::testing::ExitedWithCode(0),
              "^Tarnbase: in use, not listed: blocks\n"
              "Tarnbase: still alive: object 0x\\w+ \\(line 124 of Tracking.cpp\\)");
}

}  // namespace
}  // namespace tarn::test
