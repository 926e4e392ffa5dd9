// Files as Windows tells of them.

#include "console/SystemFiles.h"

#include <aclapi.h>
#include <gtest/gtest.h>
#include <sddl.h>

#include <set>

#include "console/win32/FileHandle.h"
#include "console/win32/FinalPath.h"
#include "support/TempDirectory.h"
#include "tarnmail/win32/LockedFile.h"
#include "tarnmail/win32/LongDirectory.h"

namespace tarn::host {
namespace {

namespace fs = std::filesystem;

// Who is let in at all, as "S-1-5-18"; nobody named means everybody, and is "*".
std::set<std::wstring> LetIn(const fs::path& path) {
  ACL* list = nullptr;
  void* descriptor = nullptr;
  std::wstring name = path.wstring();
  EXPECT_EQ(GetNamedSecurityInfoW(name.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr,
                                  nullptr, &list, nullptr, &descriptor),
            DWORD{ERROR_SUCCESS});
  if (list == nullptr) return {L"*"};
  std::set<std::wstring> names;
  for (DWORD i = 0; i < list->AceCount; ++i) {
    void* entry = nullptr;
    if (GetAce(list, i, &entry) == 0) continue;
    auto* const allowed = static_cast<ACCESS_ALLOWED_ACE*>(entry);
    wchar_t* text = nullptr;
    if (allowed->Header.AceType != ACCESS_ALLOWED_ACE_TYPE || allowed->Mask == 0 ||
        ConvertSidToStringSidW(&allowed->SidStart, &text) == 0) {
      continue;
    }
    names.insert(text);
    LocalFree(text);
  }
  LocalFree(descriptor);
  return names;
}

constexpr const wchar_t* kEverybody = L"S-1-1-0";
constexpr const wchar_t* kSystem = L"S-1-5-18";

class SystemFiles : public testing::Test {
 protected:
  SystemFiles() { directory_.write("Mail.eml", "From: a@b.c"); }

  fs::path in(const char* name) const { return directory_.path() / name; }

  FileKind kindOf(const fs::path& path) {
    const FileKind kind = KindOfFile(path, error_);
    EXPECT_EQ(static_cast<bool>(error_), kind == FileKind::Unknown);
    return kind;
  }

  test::TempDirectory directory_;
  std::error_code error_;
};

TEST_F(SystemFiles, HaveAKind) {
  EXPECT_EQ(kindOf(in("mail.eml")), FileKind::Regular);
  EXPECT_EQ(kindOf(directory_.path()), FileKind::Directory);
  EXPECT_EQ(kindOf(in("none")), FileKind::Missing);
  EXPECT_EQ(kindOf(in("none/mail.eml")), FileKind::Missing);
  EXPECT_EQ(kindOf(in("mail.eml/x")), FileKind::Missing);
  EXPECT_EQ(kindOf("what?"), FileKind::Missing);
  EXPECT_EQ(kindOf(""), FileKind::Missing);
  EXPECT_EQ(kindOf("NUL"), FileKind::Other);
  EXPECT_EQ(kindOf("\\\\.\\pipe\\none"), FileKind::Pipe);
}

TEST_F(SystemFiles, HaveAKindWhoeverHoldsThem) {
  const test::LockedFile lock(in("mail.eml"));
  EXPECT_EQ(kindOf(in("mail.eml")), FileKind::Regular);
  EXPECT_TRUE(CheckReadable(in("mail.eml")));
}

TEST_F(SystemFiles, AreTheSameByWhateverNames) {
  fs::create_hard_link(in("Mail.eml"), in("other"));
  directory_.write("copy", "From: a@b.c");
  EXPECT_TRUE(IsSameFile(in("mail.eml"), in("MAIL.EML")));
  EXPECT_TRUE(IsSameFile(in("mail.eml"), in("other")));
  EXPECT_TRUE(IsSameFile(directory_.path(), directory_.path() / "."));
  EXPECT_FALSE(IsSameFile(in("mail.eml"), in("copy")));
  EXPECT_FALSE(IsSameFile(in("mail.eml"), in("none")));
  EXPECT_FALSE(IsSameFile(in("none"), in("none")));
}

// What a link leads to; there are none where these tests run, but any file has such a path.
TEST_F(SystemFiles, HaveAFinalPath) {
  const fs::path path = FinalPath(in("mAIL.eml"), error_);
  EXPECT_FALSE(error_);
  EXPECT_TRUE(path.native().starts_with(L"\\\\?\\")) << path;
  EXPECT_EQ(path.filename(), "Mail.eml");
  EXPECT_TRUE(IsSameFile(path, in("mail.eml")));
  EXPECT_EQ(FinalPath(in("none"), error_), fs::path());
  EXPECT_TRUE(error_);
}

TEST_F(SystemFiles, AreTheirOwnTargetsUnlessTheyAreLinks) {
  EXPECT_EQ(TargetOfLinks(in("mAIL.eml"), error_), in("mAIL.eml"));
  EXPECT_FALSE(error_);
}

// Wherever it is: the folder around it lets everybody in, and would hand that on.
TEST_F(SystemFiles, OfAPrivateFolderAreForNobodyElse) {
  SECURITY_ATTRIBUTES open = {sizeof open, nullptr, FALSE};
  ASSERT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorW(
      L"D:(A;OICI;FA;;;WD)", SDDL_REVISION_1, &open.lpSecurityDescriptor, nullptr));
  const fs::path around = in("around");
  ASSERT_TRUE(CreateDirectoryW(around.c_str(), &open));
  LocalFree(open.lpSecurityDescriptor);
  EXPECT_TRUE(LetIn(around).contains(kEverybody));

  const fs::path folder = MakePrivateFolder(around, error_);
  ASSERT_FALSE(error_);
  std::set<std::wstring> others = LetIn(folder);
  others.erase(kSystem);
  EXPECT_EQ(others.size(), 1u);  // the user
  EXPECT_FALSE(others.contains(kEverybody));

  // The user may do everything in it. That its files are as private is not asked: Wine (8.0) hands
  // no access list on, and nobody else comes to them.
  WritableFile file;
  EXPECT_FALSE(file.create(folder / "image.png"));
  EXPECT_FALSE(file.writeAndClose("bytes"));
  RemoveTree(folder);
  EXPECT_TRUE(fs::is_empty(around));
}

TEST_F(SystemFiles, MayHaveLongPaths) {
  const test::LongDirectory deep;
  const fs::path part = deep.path() / "part";
  const fs::path place = deep.path() / "place";
  EXPECT_EQ(kindOf(deep.path()), FileKind::Directory);
  EXPECT_EQ(kindOf(part), FileKind::Missing);
  WritableFile file;
  EXPECT_FALSE(file.create(part));
  EXPECT_FALSE(file.writeAndClose("bytes"));
  EXPECT_FALSE(MoveIntoPlace(part, place));
  EXPECT_EQ(kindOf(place), FileKind::Regular);
  EXPECT_FALSE(CheckReadable(place));
  EXPECT_TRUE(IsSameFile(place, deep.path() / "." / "PLACE"));
  EXPECT_EQ(TargetOfLinks(place, error_), place);
  RemoveFile(place);
  EXPECT_EQ(kindOf(place), FileKind::Missing);
}

}  // namespace
}  // namespace tarn::host
