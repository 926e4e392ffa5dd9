// Characters in the names of images that no file has here; posix/ has the counterpart.
#include <gtest/gtest.h>

#include "Common/InlineImagesFixture.h"

namespace tarn::test {
namespace {

class FileNames : public FileRoute {
 protected:
  // The name gives no file, and the body stays.
  void expectNone(const char* name) {
    context_.contentId = nullptr;
    context_.name = name;
    EXPECT_EQ(rewrite(kImage), StatusCreateFailed) << name;
    EXPECT_EQ(files(), "") << name;
    EXPECT_EQ(record_.inlineFiles.length(), 0u) << name;
    EXPECT_EQ(body_.view(), "<img src=\"cid:a.png\">") << name;
  }
};

// A colon names a stream of a file, which would outlive the directory's list.
TEST_F(FileNames, AColonCreatesNone) {
  expectNone("x:y.png");
  expectNone("x.png:");
  expectNone("x\r:y\nz.png");
  expectNone("C:\\x.png");
}

// Line ends become underscores in the last component only.
TEST_F(FileNames, ALineEndBeforeASeparatorCreatesNone) {
  ASSERT_EQ(rewrite(kImage), StatusOk);
  const std::filesystem::path own = std::filesystem::path(record_.tempDirectory);
  std::filesystem::create_directory(own / "x_y");
  context_.contentId = nullptr;
  context_.name = "x_y/c\rd";
  EXPECT_EQ(rewrite(kImage), StatusOk);
  EXPECT_EQ(ReadWholeFile(own / "x_y" / "c_d"), kImage);
  context_.name = "x\ny/c\rd";
  EXPECT_EQ(rewrite(kImage), StatusCreateFailed);
  EXPECT_EQ(record_.inlineFiles.length(), 2u);
  std::filesystem::remove_all(own / "x_y");
}

TEST_F(FileNames, OtherCharactersThatNoNameHasCreateNone) {
  for (const char* const name :
       {"a\tb", "a<b", "a>b", "a\"b", "a|b", "a?b", "a*b", "NUL", "con.png"}) {
    expectNone(name);
  }
}

}  // namespace
}  // namespace tarn::test
