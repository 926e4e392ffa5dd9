// Links that somebody has put below the directory of temporary files: none leads a temporary file
// elsewhere, whichever component it is. The directory itself may be reached by links.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>

#include "RawFilesFixture.h"
#include "TarnPst.h"
#include "TempNamesFixture.h"
#include "support/Environment.h"

namespace tarn::test {
namespace {

namespace fs = std::filesystem;

// "temp" is the directory of temporary files, "victim" one beside it with a file to be harmed.
template <typename Files>
class LinksBelowTemp : public Files {
 protected:
  LinksBelowTemp() {
    fs::create_directory(this->NativePathOf("temp"));
    fs::create_directory(this->NativePathOf("victim"));
    this->Put("victim/image", "precious");
    PlainKernelSetTempDirectory(this->WidePathOf("temp").c_str());
  }

  void Link(const std::string& to, const std::string& name) {
    fs::create_symlink(this->NativePathOf(to), this->NativePathOf(name));
  }

  // The kernel reaches neither the victim's file nor its directory by the path.
  void ExpectNoWayBy(const std::string& path) {
    const std::string existing = this->PathOf(path + "/image");
    EXPECT_EQ(KernelRawFileCreate(Files::Widen(existing).c_str(), 0), KERNEL_BAD_HANDLE) << path;
    EXPECT_EQ(KernelRawFileCreate(this->WidePathOf(path + "/new").c_str(), 0), KERNEL_BAD_HANDLE)
        << path;
    KernelDeleteFile(Files::Widen(existing).c_str());
    KernelDeleteFileUtf8(existing.c_str());
    char16_t name[264] = u"untouched";
    EXPECT_EQ(KernelTempFileName(this->WidePathOf(path).c_str(), name, 264, 1, u"pst", nullptr),
              -1490)
        << path;
    EXPECT_EQ(std::u16string(name), u"untouched");
    EXPECT_EQ(this->Get("victim/image"), "precious") << path;
    EXPECT_EQ(std::distance(fs::directory_iterator(this->NativePathOf("victim")), {}), 1) << path;
    EXPECT_EQ(Usage().temporaryFiles, 0U) << path;
    EXPECT_EQ(Usage().openHandles, 0U) << path;
  }
};

using RawFilesBelowTemp = LinksBelowTemp<RawFiles>;
using NamesBelowTemp = LinksBelowTemp<TempNames>;

TEST_F(RawFilesBelowTemp, DoNotFollowALinkInPlaceOfTheirDirectory) {
  Link("victim", "temp/link");
  for (const char* const path : {"temp/link", "temp\\link", "temp//./link/.", "./temp/link"}) {
    ExpectNoWayBy(path);
  }
}

TEST_F(RawFilesBelowTemp, DoNotFollowALinkFurtherUp) {
  fs::create_directories(NativePathOf("temp/own"));
  Link("victim", "temp/own/link");
  ExpectNoWayBy("temp/own/link");

  fs::create_directories(NativePathOf("victim/sub"));
  Link("victim", "temp/up");
  EXPECT_EQ(Create(WidePathOf("temp/up/sub/new")), KERNEL_BAD_HANDLE);
  EXPECT_TRUE(fs::is_empty(NativePathOf("victim/sub")));
}

TEST_F(RawFilesBelowTemp, DoNotFollowALinkInPlaceOfTheFile) {
  Link("victim/image", "temp/file");
  Link("victim/missing", "temp/dangling");
  EXPECT_EQ(Create(WidePathOf("temp/file")), KERNEL_BAD_HANDLE);
  EXPECT_EQ(Create(WidePathOf("temp/dangling")), KERNEL_BAD_HANDLE);
  EXPECT_FALSE(Exists("victim/missing"));
  KernelDeleteFile(WidePathOf("temp/file").c_str());
  EXPECT_FALSE(Exists("temp/file"));
  EXPECT_EQ(Get("victim/image"), "precious");
}

TEST_F(RawFilesBelowTemp, DoNotEmptyTheSecondNameOfAFile) {
  fs::create_hard_link(NativePathOf("victim/image"), NativePathOf("temp/file"));
  EXPECT_EQ(Create(WidePathOf("temp/file")), KERNEL_BAD_HANDLE);
  EXPECT_EQ(Get("victim/image"), "precious");
}

// What happens to a directory that is swapped between the making of an image and its end.
TEST_F(RawFilesBelowTemp, AreNotDeletedThroughALinkThatCameLater) {
  fs::create_directory(NativePathOf("temp/own"));
  Make(WidePathOf("temp/own/image"), "bytes");
  fs::rename(NativePathOf("temp/own"), NativePathOf("temp/away"));
  Link("victim", "temp/own");
  KernelDeleteFile(WidePathOf("temp/own/image").c_str());
  EXPECT_EQ(Get("victim/image"), "precious");
  EXPECT_EQ(Get("temp/away/image"), "bytes");
  EXPECT_EQ(Usage().temporaryFiles, 0U);  // nothing of that name any more
}

TEST_F(RawFilesBelowTemp, LieInDirectoriesOfAnyDepth) {
  fs::create_directories(NativePathOf("temp/a/b"));
  for (const char* const path : {"temp/a/b/image", "temp\\a\\b\\image", "temp/./a//b/image"}) {
    Make(WidePathOf(path), path);
    EXPECT_EQ(Get("temp/a/b/image"), path);
  }
  EXPECT_EQ(Usage().temporaryFiles, 1U);
  KernelDeleteFile(WidePathOf("temp/a/b/image").c_str());
  EXPECT_FALSE(Exists("temp/a/b/image"));
}

TEST_F(RawFilesBelowTemp, ADirectoryThatIsNotBelowIsTheCallersChoice) {
  Link("victim", "link");
  Make(WidePathOf("link/new"), "bytes");
  EXPECT_EQ(Get("victim/new"), "bytes");
  KernelDeleteFile(WidePathOf("link/new").c_str());
  EXPECT_FALSE(Exists("victim/new"));
  // Only the beginning of the name is the same.
  Link("victim", "temporary");
  Make(WidePathOf("temporary/new"), "bytes");
  KernelDeleteFile(WidePathOf("temporary/new").c_str());
  EXPECT_EQ(Usage().temporaryFiles, 0U);

  Link("victim/image", "file");
  EXPECT_EQ(Create(WidePathOf("file")), KERNEL_BAD_HANDLE);
  EXPECT_EQ(Get("victim/image"), "precious");
}

// As /tmp is on some systems.
TEST_F(NamesBelowTemp, TheDirectoryItselfMayBeReachedByLinks) {
  fs::create_directory(NativePathOf("private"));
  fs::create_directory(NativePathOf("private/tmp"));
  Link("private/tmp", "tmp");
  const std::string byLink = PathOf("tmp");
  const auto expectUsable = [&] {
    ASSERT_EQ(Make(nullptr, u"pst", u"html"), StatusOk);
    EXPECT_EQ(Frame(byLink.size() + 4), byLink + "/pst*.html");
    const uint64_t handle = KernelRawFileCreate(name_.data(), 0);
    ASSERT_NE(handle, KERNEL_BAD_HANDLE);
    EXPECT_EQ(KernelRawFileWrite(handle, "<p>", 3, 0), 3U);
    KernelRawFileClose(handle, 0);
    EXPECT_FALSE(fs::is_empty(NativePathOf("private/tmp")));
    Delete();
    EXPECT_TRUE(fs::is_empty(NativePathOf("private/tmp")));
    // What is below is not trusted for that.
    Link("victim", "private/tmp/link");
    ExpectNoWayBy("tmp/link");
    fs::remove(NativePathOf("private/tmp/link"));
  };
  PlainKernelSetTempDirectory(Widen(byLink).c_str());
  expectUsable();
  PlainKernelSetTempDirectory(nullptr);
  const ScopedVariable variable(kTempVariable, byLink.c_str());
  expectUsable();
}

TEST_F(NamesBelowTemp, ARelativeDirectoryServesToo) {
  const fs::path before = fs::current_path();
  Link("victim", "temp/link");
  fs::current_path(NativePathOf("."));
  PlainKernelSetTempDirectory(u"temp");
  EXPECT_EQ(Make(nullptr, u"pst", nullptr), StatusOk);
  EXPECT_EQ(Frame(8), "temp/pst*");
  Delete();
  EXPECT_EQ(Make(u"temp/link", u"pst", nullptr), StatusCreateFailed);
  PlainKernelSetTempDirectory(u".");
  EXPECT_EQ(Make(u"temp/link", u"pst", nullptr), StatusCreateFailed);
  EXPECT_EQ(Make(u"./temp", u"pst", nullptr), StatusOk);
  Delete();
  fs::current_path(before);
  EXPECT_EQ(std::distance(fs::directory_iterator(NativePathOf("temp")), {}), 1);
}

// One that only lets its owner pass and make files, as drop boxes do.
TEST_F(NamesBelowTemp, TheDirectoryNeedNotBeReadable) {
  ASSERT_EQ(::chmod(PathOf("temp").c_str(), 0300), 0);
  EXPECT_EQ(Make(nullptr, u"pst", nullptr), StatusOk);
  Delete();
  ASSERT_EQ(::chmod(PathOf("temp").c_str(), 0700), 0);
  EXPECT_TRUE(fs::is_empty(NativePathOf("temp")));
}

}  // namespace
}  // namespace tarn::test
