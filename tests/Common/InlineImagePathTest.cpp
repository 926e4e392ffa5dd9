#include <gtest/gtest.h>

#include "Common/ApiUtils.h"
#include "Common/InlineImages.h"
#include "KernelUse.h"
#include "Platform/Directories.h"
#include "support/TempDirectory.h"

namespace tarn {
namespace {

class InlineImagePathTest : public ::testing::Test {
 protected:
  void setDirectory(const std::u16string& name) {
    ASSERT_LT(name.size(), std::size(directory_));
    std::memset(directory_, 0, sizeof(directory_));
    name.copy(directory_, name.size());
  }

  Status make(const char* text, const char* name) {
    std::memset(path_, '#', sizeof(path_));
    return MakeInlineImagePath(path_, directory_, text, name);
  }

  // The longest path has 262 bytes.
  void expectLimit(const std::string& text, const std::string& name, uint64_t length) {
    if (length <= 262) {
      EXPECT_EQ(make(text.c_str(), name.c_str()), StatusOk) << length;
      EXPECT_EQ(std::strlen(path_), length);
    } else {
      EXPECT_EQ(make(text.c_str(), name.c_str()), StatusPathOverflow) << length;
    }
  }

  char path_[kPathCapacity];
  char16_t directory_[kPathCapacity] = {};
};

TEST_F(InlineImagePathTest, WithoutATextTheNameAlone) {
  setDirectory(u"d\\");
  EXPECT_EQ(make(nullptr, "a.png"), StatusOk);
  EXPECT_STREQ(path_, "d\\a.png");
  EXPECT_EQ(make("", "a.png"), StatusOk);
  EXPECT_STREQ(path_, "d\\a.png");
  EXPECT_EQ(make(nullptr, nullptr), StatusOk);
  EXPECT_STREQ(path_, "d\\");
}

TEST_F(InlineImagePathTest, ATextWithoutTheName) {
  setDirectory(u"d\\");
  EXPECT_EQ(make("id7@host", "a.png"), StatusOk);
  EXPECT_STREQ(path_, "d\\id7@host_a.png");
  EXPECT_EQ(make("id7@host", ""), StatusOk);
  EXPECT_STREQ(path_, "d\\id7@host_");
  EXPECT_EQ(make("id7@host", nullptr), StatusOk);
  EXPECT_STREQ(path_, "d\\id7@host_");
  EXPECT_EQ(make("A.PNG", "a.png"), StatusOk);
  EXPECT_STREQ(path_, "d\\A.PNG_a.png");
}

TEST_F(InlineImagePathTest, EqualTextsGiveUnderscoreAndName) {
  setDirectory(u"d\\");
  EXPECT_EQ(make("a.png", "a.png"), StatusOk);
  EXPECT_STREQ(path_, "d\\_a.png");
}

TEST_F(InlineImagePathTest, NameAtTailGivesTailAndName) {
  setDirectory(u"d\\");
  EXPECT_EQ(make("a.png@01D9", "a.png"), StatusOk);
  EXPECT_STREQ(path_, "d\\01D9_a.png");
  EXPECT_EQ(make("a.png01D9", "a.png"), StatusOk);
  EXPECT_STREQ(path_, "d\\01D9_a.png");
  EXPECT_EQ(make("a.png@", "a.png"), StatusOk);
  EXPECT_STREQ(path_, "d\\_a.png");
  EXPECT_EQ(make("a.png@@x", "a.png"), StatusOk);
  EXPECT_STREQ(path_, "d\\@x_a.png");
}

TEST_F(InlineImagePathTest, WhatStandsBeforeTheNameStays) {
  setDirectory(u"d\\");
  EXPECT_EQ(make("x-a.png", "a.png"), StatusOk);
  EXPECT_STREQ(path_, "d\\x-_a.png");
  EXPECT_EQ(make("x-a.png@01D9", "a.png"), StatusOk);
  EXPECT_STREQ(path_, "d\\x-01D9_a.png");
  EXPECT_EQ(make("aXa", "a"), StatusOk);  // the first find
  EXPECT_STREQ(path_, "d\\Xa_a");
}

TEST_F(InlineImagePathTest, TheDirectoryIsTakenAsItIsAndInUtf8) {
  setDirectory(u"caf\u00E9\u20AC\U0001F600/");
  EXPECT_EQ(make(nullptr, "a"), StatusOk);
  EXPECT_STREQ(path_, "caf\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80/a");
  EXPECT_EQ(std::u16string(directory_), u"caf\u00E9\u20AC\U0001F600/");
}

TEST_F(InlineImagePathTest, NoPathOf263BytesWithoutAText) {
  setDirectory(u"d\\");
  for (const uint64_t length : {261u, 262u, 263u, 264u, 265u, 5000u}) {
    expectLimit("", std::string(length - 2, 'n'), length);
  }
}

TEST_F(InlineImagePathTest, NoPathOf263BytesWithATextWithoutTheName) {
  setDirectory(u"d\\");
  for (const uint64_t length : {261u, 262u, 263u, 264u, 265u, 5000u}) {
    expectLimit(std::string(length - 2 - 2, 't'), "n", length);
    expectLimit("t", std::string(length - 2 - 2, 'n'), length);
  }
  // Where even a part of the path is too long.
  for (const uint64_t length : {260u, 261u, 262u, 263u}) {
    EXPECT_EQ(make(std::string(length, 't').c_str(), "n"), StatusPathOverflow) << length;
  }
  expectLimit(std::string(259, 't'), "", 262);
  expectLimit(std::string(260, 't'), "", 263);
}

TEST_F(InlineImagePathTest, NoPathOf263BytesWithATextAroundTheName) {
  setDirectory(u"d\\");
  for (const uint64_t length : {261u, 262u, 263u, 264u, 265u, 5000u}) {
    expectLimit(std::string(length - 2 - 2, 'b') + "n", "n", length);
    expectLimit("n@" + std::string(length - 2 - 2, 't'), "n", length);
    expectLimit("bn@" + std::string(length - 2 - 3, 't'), "n", length);
    const std::string name(length - 2 - 1, 'n');
    expectLimit(name, name, length);
    const std::string shorter(length - 2 - 2, 'n');
    expectLimit(shorter + "@t", shorter, length);
  }
}

TEST_F(InlineImagePathTest, NoPathOf263BytesFromTheDirectory) {
  for (const uint64_t length : {260u, 261u, 262u, 263u}) {
    setDirectory(std::u16string(length - 1, u'd') + u"\\");
    expectLimit("", "", length);
    expectLimit("", "n", length + 1);
    expectLimit("n", "n", length + 2);
  }
  // Longer in UTF-8 than in units.
  setDirectory(std::u16string(87, u'\u20AC') + u"\\");
  expectLimit("", "", 262);
  expectLimit("", "n", 263);
  setDirectory(std::u16string(263, u'\u20AC'));
  expectLimit("", "n", 790);
}

// A directory without a terminator in its room is read no further.
TEST_F(InlineImagePathTest, AFullDirectoryIsTooLong) {
  std::fill(std::begin(directory_), std::end(directory_), u'd');
  EXPECT_EQ(make(nullptr, "n"), StatusPathOverflow);
}

TEST_F(InlineImagePathTest, ADirectoryThatIsNoText) {
  setDirectory(u"d\\");
  PlainKernelFailAt(PlainKernelFaultText, 1);
  EXPECT_EQ(make(nullptr, "n"), StatusPathToUtf8Failed);
}

TEST_F(InlineImagePathTest, MakesTheDirectoryOnceAndNamesItWithASeparator) {
  const test::TempDirectory temp;
  PlainKernelSetTempDirectory(temp.wide().c_str());
  EXPECT_EQ(make(nullptr, "a.png"), StatusOk);
  const std::u16string made = directory_;
  EXPECT_EQ(made.back(), u'\\');
  const std::string name = temp.listing();
  EXPECT_EQ(name.substr(0, 3), "pst");
  EXPECT_EQ(name.find('.'), std::string::npos);
  EXPECT_TRUE(std::filesystem::is_directory(temp.path() / name));
  EXPECT_EQ(std::string(path_), (temp.path() / name).string() + "\\a.png");

  EXPECT_EQ(make(nullptr, "b.png"), StatusOk);
  EXPECT_EQ(std::u16string(directory_), made);
  EXPECT_EQ(temp.listing(), name);
  EXPECT_TRUE(platform::RemoveEmptyDirectory(directory_));
  EXPECT_EQ(temp.listing(), "");
}

// A directory between words that nothing may write to.
struct GuardedDirectory {
  char16_t before[8];
  char16_t name[kPathCapacity];
  char16_t after[8];

  GuardedDirectory() {
    std::fill(std::begin(before), std::end(before), u'#');
    std::fill(std::begin(name), std::end(name), u'#');
    std::fill(std::begin(after), std::end(after), u'#');
    name[0] = u'\0';
  }

  void expectSoundGuards() const {
    EXPECT_EQ(std::u16string(std::begin(before), std::end(before)), u"########");
    EXPECT_EQ(std::u16string(std::begin(after), std::end(after)), u"########");
  }
};

TEST_F(InlineImagePathTest, AMadeNameThatFillsItsRoomGetsNoSeparator) {
  const test::TempDirectory temp;
  // The kernel puts a separator, "pst" and its unique characters after its directory; how many
  // those are, a name made first tells.
  PlainKernelSetTempDirectory(temp.wide().c_str());
  ASSERT_EQ(make(nullptr, "n"), StatusOk);
  const size_t own = std::u16string(directory_).size() - 1 - temp.wide().size();
  EXPECT_TRUE(platform::RemoveEmptyDirectory(directory_));

  for (const size_t length : {262u, 263u}) {
    const size_t filler = length - own - temp.wide().size() - 1;
    const std::filesystem::path parent = temp.path() / std::string(filler, 'd');
    std::filesystem::create_directory(parent);
    PlainKernelSetTempDirectory(parent.u16string().c_str());
    GuardedDirectory guarded;
    EXPECT_EQ(MakeInlineImagePath(path_, guarded.name, nullptr, "n"), StatusPathOverflow) << length;
    guarded.expectSoundGuards();
    // Either way the name has 263 units: the shorter one has room for the separator.
    ASSERT_EQ(guarded.name[263], u'\0') << length;
    const std::u16string made = guarded.name;
    ASSERT_EQ(made.size(), 263u) << length;
    EXPECT_EQ(made.back() == u'\\', length == 262) << length;
    EXPECT_EQ(made.substr(0, length - own + 4), (parent / "pst").u16string()) << length;
    EXPECT_TRUE(platform::RemoveEmptyDirectory(guarded.name)) << length;
    EXPECT_TRUE(std::filesystem::is_empty(parent)) << length;
  }
}

TEST_F(InlineImagePathTest, ANameThatCannotBeMadeLeavesTheDirectoryEmpty) {
  const test::TempDirectory temp;
  PlainKernelSetTempDirectory(temp.wide().c_str());
  PlainKernelFailAt(PlainKernelFaultOpen, 1);
  EXPECT_EQ(make(nullptr, "a.png"), StatusCreateFailed);
  EXPECT_EQ(directory_[0], u'\0');
  PlainKernelSetTempDirectory((temp.wide() + u"/missing").c_str());
  EXPECT_EQ(make(nullptr, "a.png"), StatusCreateFailed);
  EXPECT_EQ(directory_[0], u'\0');
  EXPECT_EQ(temp.listing(), "");
}

}  // namespace
}  // namespace tarn
