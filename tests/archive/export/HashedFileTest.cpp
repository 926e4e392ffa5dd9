#include "archive/export/HashedFile.h"

#include <gtest/gtest.h>

#include "support/TempDirectory.h"

namespace tarn::archive {
namespace {

constexpr const char* kSumOfAbc =
    "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";  // FIPS 180-4

TEST(Sha256Test, TellsTheSumSoFar) {
  Sha256 sum;
  sum.add("a");
  (void)sum.digest();
  sum.add("bc");
  EXPECT_EQ(sum.digest(), kSumOfAbc);
}

TEST(Sha256Test, TellsTextsApart) {
  Sha256 one;
  one.addText("ab");
  one.addText("c");
  Sha256 other;
  other.addText("a");
  other.addText("bc");
  EXPECT_NE(one.digest(), other.digest());
}

TEST(IsInMemoryTest, LooksAtPlacesInTheFile) {
  const test::TempDirectory directory;
  const std::filesystem::path path = directory.write("file", std::string(1'000'000, 'x'));
  EXPECT_TRUE(IsInMemory(path));
  EXPECT_TRUE(IsInMemory(directory.write("byte", "x")));
  // A hole is not there before it is read.
  std::filesystem::resize_file(path, 100'000'000);
  EXPECT_FALSE(IsInMemory(path));
  EXPECT_FALSE(IsInMemory(directory.write("empty", "")));
  EXPECT_FALSE(IsInMemory(directory.path()));
  EXPECT_FALSE(IsInMemory(directory.path() / "missing"));
}

TEST(HashedFileTest, TellsWhatItHasWritten) {
  const test::TempDirectory directory;
  const std::filesystem::path path = directory.path() / "file";
  Outcome<std::unique_ptr<HashedFile>> file = HashedFile::create(path);
  ASSERT_TRUE(file.ok());
  EXPECT_FALSE((*file)->write("ab").has_value());
  EXPECT_FALSE((*file)->write("c").has_value());
  const Outcome<FileSum> sum = (*file)->finish();
  ASSERT_TRUE(sum.ok());
  EXPECT_EQ(*sum, (FileSum{3, kSumOfAbc}));
  EXPECT_EQ(test::ReadWholeFile(path), "abc");
}

TEST(HashedFileTest, WritesLongRunsAndManyPiecesAlike) {
  const test::TempDirectory directory;
  const std::string all(1'000'000, 'x');
  Outcome<std::unique_ptr<HashedFile>> whole = HashedFile::create(directory.path() / "whole");
  Outcome<std::unique_ptr<HashedFile>> pieces = HashedFile::create(directory.path() / "pieces");
  ASSERT_TRUE(whole.ok() && pieces.ok());
  EXPECT_FALSE((*whole)->write(all).has_value());
  for (size_t at = 0; at < all.size(); at += 1000) {
    EXPECT_FALSE((*pieces)->write(all.substr(at, 1000)).has_value());
  }
  EXPECT_EQ(*(*whole)->finish(), *(*pieces)->finish());
  EXPECT_EQ(test::ReadWholeFile(directory.path() / "pieces"), all);
  EXPECT_EQ(test::ReadWholeFile(directory.path() / "whole"), all);
}

TEST(HashedFileTest, ReplacesNothing) {
  const test::TempDirectory directory;
  const std::filesystem::path path = directory.write("file", "there");
  const Outcome<std::unique_ptr<HashedFile>> file = HashedFile::create(path);
  ASSERT_FALSE(file.ok());
  EXPECT_EQ(file.trouble().reason, path.string() + ": File exists");
  EXPECT_EQ(test::ReadWholeFile(path), "there");
}

TEST(HashedFileTest, SaysWhenNothingMoreIsTaken) {
  Outcome<std::unique_ptr<GrowingFile>> full = GrowingFile::open("/dev/full");
  ASSERT_TRUE(full.ok());
  const std::optional<Trouble> trouble = (*full)->append("x");
  ASSERT_TRUE(trouble.has_value());
  EXPECT_EQ(trouble->reason, "/dev/full: No space left on device");
}

TEST(GrowingFileTest, GrowsIsCutAndIsRead) {
  const test::TempDirectory directory;
  const std::filesystem::path path = directory.write("file", "abc");
  Outcome<std::unique_ptr<GrowingFile>> file = GrowingFile::open(path);
  ASSERT_TRUE(file.ok());
  EXPECT_EQ((*file)->size(), 3u);
  EXPECT_FALSE((*file)->append("def").has_value());
  EXPECT_EQ(*(*file)->read(2, 3), "cde");
  EXPECT_FALSE((*file)->cutTo(4).has_value());
  EXPECT_FALSE((*file)->append("x").has_value());
  EXPECT_FALSE((*file)->sync().has_value());
  EXPECT_EQ(test::ReadWholeFile(path), "abcdx");
  EXPECT_FALSE((*file)->read(4, 2).ok());
}

TEST(SumOfFileTest, TakesRegularFilesAlone) {
  const test::TempDirectory directory;
  const std::filesystem::path path = directory.write("file", "abc");
  EXPECT_EQ(*SumOfFile(path), (FileSum{3, kSumOfAbc}));
  std::filesystem::create_symlink(path, directory.path() / "link");
  EXPECT_FALSE(SumOfFile(directory.path() / "link").ok());
  EXPECT_EQ(SumOfFile(directory.path()).trouble().reason,
            directory.path().string() + ": is no regular file");
  EXPECT_EQ(SumOfFile(directory.path() / "none").trouble().kind, TroubleKind::Missing);
}

}  // namespace
}  // namespace tarn::archive
