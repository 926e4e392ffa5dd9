// Temporary files as Windows has them: what names are one file, and what is no file.
#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>
#include <string>

#include "FileKinds.h"
#include "RandomDraws.h"
#include "RawFilesFixture.h"
#include "TarnPst.h"
#include "TempNamesFixture.h"
#include "support/Environment.h"

namespace tarn::test {
namespace {

const wchar_t* Native16(const std::u16string& text) {
  return reinterpret_cast<const wchar_t*>(text.c_str());
}

TEST_F(RawFiles, NamesThatDifferInCaseAreOneFile) {
  Make(WidePathOf("image"), "1");
  Make(WidePathOf("IMAGE"), "2");
  EXPECT_EQ(Usage().temporaryFiles, 1U);
  EXPECT_EQ(Entries(), 1U);
  EXPECT_EQ(Get("image"), "2");
  Make(WidePathOf("\xC3\xA4"), "3");
  Make(WidePathOf("\xC3\x84"), "4");
  EXPECT_EQ(Usage().temporaryFiles, 2U);
  KernelDeleteFile(WidePathOf("Image").c_str());
  KernelDeleteFileUtf8(PathOf("\xC3\x84").c_str());
  EXPECT_EQ(Usage().temporaryFiles, 0U);
  EXPECT_EQ(Entries(), 0U);
}

TEST_F(RawFiles, PeriodsAndBlanksAtTheEndAreNoPartOfTheName) {
  Make(WidePathOf("image.. "), "1");
  EXPECT_EQ(Get("image"), "1");
  Make(WidePathOf("image"), "2");
  EXPECT_EQ(Usage().temporaryFiles, 1U);
  KernelDeleteFile(WidePathOf("image.").c_str());
  EXPECT_EQ(Usage().temporaryFiles, 0U);
  EXPECT_EQ(Entries(), 0U);
}

// Such directories are made with the prefix only, but entered without it too.
TEST_F(RawFiles, DirectoriesThatDifferInBlanksAreTwo) {
  const std::u16string verbatim =
      u"\\\\?\\" + Native(Root()).make_preferred().u16string() + u"\\dir";
  ASSERT_TRUE(::CreateDirectoryW(Native16(verbatim), nullptr));
  ASSERT_TRUE(::CreateDirectoryW(Native16(verbatim + u" "), nullptr));
  Make(WidePathOf("dir/image"), "1");
  Make(WidePathOf("dir /image"), "2");
  EXPECT_EQ(Get("dir/image"), "1");
  EXPECT_EQ(Usage().temporaryFiles, 2U);
  KernelDeleteFile(WidePathOf("dir./image").c_str());
  EXPECT_EQ(Usage().temporaryFiles, 1U);
  KernelDeleteFile(WidePathOf("dir /image").c_str());
  EXPECT_EQ(Usage().temporaryFiles, 0U);
  EXPECT_TRUE(::RemoveDirectoryW(Native16(verbatim + u" ")));
}

TEST_F(RawFiles, PeriodsAloneAreNoName) {
  std::filesystem::create_directory(NativePathOf("dir"));
  Put("outside", "precious");
  for (const std::string name : {"...", "dir/...", "dir\\.. \\outside", ". .", "dir\\..."}) {
    EXPECT_EQ(Create(WidePathOf(name)), KERNEL_BAD_HANDLE) << name;
    KernelDeleteFile(WidePathOf(name).c_str());
  }
  EXPECT_EQ(Get("outside"), "precious");
  EXPECT_EQ(Entries(), 2U);
  EXPECT_EQ(Usage().temporaryFiles, 0U);
}

TEST_F(RawFiles, AreNoStreamsOfAFile) {
  Put("image", "precious");
  for (const std::string name : {"image:hidden", "image::$DATA", "new:hidden", "c:image"}) {
    EXPECT_EQ(Create(WidePathOf(name)), KERNEL_BAD_HANDLE) << name;
    KernelDeleteFile(WidePathOf(name).c_str());
    KernelDeleteFileUtf8(PathOf(name).c_str());
  }
  EXPECT_EQ(Get("image"), "precious");
  EXPECT_EQ(Entries(), 1U);
  EXPECT_EQ(Usage().temporaryFiles, 0U);
}

TEST_F(RawFiles, AreNoDevices) {
  for (const std::string name : {"NUL", "nul.png", "CON", "aux .html", "COM1", "lpt9.x"}) {
    EXPECT_EQ(Create(WidePathOf(name)), KERNEL_BAD_HANDLE) << name;
    EXPECT_EQ(Create(Widen(name)), KERNEL_BAD_HANDLE) << name;
    KernelDeleteFile(WidePathOf(name).c_str());
  }
  for (const std::u16string path : {u"\\\\.\\NUL", u"\\\\.\\pipe\\tarn", u"\\??\\C:\\a"}) {
    EXPECT_EQ(Create(path), KERNEL_BAD_HANDLE);
  }
  EXPECT_EQ(Entries(), 0U);
  EXPECT_EQ(Usage().temporaryFiles, 0U);
}

// False where the system makes none, whatever it answers: links need a privilege, and Wine 8 claims
// to have made one.
bool MakeLink(const std::u16string& link, const std::u16string& target) {
  if (::CreateSymbolicLinkW(Native16(link), Native16(target), 0) == 0) return false;
  const DWORD attributes = ::GetFileAttributesW(Native16(link));
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
}

// What the kernel looks at is tested without a link, and the whole where one can be made.
TEST_F(RawFiles, OnlyPlainFilesAreTaken) {
  using kernel::AreOfPlainFile;
  EXPECT_TRUE(AreOfPlainFile(FILE_ATTRIBUTE_NORMAL));
  EXPECT_TRUE(AreOfPlainFile(FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_HIDDEN));
  EXPECT_FALSE(AreOfPlainFile(FILE_ATTRIBUTE_REPARSE_POINT));
  EXPECT_FALSE(AreOfPlainFile(FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_REPARSE_POINT));
  EXPECT_FALSE(AreOfPlainFile(FILE_ATTRIBUTE_DIRECTORY));
  EXPECT_FALSE(AreOfPlainFile(FILE_ATTRIBUTE_DEVICE));

  Put("target", "precious");
  const std::u16string link = WidePathOf("link");
  if (!MakeLink(link, WidePathOf("target"))) return;
  EXPECT_EQ(Create(link), KERNEL_BAD_HANDLE);
  EXPECT_EQ(Get("target"), "precious");
  KernelDeleteFile(link.c_str());
  EXPECT_FALSE(Exists("link"));
  EXPECT_TRUE(Exists("target"));
}

TEST_F(RawFiles, AReadOnlyFileIsDeletedLikeAnyOther) {
  const std::u16string path = WidePathOf("image");
  Make(path, "1");
  ASSERT_TRUE(::SetFileAttributesW(Native16(path), FILE_ATTRIBUTE_READONLY));
  KernelDeleteFile(path.c_str());
  EXPECT_FALSE(Exists("image"));
  EXPECT_EQ(Usage().temporaryFiles, 0U);
}

TEST_F(RawFiles, AReadOnlyFileThatStaysKeepsItsMark) {
  const std::u16string path = WidePathOf("image");
  Make(path, "1");
  ASSERT_TRUE(::SetFileAttributesW(Native16(path), FILE_ATTRIBUTE_READONLY));
  const HANDLE held = ::CreateFileW(Native16(path), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(held, INVALID_HANDLE_VALUE);
  KernelDeleteFile(path.c_str());
  EXPECT_NE(::GetFileAttributesW(Native16(path)) & FILE_ATTRIBUTE_READONLY, 0U);
  EXPECT_EQ(Usage().temporaryFiles, 1U);
  ::CloseHandle(held);
  KernelDeleteFile(path.c_str());
  EXPECT_EQ(Usage().temporaryFiles, 0U);
}

TEST_F(RawFiles, AFileThatSomebodyHoldsStaysCounted) {
  const std::u16string path = WidePathOf("image");
  Make(path, "1");
  const HANDLE held = ::CreateFileW(Native16(path), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                    OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(held, INVALID_HANDLE_VALUE);
  KernelDeleteFile(path.c_str());
  EXPECT_EQ(Get("image"), "1");
  EXPECT_EQ(Usage().temporaryFiles, 1U);
  ::CloseHandle(held);
  KernelDeleteFile(path.c_str());
  EXPECT_EQ(Usage().temporaryFiles, 0U);
}

TEST_F(RawFiles, LongPathsWithAndWithoutThePrefixAreOneFile) {
  const std::string directory = PathOf(std::string(100, 'd'));
  std::filesystem::create_directory(Native(directory));
  const std::u16string path = Widen(directory) + u"/" + std::u16string(200, u'n');
  const std::u16string verbatim = u"\\\\?\\" + Native(directory).make_preferred().u16string() +
                                  u"\\" + std::u16string(200, u'N');
  Make(path, "first");
  Make(verbatim, "2");
  EXPECT_EQ(Usage().temporaryFiles, 1U);
  const uint64_t reading = KernelFileOpen(path.c_str(), KERNEL_OPEN_READ, KERNEL_OPEN_MODE);
  char byte = 0;
  EXPECT_EQ(KernelFileRead(reading, &byte, 1), 1U);
  EXPECT_EQ(byte, '2');
  EXPECT_EQ(KernelFileRead(reading, &byte, 1), 0U);
  KernelFileClose(reading);
  KernelDeleteFile(path.c_str());
  EXPECT_EQ(Usage().temporaryFiles, 0U);
  EXPECT_TRUE(std::filesystem::is_empty(Native(directory)));
}

TEST_F(RawFiles, LongNamesBehindThePrefixFollowTheUsualRules) {
  const std::u16string root = u"\\\\?\\" + Native(Root()).make_preferred().u16string() + u"\\";
  for (const char16_t* const name : {u"NUL", u"a:b", u"dir\\..\\a", u"..."}) {
    EXPECT_EQ(Create(root + name), KERNEL_BAD_HANDLE);
  }
  EXPECT_EQ(Entries(), 0U);
}

TEST_F(TempNames, LeadToNoStreamAndNoDevice) {
  const std::u16string root = Widen(Root());
  EXPECT_EQ(Make(root.c_str(), u"a:", nullptr), StatusCreateFailed);
  EXPECT_EQ(Make(root.c_str(), u"pst", u"x:y"), StatusCreateFailed);
  EXPECT_EQ(Make(root.c_str(), u"NUL.", nullptr), StatusCreateFailed);
  EXPECT_EQ(Make(root.c_str(), u"pst", u"?"), StatusCreateFailed);
  EXPECT_EQ(Make(u"\\\\.\\pipe", u"pst", nullptr), StatusCreateFailed);
  EXPECT_EQ(Entries(), 0U);
  EXPECT_EQ(Usage().temporaryFiles, 0U);
}

bool Opens(const char16_t* path) {
  const HANDLE file = ::CreateFileW(reinterpret_cast<const wchar_t*>(path), GENERIC_READ,
                                    FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  ::CloseHandle(file);
  return true;
}

// With the prefix, the system takes what follows letter by letter; the kernel does not.
TEST_F(TempNames, BehindThePrefixADirectoryOfAnySpellingGivesNamesThatOpen) {
  std::filesystem::create_directory(NativePathOf("dir"));
  const std::u16string root = Native(Root()).make_preferred().u16string();
  for (const std::u16string end :
       {u"\\dir", u"\\dir\\", u"/dir", u"\\.\\dir", u"\\dir.", u"\\\\dir"}) {
    ASSERT_EQ(Make((u"\\\\?\\" + root + end).c_str(), u"pst", nullptr), StatusOk) << Narrow(end);
    EXPECT_TRUE(Opens(name_.data())) << Narrow(name_.data());
    EXPECT_TRUE(std::u16string(name_.data()).starts_with(root + end));
    Delete();
    EXPECT_TRUE(std::filesystem::is_empty(NativePathOf("dir")));
  }
}

TEST_F(TempNames, BehindThePrefixALongDirectoryGivesNamesThatOpenToo) {
  const std::string directory(200, 'd');
  std::filesystem::create_directory(NativePathOf(directory));
  const std::u16string root = u"\\\\?\\" + Native(Root()).make_preferred().u16string();
  const std::u16string given = root + u"/./" + Widen(directory);
  ASSERT_EQ(Make(given.c_str(), std::u16string(60, u'p').c_str(), nullptr, 600), StatusOk);
  EXPECT_TRUE(Opens(name_.data())) << Narrow(name_.data());
  EXPECT_TRUE(std::u16string(name_.data()).starts_with(root + u"\\" + Widen(directory) + u"\\p"));
  Delete();
  EXPECT_TRUE(std::filesystem::is_empty(NativePathOf(directory)));
}

TEST_F(TempNames, AVolumeByItsOwnNameHoldsNone) {
  const char16_t* const volume = u"\\\\?\\Volume{5f1b2c3d-0000-0000-0000-100000000000}\\";
  EXPECT_EQ(Make(volume, u"pst", nullptr), StatusCreateFailed);
  EXPECT_EQ(Make(u"\\\\?\\C:", u"pst", nullptr), StatusCreateFailed);
  PlainKernelSetTempDirectory(volume);
  EXPECT_EQ(Make(nullptr, u"pst", nullptr), StatusCreateFailed);
}

TEST_F(TempNames, ADirectoryInTheWayIsACollisionToo) {
  std::filesystem::create_directory(NativePathOf("pstaaaaaaaaaaaaaaaa"));
  GiveZeros(1);
  ASSERT_EQ(MakeIn(Root()), StatusOk);
  EXPECT_EQ(ZeroDrawsLeft(), 0);
  EXPECT_EQ(Entries(), 2U);
  Delete();
}

TEST_F(TempNames, AFileOfTheSameNameInCapitalsIsACollisionToo) {
  Put("PSTAAAAAAAAAAAAAAAA", "precious");
  GiveZeros(1);
  ASSERT_EQ(MakeIn(Root()), StatusOk);
  EXPECT_EQ(ZeroDrawsLeft(), 0);
  EXPECT_EQ(Get("PSTAAAAAAAAAAAAAAAA"), "precious");
  Delete();
}

TEST_F(TempNames, ATemporaryDirectoryIsNoFile) {
  Put("file", "");
  PlainKernelSetTempDirectory(WidePathOf("a/../file").c_str());
  EXPECT_EQ(Make(nullptr, u"pst", nullptr), StatusCreateFailed);
}

TEST_F(TempNames, TheSystemsDirectoryMayHaveAnyName) {
  const std::string directory = PathOf("\xC3\xA4 \xE2\x82\xAC");
  std::filesystem::create_directory(Native(directory));
  const ScopedVariable variable(kTempVariable, directory.c_str());
  ASSERT_EQ(Make(nullptr, u"pst", nullptr), StatusOk);
  EXPECT_FALSE(std::filesystem::is_empty(Native(directory)));
  Delete();
  EXPECT_TRUE(std::filesystem::is_empty(Native(directory)));
}

}  // namespace
}  // namespace tarn::test
