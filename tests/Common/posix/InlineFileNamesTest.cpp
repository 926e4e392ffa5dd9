// Characters in the names of images that other systems have no names for; win32/ has the
// counterpart.
#include <gtest/gtest.h>

#include "Common/InlineImagesFixture.h"

namespace tarn::test {
namespace {

TEST_F(FileRoute, LineEndsInFrontOfAColonStay) {
  context_.contentId = nullptr;
  context_.name = "x\r:y\nz.png";
  EXPECT_EQ(rewrite(kImage), StatusOk);
  EXPECT_EQ(body_.view(), "<img src=\"x\r:y_z.png\">");
  EXPECT_EQ(files(), "x\r:y_z.png");
  EXPECT_EQ(content("x\r:y_z.png"), kImage);
}

TEST_F(FileRoute, LineEndsInFrontOfASeparatorStay) {
  const std::filesystem::path sub = temp_.path() / "own" / "x\ny";
  std::filesystem::create_directories(sub);
  const std::u16string directory = (temp_.path() / "own" / "").u16string();
  directory.copy(record_.tempDirectory, directory.size());
  context_.contentId = nullptr;
  context_.name = "x\ny/c\rd";
  EXPECT_EQ(rewrite(kImage), StatusOk);
  EXPECT_EQ(test::ReadWholeFile(sub / "c_d"), kImage);
  // Without a "\" in the path all of it is the name.
  EXPECT_EQ(body_.view(), "<img src=\"" + temp_.path().string() + "/own/x\ny/c_d\">");
  KernelDeleteFileUtf8(record_.inlineFiles.data()[0]);
  std::filesystem::remove(sub);
}

TEST_F(FileRoute, NoColonSeparatesTheReplacement) {
  const std::u16string directory = (temp_.path() / "own").u16string() + u"\\";
  directory.copy(record_.tempDirectory, directory.size());
  std::filesystem::create_directories(temp_.path() / "own" / "x");
  context_.contentId = nullptr;
  context_.name = "x\\a:b\n.png";
  EXPECT_EQ(rewrite(kImage), StatusOk);
  EXPECT_EQ(body_.view(), "<img src=\"a:b_.png\">");
  KernelDeleteFileUtf8(record_.inlineFiles.data()[0]);
  std::filesystem::remove(temp_.path() / "own" / "x");
}

}  // namespace
}  // namespace tarn::test
