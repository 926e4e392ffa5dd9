#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/random.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <optional>
#include <set>

#include "Scratch.h"
#include "Tarnbase/PlainKernel.h"

namespace {

// How many of the next draws of random bytes give zeros.
std::atomic<int> zeroDraws{0};

}  // namespace

// Stands in front of the C library's, for the kernel too: collisions of names cannot be had
// otherwise.
extern "C" __attribute__((visibility("default"))) ssize_t getrandom(void* buffer, size_t length,
                                                                    unsigned flags) {
  if (zeroDraws.load() > 0) {
    --zeroDraws;
    std::memset(buffer, 0, length);
    return static_cast<ssize_t>(length);
  }
  return static_cast<ssize_t>(::syscall(SYS_getrandom, buffer, length, flags));
}

namespace tarn::test {
namespace {

class TempNames : public Scratch {
 protected:
  static constexpr int32_t kCapacity = 264;

  int32_t Make(const char16_t* directory, const char16_t* prefix, const char16_t* extension,
               int32_t capacity = kCapacity) {
    name_.fill(u'#');
    return KernelTempFileName(directory, name_.data(), capacity, 1, prefix, extension);
  }
  int32_t MakeIn(const std::string& directory, const char16_t* extension = nullptr,
                 int32_t capacity = kCapacity) {
    return Make(Widen(directory).c_str(), u"pst", extension, capacity);
  }
  // The name made, with the unique part taken out after a look at it.
  std::string Frame(size_t front) const {
    const std::string name = Narrow(name_.data());
    const std::string unique = name.substr(front, kUnique);
    EXPECT_EQ(unique.find_first_not_of("abcdefghijklmnopqrstuvwxyz234567"), std::string::npos);
    return name.substr(0, front) + "*" + name.substr(front + kUnique);
  }
  void Delete() { KernelDeleteFile(name_.data()); }

  static constexpr size_t kUnique = 16;
  std::array<char16_t, 600> name_;
};

// Sets TMPDIR for the time of a test.
class TempVariable {
 public:
  explicit TempVariable(const char* value) {
    if (const char* const old = ::getenv("TMPDIR")) old_ = old;
    value == nullptr ? ::unsetenv("TMPDIR") : ::setenv("TMPDIR", value, 1);
  }
  ~TempVariable() { old_ ? ::setenv("TMPDIR", old_->c_str(), 1) : ::unsetenv("TMPDIR"); }

 private:
  std::optional<std::string> old_;
};

TEST_F(TempNames, AreDirectorySeparatorPrefixUniqueExtension) {
  ASSERT_EQ(MakeIn(Root(), u"html"), 1);
  EXPECT_EQ(Frame(Root().size() + 4), Root() + "/pst*.html");
  Delete();
  ASSERT_EQ(MakeIn(Root()), 1);
  EXPECT_EQ(Frame(Root().size() + 4), Root() + "/pst*");
  Delete();
  ASSERT_EQ(MakeIn(Root(), u""), 1);
  EXPECT_EQ(Frame(Root().size() + 4), Root() + "/pst*");
  Delete();
  ASSERT_EQ(Make(Widen(Root()).c_str(), nullptr, u"x"), 1);
  EXPECT_EQ(Frame(Root().size() + 1), Root() + "/*.x");
  Delete();
}

TEST_F(TempNames, APrefixMayBeTheSameTextAsTheExtension) {
  const char16_t* const both = u"pst";
  ASSERT_EQ(Make(Widen(Root()).c_str(), both, both), 1);
  EXPECT_EQ(Frame(Root().size() + 4), Root() + "/pst*.pst");
  Delete();
}

TEST_F(TempNames, DoNotDoubleASeparator) {
  ASSERT_EQ(MakeIn(Root() + "/"), 1);
  EXPECT_EQ(Frame(Root().size() + 4), Root() + "/pst*");
  Delete();
  ASSERT_EQ(MakeIn(Root() + "\\"), 1);
  EXPECT_EQ(Frame(Root().size() + 4), Root() + "\\pst*");
  EXPECT_EQ(Entries(), 1U);
  Delete();
  EXPECT_EQ(Entries(), 0U);
}

TEST_F(TempNames, TheFileExistsEmptyAndForItsOwnerAlone) {
  ASSERT_EQ(MakeIn(Root(), u"html"), 1);
  struct stat status = {};
  ASSERT_EQ(::stat(Narrow(name_.data()).c_str(), &status), 0);
  EXPECT_EQ(status.st_size, 0);
  EXPECT_EQ(status.st_mode & 07777U, 0600U);
  EXPECT_EQ(Usage().temporaryFiles, 1U);
  Delete();
  EXPECT_EQ(Usage().temporaryFiles, 0U);
}

TEST_F(TempNames, TheFileIsThenWrittenAsARawFile) {
  ASSERT_EQ(MakeIn(Root(), u"html"), 1);
  const uint64_t handle = KernelRawFileCreate(name_.data(), 0);
  ASSERT_NE(handle, KERNEL_BAD_HANDLE);
  EXPECT_EQ(KernelRawFileWrite(handle, "<p>", 3, 0), 3U);
  KernelRawFileClose(handle, 0);
  EXPECT_EQ(Usage().temporaryFiles, 1U);
  EXPECT_EQ(std::filesystem::file_size(Narrow(name_.data())), 3U);
  Delete();
}

TEST_F(TempNames, AreAllDifferent) {
  std::set<std::u16string> names;
  for (int i = 0; i < 300; ++i) {
    ASSERT_EQ(MakeIn(Root()), 1);
    EXPECT_TRUE(names.insert(name_.data()).second);
  }
  EXPECT_EQ(Entries(), 300U);
  EXPECT_EQ(Usage().temporaryFiles, 300U);
  for (const std::u16string& name : names) KernelDeleteFile(name.c_str());
}

TEST_F(TempNames, ACollisionDrawsAnotherName) {
  Put("pstaaaaaaaaaaaaaaaa.html", "precious");
  zeroDraws = 2;
  ASSERT_EQ(MakeIn(Root(), u"html"), 1);
  EXPECT_EQ(zeroDraws, 0);
  EXPECT_EQ(Get("pstaaaaaaaaaaaaaaaa.html"), "precious");
  EXPECT_EQ(Entries(), 2U);
  EXPECT_EQ(Usage().temporaryFiles, 1U);
  Delete();
}

TEST_F(TempNames, ALinkInTheWayIsACollisionToo) {
  std::filesystem::create_symlink(PathOf("elsewhere"), PathOf("pstaaaaaaaaaaaaaaaa"));
  zeroDraws = 1;
  ASSERT_EQ(MakeIn(Root()), 1);
  EXPECT_FALSE(Exists("elsewhere"));
  Delete();
}

TEST_F(TempNames, EndlessCollisionsFail) {
  Put("pstaaaaaaaaaaaaaaaa", "precious");
  zeroDraws = 1000000;
  EXPECT_EQ(MakeIn(Root()), -1490);
  EXPECT_GT(zeroDraws, 0);
  zeroDraws = 0;
  EXPECT_EQ(Get("pstaaaaaaaaaaaaaaaa"), "precious");
  EXPECT_EQ(Usage().temporaryFiles, 0U);
}

TEST_F(TempNames, FitExactlyOrNotAtAll) {
  const int32_t length = static_cast<int32_t>(Root().size() + 4 + kUnique + 5);
  for (const int32_t capacity : {-1, 0, 1, length - 1, length}) {
    EXPECT_EQ(MakeIn(Root(), u"html", capacity), -1490) << capacity;
    EXPECT_TRUE(std::all_of(name_.begin(), name_.end(), [](char16_t c) { return c == u'#'; }));
  }
  EXPECT_EQ(Entries(), 0U);
  EXPECT_EQ(Usage().temporaryFiles, 0U);
  ASSERT_EQ(MakeIn(Root(), u"html", length + 1), 1);
  EXPECT_EQ(name_[static_cast<size_t>(length)], u'\0');
  EXPECT_EQ(name_[static_cast<size_t>(length) + 1], u'#');
  Delete();
}

TEST_F(TempNames, CapacityCountsUnitsNotBytes) {
  const std::string directory = PathOf("\xF0\x9F\x98\x80\xE2\x82\xAC");  // 3 units, 7 bytes
  std::filesystem::create_directory(directory);
  const int32_t length = static_cast<int32_t>(Root().size() + 1 + 3 + 4 + kUnique);
  EXPECT_EQ(MakeIn(directory, nullptr, length), -1490);
  ASSERT_EQ(MakeIn(directory, nullptr, length + 1), 1);
  EXPECT_EQ(std::u16string(name_.data()).size(), static_cast<size_t>(length));
  Delete();
}

TEST_F(TempNames, NeedAnExistingDirectory) {
  EXPECT_EQ(MakeIn(PathOf("missing")), -1490);
  Put("file", "");
  EXPECT_EQ(MakeIn(PathOf("file")), -1490);
  EXPECT_EQ(MakeIn(Root() + "/."), 1);
  Delete();
  EXPECT_EQ(MakeIn(Root() + "/.."), -1490);
  EXPECT_EQ(Make((Widen(Root()) + u"/\xDC00").c_str(), u"pst", nullptr), -1490);
  EXPECT_EQ(Usage().temporaryFiles, 0U);
}

TEST_F(TempNames, PartsOfTheNameLeadNowhereElse) {
  std::filesystem::create_directory(PathOf("a"));
  const std::u16string root = Widen(Root());
  for (const char16_t* const part : {u"a/", u"a\\", u"/", u"a/b", u"\xD800"}) {
    EXPECT_EQ(Make(root.c_str(), part, nullptr), -1490);
    EXPECT_EQ(Make(root.c_str(), u"pst", part), -1490);
  }
  EXPECT_EQ(KernelTempFileName(root.c_str(), nullptr, kCapacity, 1, u"pst", nullptr), -1490);
  EXPECT_EQ(Entries(), 1U);
  EXPECT_TRUE(std::filesystem::is_empty(PathOf("a")));
}

TEST_F(TempNames, WithoutADirectoryGoWhereTheControlSays) {
  PlainKernelSetTempDirectory(Widen(Root()).c_str());
  ASSERT_EQ(Make(nullptr, u"pst", nullptr), 1);
  EXPECT_EQ(Frame(Root().size() + 4), Root() + "/pst*");
  Delete();
  ASSERT_EQ(Make(u"", u"pst", nullptr), 1);
  EXPECT_EQ(Frame(Root().size() + 4), Root() + "/pst*");
  Delete();
}

TEST_F(TempNames, TheControlCopiesItsPath) {
  std::u16string path = Widen(Root());
  PlainKernelSetTempDirectory(path.c_str());
  std::fill(path.begin(), path.end(), u'x');
  ASSERT_EQ(Make(nullptr, u"pst", nullptr), 1);
  EXPECT_EQ(Entries(), 1U);
  Delete();
}

TEST_F(TempNames, ATemporaryDirectoryNamedThroughItsParentCanBeUsed) {
  std::filesystem::create_directory(PathOf("a"));
  std::filesystem::create_directory(PathOf("b"));
  PlainKernelSetTempDirectory(WidePathOf("a/../b").c_str());
  ASSERT_EQ(Make(nullptr, u"pst", nullptr), 1);
  const uint64_t handle = KernelRawFileCreate(name_.data(), 0);
  EXPECT_NE(handle, KERNEL_BAD_HANDLE);
  KernelRawFileClose(handle, 0);
  EXPECT_FALSE(std::filesystem::is_empty(PathOf("b")));
  Delete();
  EXPECT_TRUE(std::filesystem::is_empty(PathOf("b")));
  PlainKernelSetTempDirectory(WidePathOf("a/../missing").c_str());
  EXPECT_EQ(Make(nullptr, u"pst", nullptr), -1490);
}

TEST_F(TempNames, ElseGoToTheDirectoryOfTheSystem) {
  const TempVariable variable(Root().c_str());
  ASSERT_EQ(Make(nullptr, u"pst", nullptr), 1);
  EXPECT_EQ(Frame(Root().size() + 4), Root() + "/pst*");
  Delete();
}

TEST_F(TempNames, TheSystemsDirectoryIsTmpUnlessNamed) {
  for (const char* const value : {static_cast<const char*>(nullptr), "", "/tmp/\xFF"}) {
    const TempVariable variable(value);
    ASSERT_EQ(Make(nullptr, u"pst", nullptr), 1);
    EXPECT_EQ(Frame(8), "/tmp/pst*");
    Delete();
  }
}

}  // namespace
}  // namespace tarn::test
