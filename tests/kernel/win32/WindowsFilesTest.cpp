// Host files as Windows has them: other spellings of one name, long paths, who shares a file.
#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <string>

#include "FilesFixture.h"

namespace tarn::test {
namespace {

const wchar_t* Native16(const std::u16string& text) {
  return reinterpret_cast<const wchar_t*>(text.c_str());
}

// The current directory while it lives.
class CurrentDirectory {
 public:
  explicit CurrentDirectory(const std::filesystem::path& path)
      : before_(std::filesystem::current_path()) {
    std::filesystem::current_path(path);
  }
  ~CurrentDirectory() { std::filesystem::current_path(before_); }

 private:
  std::filesystem::path before_;
};

TEST_F(Files, CaseAndSeparatorsDoNotMatter) {
  std::filesystem::create_directory(NativePathOf("Dir"));
  Put("Dir/Name", "bytes");
  EXPECT_EQ(ReadAll(Open("dIR\\nAME")), "bytes");
  EXPECT_EQ(ReadAll(Open("dir/NAME")), "bytes");
  KernelFileClose(Create("DIR\\NAME"));
  EXPECT_EQ(Get("Dir/Name"), "");
}

TEST_F(Files, APathMayClimbForTheHost) {
  std::filesystem::create_directory(NativePathOf("dir"));
  Put("file", "bytes");
  EXPECT_EQ(ReadAll(Open("dir\\..\\file")), "bytes");
  EXPECT_EQ(ReadAll(Open("missing/../file")), "bytes");  // resolved before anything is looked for
}

TEST_F(Files, PathsLongerThanTheLimitOpenAndAreMade) {
  std::string directory = Root();
  for (int i = 0; i < 4; ++i) {
    directory += '/' + std::string(90, static_cast<char>('a' + i));
    const std::u16string path = u"\\\\?\\" + Native(directory).make_preferred().u16string();
    ASSERT_TRUE(::CreateDirectoryW(Native16(path), nullptr)) << ::GetLastError();
  }
  const uint64_t made = CreatePath(Widen(directory + "/name"));
  ASSERT_NE(made, KERNEL_BAD_HANDLE);
  EXPECT_EQ(KernelFileWrite(made, "deep", 4), 4U);
  KernelFileClose(made);
  EXPECT_EQ(ReadAll(OpenPath(Widen(directory + "\\.\\name"))), "deep");
  EXPECT_EQ(ReadAll(OpenPath(Widen(directory + "/missing/..//name"))), "deep");
  const std::u16string verbatim =
      u"\\\\?\\" + Native(directory + "/name").make_preferred().u16string();
  EXPECT_EQ(ReadAll(OpenPath(verbatim)), "deep");
  EXPECT_TRUE(::DeleteFileW(Native16(verbatim)));
  for (; directory != Root(); directory.resize(directory.rfind('/'))) {
    const std::u16string path = u"\\\\?\\" + Native(directory).make_preferred().u16string();
    EXPECT_TRUE(::RemoveDirectoryW(Native16(path))) << ::GetLastError();
  }
}

TEST_F(Files, APathIsLongByItsFullForm) {
  std::string directory = Root();
  for (int i = 0; i < 2; ++i) {
    directory += '/' + std::string(60, static_cast<char>('a' + i));
    std::filesystem::create_directory(Native(directory));
  }
  const CurrentDirectory current(Native(directory));
  const std::string name(200, 'n');
  const uint64_t made = CreatePath(Widen(name));
  ASSERT_NE(made, KERNEL_BAD_HANDLE);
  KernelFileClose(made);
  EXPECT_EQ(ReadAll(OpenPath(Widen("./" + name))), "");
  const std::u16string verbatim =
      u"\\\\?\\" + Native(directory + "/" + name).make_preferred().u16string();
  EXPECT_TRUE(::DeleteFileW(Native16(verbatim)));
}

TEST_F(Files, ADriveWithoutSeparatorMeansItsCurrentDirectory) {
  const CurrentDirectory current(Native(Root()));
  Put("file", "bytes");
  const std::u16string drive = Widen(Root()).substr(0, 2);
  ASSERT_EQ(drive[1], u':');
  EXPECT_EQ(ReadAll(OpenPath(drive + u"file")), "bytes");
  EXPECT_EQ(OpenPath(drive + u"\\file"), KERNEL_BAD_HANDLE);
}

TEST_F(Files, NobodyIsLockedOut) {
  Put("file", "0123456789");
  const uint64_t first = Open("file");
  const uint64_t second = Open("file");
  char bytes[4] = {};
  EXPECT_EQ(KernelFileRead(first, bytes, 3), 3U);
  EXPECT_EQ(KernelFileRead(second, bytes, 2), 2U);
  const uint64_t writing = Create("other");
  EXPECT_EQ(KernelFileWrite(writing, "abc", 3), 3U);
  EXPECT_EQ(ReadAll(Open("other")), "abc");
  KernelFileClose(writing);
  std::filesystem::rename(NativePathOf("file"), NativePathOf("moved"));
  EXPECT_TRUE(std::filesystem::remove(NativePathOf("moved")));
  EXPECT_EQ(KernelFileRead(first, bytes, 2), 2U);
  EXPECT_EQ(std::string(bytes, 2), "34");
  KernelFileClose(first);
  KernelFileClose(second);
}

TEST_F(Files, AFileThatSomebodyHoldsForHimselfDoesNotOpen) {
  Put("file", "bytes");
  const HANDLE held = ::CreateFileW(Native16(WidePathOf("file")), GENERIC_READ, 0, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(held, INVALID_HANDLE_VALUE);
  EXPECT_EQ(Open("file"), KERNEL_BAD_HANDLE);
  EXPECT_EQ(Create("file"), KERNEL_BAD_HANDLE);
  ::CloseHandle(held);
  EXPECT_EQ(Get("file"), "bytes");
}

TEST_F(Files, WhatHasNoPositionDoesNotSeek) {
  const uint64_t handle = CreatePath(u"NUL");
  ASSERT_NE(handle, KERNEL_BAD_HANDLE);
  EXPECT_EQ(KernelFileWrite(handle, "abc", 3), 3U);
  EXPECT_EQ(KernelFileSeek(handle, 0, KERNEL_SEEK_CURRENT), UINT64_MAX);
  KernelFileClose(handle);
}

}  // namespace
}  // namespace tarn::test
