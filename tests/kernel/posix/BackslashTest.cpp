#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "FilesFixture.h"

namespace tarn::test {
namespace {

// "\\" is an ordinary character of names here, and a separator for those who write it as one.
TEST_F(Files, ABackslashIsPartOfTheNameWhereSuchAFileExists) {
  std::filesystem::create_directory(NativePathOf("dir"));
  Put("dir\\name", "as it is");
  Put("dir/name", "in the directory");
  EXPECT_EQ(ReadAll(Open("dir\\name")), "as it is");
  std::filesystem::remove(NativePathOf("dir\\name"));
  EXPECT_EQ(ReadAll(Open("dir\\name")), "in the directory");
}

TEST_F(Files, ADirectoryNamedWithABackslashIsFoundFirst) {
  std::filesystem::create_directory(NativePathOf("dir"));
  std::filesystem::create_directory(NativePathOf("dir\\name"));
  Put("dir/name", "in the directory");
  EXPECT_EQ(Open("dir\\name"), KERNEL_BAD_HANDLE);
}

TEST_F(Files, AFileInThePlaceOfADirectoryHoldsNothingOfThatName) {
  std::filesystem::create_directories(NativePathOf("dir/F"));
  Put("dir\\F", "a plain file");
  Put("dir/F/x", "in the directory");
  EXPECT_EQ(ReadAll(Open("dir\\F/x")), "in the directory");
  EXPECT_EQ(ReadAll(Open("dir\\F")), "a plain file");
}

TEST_F(Files, AFileToCreateTakesTheNameAsItStandsWhereItsDirectoryExists) {
  std::filesystem::create_directory(NativePathOf("dir"));
  KernelFileClose(Create("dir\\name"));
  EXPECT_TRUE(Exists("dir\\name"));
  EXPECT_FALSE(Exists("dir/name"));
}

TEST_F(Files, AFileToCreateReadsBackslashesAsSeparatorsOtherwise) {
  std::filesystem::create_directories(NativePathOf("dir/sub"));
  const uint64_t handle = Create("dir\\sub/name");
  ASSERT_NE(handle, KERNEL_BAD_HANDLE);
  KernelFileClose(handle);
  EXPECT_TRUE(Exists("dir/sub/name"));
  EXPECT_FALSE(Exists("dir\\sub"));

  KernelFileClose(Create("dir\\sub\\other/../second"));
  EXPECT_FALSE(Exists("dir/sub/second"));  // "other" exists in neither spelling
}

TEST_F(Files, AFileToCreateWhoseNameIsTooLongStaysOneNameWhereItsDirectoryExists) {
  const std::string directory(200, 'd');
  std::filesystem::create_directory(NativePathOf(directory));
  EXPECT_EQ(Create(directory + "\\" + std::string(200, 'n')), KERNEL_BAD_HANDLE);
  EXPECT_TRUE(std::filesystem::is_empty(NativePathOf(directory)));
}

TEST_F(Files, BackslashesAreSeparatorsWhenThePathIsTooLongAsOneName) {
  std::string directory;
  for (int i = 0; i < 4; ++i) {
    directory += std::string(90, static_cast<char>('a' + i));
    std::filesystem::create_directory(NativePathOf(directory));
    directory += '/';
  }
  Put(directory + "name", "deep");
  std::string path = directory + "name";
  std::replace(path.begin(), path.end(), '/', '\\');
  EXPECT_EQ(ReadAll(Open(path)), "deep");
  path.replace(path.size() - 5, 5, "/made");
  KernelFileClose(Create(path));
  EXPECT_TRUE(Exists(directory + "made"));
}

}  // namespace
}  // namespace tarn::test
