// What directories are only on Windows.
#include "Platform/Directories.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "support/TempDirectory.h"

namespace tarn::platform {
namespace {

// Callers count on it: whatever has the name, the system's answer is the same.
TEST(DirectoriesOfWindows, TellAFileOfThatNameAlike) {
  const test::TempDirectory root;
  root.write("file", "x");
  EXPECT_EQ(MakeDirectory((root.path() / "file").u16string().c_str()),
            DirectoryStatus::AlreadyExisted);
  EXPECT_TRUE(std::filesystem::is_regular_file(root.path() / "file"));
}

}  // namespace
}  // namespace tarn::platform
