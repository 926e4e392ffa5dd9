// What files are for whom, and what is no file: links, pipes, devices.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "FilesFixture.h"
#include "RandomDraws.h"
#include "RawFilesFixture.h"
#include "TarnPst.h"
#include "TempNamesFixture.h"
#include "support/Environment.h"

namespace tarn::test {
namespace {

unsigned ModeOf(const std::string& path) {
  struct stat status = {};
  EXPECT_EQ(::lstat(path.c_str(), &status), 0);
  return status.st_mode & 07777U;
}

TEST_F(RawFiles, AreMadeForTheirOwnerAlone) {
  const std::u16string path = WidePathOf("image");
  Make(path, "bytes");
  EXPECT_EQ(ModeOf(PathOf("image")), 0600U);
  KernelDeleteFile(path.c_str());
  EXPECT_FALSE(Exists("image"));
}

TEST_F(RawFiles, ABackslashIsNoPartOfTheName) {
  std::filesystem::create_directory(NativePathOf("dir"));
  Make(WidePathOf("dir\\image"), "1");
  EXPECT_TRUE(Exists("dir/image"));
  EXPECT_FALSE(Exists("dir\\image"));
  KernelDeleteFile(WidePathOf("dir\\image").c_str());
  EXPECT_FALSE(Exists("dir/image"));
}

TEST_F(RawFiles, PeriodsAtTheEndBelongToTheName) {
  for (const std::string name : {"image..", "...", "image. "}) {
    Make(WidePathOf(name), name);
    EXPECT_EQ(Get(name), name);
    KernelDeleteFile(WidePathOf(name).c_str());
  }
  EXPECT_EQ(Usage().temporaryFiles, 0U);
}

TEST_F(RawFiles, NamesThatDifferInCaseAreTwoFiles) {
  Make(WidePathOf("image"), "1");
  Make(WidePathOf("IMAGE"), "2");
  EXPECT_EQ(Usage().temporaryFiles, 2U);
  EXPECT_EQ(Get("image"), "1");
  KernelDeleteFile(WidePathOf("image").c_str());
  KernelDeleteFile(WidePathOf("IMAGE").c_str());
  EXPECT_EQ(Usage().temporaryFiles, 0U);
}

TEST_F(RawFiles, AColonAndADeviceNameAreOrdinaryNames) {
  for (const std::string name : {"image:stream", "NUL", "com1.png", "a?b*c"}) {
    Make(WidePathOf(name), name);
    EXPECT_EQ(Get(name), name);
    KernelDeleteFile(WidePathOf(name).c_str());
  }
  EXPECT_EQ(Entries(), 0U);
}

TEST_F(RawFiles, DoNotFollowALink) {
  Put("target", "precious");
  std::filesystem::create_symlink(NativePathOf("target"), PathOf("link"));
  std::filesystem::create_symlink(NativePathOf("nowhere"), PathOf("dangling"));
  EXPECT_EQ(Create(WidePathOf("link")), KERNEL_BAD_HANDLE);
  EXPECT_EQ(Create(WidePathOf("dangling")), KERNEL_BAD_HANDLE);
  EXPECT_EQ(Get("target"), "precious");
  EXPECT_FALSE(Exists("nowhere"));
  KernelDeleteFile(WidePathOf("link").c_str());
  EXPECT_FALSE(Exists("link"));
  EXPECT_TRUE(Exists("target"));
}

TEST_F(Files, ALinkThatLeadsToItselfIsNone) {
  std::filesystem::create_symlink("loop", PathOf("loop"));
  EXPECT_EQ(Open("loop"), KERNEL_BAD_HANDLE);
  EXPECT_EQ(Create("loop"), KERNEL_BAD_HANDLE);
  EXPECT_EQ(Open("loop\\file"), KERNEL_BAD_HANDLE);
}

TEST_F(RawFiles, AreRegularFiles) {
  ASSERT_EQ(::mkfifo(PathOf("pipe").c_str(), 0600), 0);
  EXPECT_EQ(Create(WidePathOf("pipe")), KERNEL_BAD_HANDLE);
  EXPECT_EQ(Create(u"/dev/null"), KERNEL_BAD_HANDLE);
}

TEST_F(TempNames, TheFileIsForItsOwnerAlone) {
  ASSERT_EQ(MakeIn(Root(), u"html"), StatusOk);
  EXPECT_EQ(ModeOf(Narrow(name_.data())), 0600U);
  Delete();
}

TEST_F(TempNames, ALinkInTheWayIsACollisionToo) {
  std::filesystem::create_symlink(NativePathOf("elsewhere"), PathOf("pstaaaaaaaaaaaaaaaa"));
  GiveZeros(1);
  ASSERT_EQ(MakeIn(Root()), StatusOk);
  EXPECT_FALSE(Exists("elsewhere"));
  Delete();
}

TEST_F(TempNames, TheSystemsDirectoryIsTmpUnlessNamed) {
  for (const char* const value : {static_cast<const char*>(nullptr), "", "/tmp/\xFF"}) {
    const ScopedVariable variable(kTempVariable, value);
    ASSERT_EQ(Make(nullptr, u"pst", nullptr), StatusOk);
    EXPECT_EQ(Frame(8), "/tmp/pst*");
    Delete();
  }
}

}  // namespace
}  // namespace tarn::test
