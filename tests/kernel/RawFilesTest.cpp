#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "Scratch.h"
#include "Tarnbase/PlainKernel.h"

namespace tarn::test {
namespace {

class RawFiles : public Scratch {
 protected:
  static uint64_t Create(const std::u16string& path) {
    return KernelRawFileCreate(path.c_str(), 0);
  }
  static void Make(const std::u16string& path, const std::string& bytes) {
    const uint64_t handle = Create(path);
    ASSERT_NE(handle, KERNEL_BAD_HANDLE);
    EXPECT_EQ(KernelRawFileWrite(handle, bytes.data(), bytes.size(), 0), bytes.size());
    KernelRawFileClose(handle, 0);
  }
  unsigned ModeOf(const std::string& name) const {
    struct stat status = {};
    EXPECT_EQ(::lstat(PathOf(name).c_str(), &status), 0);
    return status.st_mode & 07777U;
  }
};

TEST_F(RawFiles, AreMadeForTheirOwnerAlone) {
  const std::u16string path = WidePathOf("image");
  Make(path, "bytes");
  EXPECT_EQ(Get("image"), "bytes");
  EXPECT_EQ(ModeOf("image"), 0600U);
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
  std::filesystem::create_directory(PathOf("dir"));
  Make(WidePathOf("dir\\image"), "1");
  EXPECT_TRUE(Exists("dir/image"));
  EXPECT_FALSE(Exists("dir\\image"));
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
  std::filesystem::remove(PathOf("image"));
  EXPECT_EQ(Usage().temporaryFiles, 1U);
  KernelDeleteFile(WidePathOf("image").c_str());
  EXPECT_EQ(Usage().temporaryFiles, 0U);
}

// Such as one whose place a directory has taken, which no delete of a file removes.
TEST_F(RawFiles, AFileThatCannotBeDeletedStaysCounted) {
  const std::u16string path = WidePathOf("image");
  Make(path, "1");
  std::filesystem::remove(PathOf("image"));
  std::filesystem::create_directory(PathOf("image"));
  Put("image/other", "precious");
  KernelDeleteFile(path.c_str());
  EXPECT_EQ(Get("image/other"), "precious");
  EXPECT_EQ(Usage().temporaryFiles, 1U);
  KernelDeleteFileUtf8(PathOf("image").c_str());
  EXPECT_EQ(Usage().temporaryFiles, 1U);

  std::filesystem::remove_all(PathOf("image"));
  Make(path, "2");
  EXPECT_EQ(Usage().temporaryFiles, 1U);
  KernelDeleteFile(path.c_str());
  EXPECT_EQ(Usage().temporaryFiles, 0U);
}

TEST_F(RawFiles, DoNotClimbOutOfTheirDirectory) {
  std::filesystem::create_directory(PathOf("dir"));
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
  for (const std::string name : {"..image", "image..", "a..b", "...", "dir..ectory"}) {
    Make(WidePathOf(name), name);
    EXPECT_EQ(Get(name), name);
    KernelDeleteFile(WidePathOf(name).c_str());
  }
  EXPECT_EQ(Usage().temporaryFiles, 0U);
}

TEST_F(RawFiles, DoNotFollowALink) {
  Put("target", "precious");
  std::filesystem::create_symlink(PathOf("target"), PathOf("link"));
  std::filesystem::create_symlink(PathOf("nowhere"), PathOf("dangling"));
  EXPECT_EQ(Create(WidePathOf("link")), KERNEL_BAD_HANDLE);
  EXPECT_EQ(Create(WidePathOf("dangling")), KERNEL_BAD_HANDLE);
  EXPECT_EQ(Get("target"), "precious");
  EXPECT_FALSE(Exists("nowhere"));
  KernelDeleteFile(WidePathOf("link").c_str());
  EXPECT_FALSE(Exists("link"));
  EXPECT_TRUE(Exists("target"));
}

TEST_F(RawFiles, AreRegularFiles) {
  ASSERT_EQ(::mkfifo(PathOf("pipe").c_str(), 0600), 0);
  std::filesystem::create_directory(PathOf("dir"));
  EXPECT_EQ(Create(WidePathOf("pipe")), KERNEL_BAD_HANDLE);
  EXPECT_EQ(Create(WidePathOf("dir")), KERNEL_BAD_HANDLE);
  EXPECT_EQ(Create(u"/dev/null"), KERNEL_BAD_HANDLE);
  KernelDeleteFile(WidePathOf("dir").c_str());
  EXPECT_TRUE(Exists("dir"));
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
