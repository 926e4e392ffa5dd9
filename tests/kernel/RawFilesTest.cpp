#include <gtest/gtest.h>

#include "RawFilesFixture.h"
#include "Tarnbase/PlainKernel.h"

namespace tarn::test {
namespace {

TEST_F(RawFiles, HoldWhatWasWritten) {
  const std::u16string path = WidePathOf("image");
  Make(path, "bytes");
  EXPECT_EQ(Get("image"), "bytes");
  KernelDeleteFile(path.c_str());
  EXPECT_FALSE(Exists("image"));
}

TEST_F(RawFiles, ASecondOneOfTheSameNameOverwritesTheFirst) {
  const std::u16string path = WidePathOf("image");
  Make(path, "a long first image");
  Make(path, "second");
  EXPECT_EQ(Get("image"), "second");
  EXPECT_EQ(Usage().temporaryFiles, 1U);
  KernelDeleteFile(path.c_str());
  EXPECT_EQ(Usage().temporaryFiles, 0U);
}

TEST_F(RawFiles, AreSeparatedByBackslashAndSlashAlike) {
  std::filesystem::create_directory(NativePathOf("dir"));
  Make(WidePathOf("dir\\image"), "1");
  EXPECT_TRUE(Exists("dir/image"));
  Make(WidePathOf("dir/image"), "2");
  Make(WidePathOf("dir/\\./image"), "3");
  EXPECT_EQ(Usage().temporaryFiles, 1U);
  EXPECT_EQ(Get("dir/image"), "3");
  KernelDeleteFileUtf8(PathOf("dir\\image").c_str());
  EXPECT_EQ(Usage().temporaryFiles, 0U);
  EXPECT_FALSE(Exists("dir/image"));
}

TEST_F(RawFiles, CountDifferentFiles) {
  Make(WidePathOf("one"), "1");
  Make(WidePathOf("two"), "2");
  EXPECT_EQ(Usage().temporaryFiles, 2U);
  KernelDeleteFile(WidePathOf("one").c_str());
  KernelDeleteFile(WidePathOf("one").c_str());
  EXPECT_EQ(Usage().temporaryFiles, 1U);
  KernelDeleteFileUtf8(PathOf("two").c_str());
  EXPECT_EQ(Usage().temporaryFiles, 0U);
}

TEST_F(RawFiles, AFileThatIsGoneAlreadyIsForgottenByItsDelete) {
  Make(WidePathOf("image"), "1");
  std::filesystem::remove(NativePathOf("image"));
  EXPECT_EQ(Usage().temporaryFiles, 1U);
  KernelDeleteFile(WidePathOf("image").c_str());
  EXPECT_EQ(Usage().temporaryFiles, 0U);
}

TEST_F(RawFiles, AFileWhoseDirectoryIsGoneIsForgottenByItsDelete) {
  for (const bool fileInstead : {false, true}) {
    std::filesystem::create_directory(NativePathOf("dir"));
    Make(WidePathOf("dir/image"), "1");
    std::filesystem::remove_all(NativePathOf("dir"));
    if (fileInstead) Put("dir", "a file");
    EXPECT_EQ(Usage().temporaryFiles, 1U);
    KernelDeleteFile(WidePathOf("dir/image").c_str());
    EXPECT_EQ(Usage().temporaryFiles, 0U);
  }
}

// Such as one whose place a directory has taken, which no delete of a file removes.
TEST_F(RawFiles, AFileThatCannotBeDeletedStaysCounted) {
  const std::u16string path = WidePathOf("image");
  Make(path, "1");
  std::filesystem::remove(NativePathOf("image"));
  std::filesystem::create_directory(NativePathOf("image"));
  Put("image/other", "precious");
  KernelDeleteFile(path.c_str());
  EXPECT_EQ(Get("image/other"), "precious");
  EXPECT_EQ(Usage().temporaryFiles, 1U);
  KernelDeleteFileUtf8(PathOf("image").c_str());
  EXPECT_EQ(Usage().temporaryFiles, 1U);

  std::filesystem::remove_all(NativePathOf("image"));
  Make(path, "2");
  EXPECT_EQ(Usage().temporaryFiles, 1U);
  KernelDeleteFile(path.c_str());
  EXPECT_EQ(Usage().temporaryFiles, 0U);
}

TEST_F(RawFiles, DoNotClimbOutOfTheirDirectory) {
  std::filesystem::create_directory(NativePathOf("dir"));
  Put("outside", "precious");
  for (const std::string name : {"dir/../outside", "dir\\..\\outside", "dir/..\\outside", ".."}) {
    EXPECT_EQ(Create(WidePathOf(name)), KERNEL_BAD_HANDLE) << name;
    KernelDeleteFile(WidePathOf(name).c_str());
    KernelDeleteFileUtf8(PathOf(name).c_str());
  }
  EXPECT_EQ(Get("outside"), "precious");
  EXPECT_EQ(Usage().temporaryFiles, 0U);
}

TEST_F(RawFiles, DotsInsideANameAreNoClimbing) {
  for (const std::string name : {"..image", "a..b", "dir..ectory"}) {
    Make(WidePathOf(name), name);
    EXPECT_EQ(Get(name), name);
    KernelDeleteFile(WidePathOf(name).c_str());
  }
  EXPECT_EQ(Usage().temporaryFiles, 0U);
}

TEST_F(RawFiles, AreNoDirectories) {
  std::filesystem::create_directory(NativePathOf("dir"));
  EXPECT_EQ(Create(WidePathOf("dir")), KERNEL_BAD_HANDLE);
  KernelDeleteFile(WidePathOf("dir").c_str());
  EXPECT_TRUE(Exists("dir"));
}

// Some systems take such a path for the file before the separator, and some for nothing at
// all.
TEST_F(RawFiles, APathWithNoNameAtItsEndIsNoFile) {
  Make(WidePathOf("keep"), "bytes");
  for (const std::string end : {"/", "\\", "//", "/.", "\\.", "/./", "\\.\\"}) {
    EXPECT_EQ(Create(WidePathOf("keep" + end)), KERNEL_BAD_HANDLE) << end;
    EXPECT_EQ(Create(WidePathOf("new" + end)), KERNEL_BAD_HANDLE) << end;
    KernelDeleteFile(WidePathOf("keep" + end).c_str());
    KernelDeleteFileUtf8(PathOf("keep" + end).c_str());
    EXPECT_EQ(Get("keep"), "bytes") << end;
    EXPECT_EQ(Usage().temporaryFiles, 1U) << end;
  }
  EXPECT_EQ(Entries(), 1U);
  KernelDeleteFile(WidePathOf("keep").c_str());
  EXPECT_EQ(Usage().temporaryFiles, 0U);
}

TEST_F(RawFiles, FailWithoutAPath) {
  EXPECT_EQ(KernelRawFileCreate(nullptr, 0), KERNEL_BAD_HANDLE);
  EXPECT_EQ(Create(u""), KERNEL_BAD_HANDLE);
  EXPECT_EQ(Create(WidePathOf("missing/image")), KERNEL_BAD_HANDLE);
  EXPECT_EQ(Create(Widen(Root()) + u"/a\xD83D"), KERNEL_BAD_HANDLE);
  KernelDeleteFile(nullptr);
  KernelDeleteFile(u"");
  KernelDeleteFileUtf8(nullptr);
  KernelDeleteFileUtf8("");
  EXPECT_EQ(Entries(), 0U);
  EXPECT_EQ(Usage().temporaryFiles, 0U);
}

TEST_F(RawFiles, HandlesServeTheirOwnGroupOnly) {
  const std::u16string path = WidePathOf("image");
  const uint64_t handle = Create(path);
  ASSERT_NE(handle, KERNEL_BAD_HANDLE);
  EXPECT_EQ(Usage().openHandles, 1U);
  EXPECT_EQ(KernelFileWrite(handle, "x", 1), 0U);
  EXPECT_EQ(KernelFileSeek(handle, 0, KERNEL_SEEK_END), UINT64_MAX);
  KernelFileClose(handle);
  EXPECT_EQ(Usage().openHandles, 1U);
  EXPECT_EQ(KernelRawFileWrite(handle, "y", 1, 0), 1U);
  EXPECT_EQ(KernelRawFileWrite(handle, nullptr, 1, 0), 0U);
  KernelRawFileClose(handle, 0);
  EXPECT_EQ(KernelRawFileWrite(handle, "z", 1, 0), 0U);
  EXPECT_EQ(Usage().openHandles, 0U);
  EXPECT_EQ(Get("image"), "y");
  KernelDeleteFile(path.c_str());
}

}  // namespace
}  // namespace tarn::test
