#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>

#include "RandomDraws.h"
#include "TarnPst.h"
#include "Tarnbase/PlainKernel.h"
#include "TempNamesFixture.h"
#include "support/Environment.h"

namespace tarn::test {
namespace {

TEST_F(TempNames, AreDirectorySeparatorPrefixUniqueExtension) {
  ASSERT_EQ(MakeIn(Root(), u"html"), StatusOk);
  EXPECT_EQ(Frame(Root().size() + 4), Root() + kSeparator + "pst*.html");
  Delete();
  ASSERT_EQ(MakeIn(Root()), StatusOk);
  EXPECT_EQ(Frame(Root().size() + 4), Root() + kSeparator + "pst*");
  Delete();
  ASSERT_EQ(MakeIn(Root(), u""), StatusOk);
  EXPECT_EQ(Frame(Root().size() + 4), Root() + kSeparator + "pst*");
  Delete();
  ASSERT_EQ(Make(Widen(Root()).c_str(), nullptr, u"x"), StatusOk);
  EXPECT_EQ(Frame(Root().size() + 1), Root() + kSeparator + "*.x");
  Delete();
}

TEST_F(TempNames, APrefixMayBeTheSameTextAsTheExtension) {
  const char16_t* const both = u"pst";
  ASSERT_EQ(Make(Widen(Root()).c_str(), both, both), StatusOk);
  EXPECT_EQ(Frame(Root().size() + 4), Root() + kSeparator + "pst*.pst");
  Delete();
}

TEST_F(TempNames, DoNotDoubleASeparator) {
  ASSERT_EQ(MakeIn(Root() + "/"), StatusOk);
  EXPECT_EQ(Frame(Root().size() + 4), Root() + "/pst*");
  Delete();
  ASSERT_EQ(MakeIn(Root() + "\\"), StatusOk);
  EXPECT_EQ(Frame(Root().size() + 4), Root() + "\\pst*");
  EXPECT_EQ(Entries(), 1U);
  Delete();
  EXPECT_EQ(Entries(), 0U);
}

TEST_F(TempNames, TheFileExistsEmpty) {
  ASSERT_EQ(MakeIn(Root(), u"html"), StatusOk);
  EXPECT_EQ(std::filesystem::file_size(std::u16string(name_.data())), 0U);
  EXPECT_EQ(Usage().temporaryFiles, 1U);
  Delete();
  EXPECT_EQ(Usage().temporaryFiles, 0U);
}

TEST_F(TempNames, TheFileIsThenWrittenAsARawFile) {
  ASSERT_EQ(MakeIn(Root(), u"html"), StatusOk);
  const uint64_t handle = KernelRawFileCreate(name_.data(), 0);
  ASSERT_NE(handle, KERNEL_BAD_HANDLE);
  EXPECT_EQ(KernelRawFileWrite(handle, "<p>", 3, 0), 3U);
  KernelRawFileClose(handle, 0);
  EXPECT_EQ(Usage().temporaryFiles, 1U);
  EXPECT_EQ(std::filesystem::file_size(std::u16string(name_.data())), 3U);
  Delete();
}

TEST_F(TempNames, AreAllDifferent) {
  std::set<std::u16string> names;
  for (int i = 0; i < 300; ++i) {
    ASSERT_EQ(MakeIn(Root()), StatusOk);
    EXPECT_TRUE(names.insert(name_.data()).second);
  }
  EXPECT_EQ(Entries(), 300U);
  EXPECT_EQ(Usage().temporaryFiles, 300U);
  for (const std::u16string& name : names) KernelDeleteFile(name.c_str());
}

TEST_F(TempNames, ACollisionDrawsAnotherName) {
  Put("pstaaaaaaaaaaaaaaaa.html", "precious");
  GiveZeros(2);
  ASSERT_EQ(MakeIn(Root(), u"html"), StatusOk);
  EXPECT_EQ(ZeroDrawsLeft(), 0);
  EXPECT_EQ(Get("pstaaaaaaaaaaaaaaaa.html"), "precious");
  EXPECT_EQ(Entries(), 2U);
  EXPECT_EQ(Usage().temporaryFiles, 1U);
  Delete();
}

TEST_F(TempNames, EndlessCollisionsFail) {
  Put("pstaaaaaaaaaaaaaaaa", "precious");
  GiveZeros(1000000);
  EXPECT_EQ(MakeIn(Root()), StatusCreateFailed);
  EXPECT_GT(ZeroDrawsLeft(), 0);
  GiveZeros(0);
  EXPECT_EQ(Get("pstaaaaaaaaaaaaaaaa"), "precious");
  EXPECT_EQ(Usage().temporaryFiles, 0U);
}

TEST_F(TempNames, FitExactlyOrNotAtAll) {
  const int32_t length = static_cast<int32_t>(Root().size() + 4 + kUnique + 5);
  for (const int32_t capacity : {-1, 0, 1, length - 1, length}) {
    EXPECT_EQ(MakeIn(Root(), u"html", capacity), StatusCreateFailed) << capacity;
    EXPECT_TRUE(std::all_of(name_.begin(), name_.end(), [](char16_t c) { return c == u'#'; }));
  }
  EXPECT_EQ(Entries(), 0U);
  EXPECT_EQ(Usage().temporaryFiles, 0U);
  ASSERT_EQ(MakeIn(Root(), u"html", length + 1), StatusOk);
  EXPECT_EQ(name_[static_cast<size_t>(length)], u'\0');
  EXPECT_EQ(name_[static_cast<size_t>(length) + 1], u'#');
  Delete();
}

TEST_F(TempNames, CapacityCountsUnitsNotBytes) {
  const std::string directory = PathOf("\xF0\x9F\x98\x80\xE2\x82\xAC");  // 3 units, 7 bytes
  std::filesystem::create_directory(Native(directory));
  const int32_t length = static_cast<int32_t>(Root().size() + 1 + 3 + 4 + kUnique);
  EXPECT_EQ(MakeIn(directory, nullptr, length), StatusCreateFailed);
  ASSERT_EQ(MakeIn(directory, nullptr, length + 1), StatusOk);
  EXPECT_EQ(std::u16string(name_.data()).size(), static_cast<size_t>(length));
  Delete();
}

TEST_F(TempNames, NeedAnExistingDirectory) {
  EXPECT_EQ(MakeIn(PathOf("missing")), StatusCreateFailed);
  Put("file", "");
  EXPECT_EQ(MakeIn(PathOf("file")), StatusCreateFailed);
  EXPECT_EQ(MakeIn(Root() + "/."), StatusOk);
  Delete();
  EXPECT_EQ(MakeIn(Root() + "/.."), StatusCreateFailed);
  EXPECT_EQ(Make((Widen(Root()) + u"/\xDC00").c_str(), u"pst", nullptr), StatusCreateFailed);
  EXPECT_EQ(Usage().temporaryFiles, 0U);
}

TEST_F(TempNames, PartsOfTheNameLeadNowhereElse) {
  std::filesystem::create_directory(NativePathOf("a"));
  const std::u16string root = Widen(Root());
  for (const char16_t* const part : {u"a/", u"a\\", u"/", u"a/b", u"\xD800"}) {
    EXPECT_EQ(Make(root.c_str(), part, nullptr), StatusCreateFailed);
    EXPECT_EQ(Make(root.c_str(), u"pst", part), StatusCreateFailed);
  }
  EXPECT_EQ(KernelTempFileName(root.c_str(), nullptr, kCapacity, 1, u"pst", nullptr),
            StatusCreateFailed);
  EXPECT_EQ(Entries(), 1U);
  EXPECT_TRUE(std::filesystem::is_empty(NativePathOf("a")));
}

TEST_F(TempNames, WithoutADirectoryGoWhereTheControlSays) {
  PlainKernelSetTempDirectory(Widen(Root()).c_str());
  ASSERT_EQ(Make(nullptr, u"pst", nullptr), StatusOk);
  EXPECT_EQ(Frame(Root().size() + 4), Root() + kSeparator + "pst*");
  Delete();
  ASSERT_EQ(Make(u"", u"pst", nullptr), StatusOk);
  EXPECT_EQ(Frame(Root().size() + 4), Root() + kSeparator + "pst*");
  Delete();
}

TEST_F(TempNames, TheControlCopiesItsPath) {
  std::u16string path = Widen(Root());
  PlainKernelSetTempDirectory(path.c_str());
  std::fill(path.begin(), path.end(), u'x');
  ASSERT_EQ(Make(nullptr, u"pst", nullptr), StatusOk);
  EXPECT_EQ(Entries(), 1U);
  Delete();
}

TEST_F(TempNames, ATemporaryDirectoryNamedThroughItsParentCanBeUsed) {
  std::filesystem::create_directory(NativePathOf("a"));
  std::filesystem::create_directory(NativePathOf("b"));
  PlainKernelSetTempDirectory(WidePathOf("a/../b").c_str());
  ASSERT_EQ(Make(nullptr, u"pst", nullptr), StatusOk);
  const uint64_t handle = KernelRawFileCreate(name_.data(), 0);
  EXPECT_NE(handle, KERNEL_BAD_HANDLE);
  KernelRawFileClose(handle, 0);
  EXPECT_FALSE(std::filesystem::is_empty(NativePathOf("b")));
  Delete();
  EXPECT_TRUE(std::filesystem::is_empty(NativePathOf("b")));
  PlainKernelSetTempDirectory(WidePathOf("a/../missing").c_str());
  EXPECT_EQ(Make(nullptr, u"pst", nullptr), StatusCreateFailed);
}

TEST_F(TempNames, ElseGoToTheDirectoryOfTheSystem) {
  const ScopedVariable variable(kTempVariable, Root().c_str());
  ASSERT_EQ(Make(nullptr, u"pst", nullptr), StatusOk);
  EXPECT_EQ(Frame(Root().size() + 4), Root() + kSeparator + "pst*");
  Delete();
}

}  // namespace
}  // namespace tarn::test
