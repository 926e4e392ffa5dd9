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
  for (const char* const name : {"a\tb", "a<b", "a>b", "a\"b", "a|b", "a?b", "a*b", "a\x1F"}) {
    expectNone(name);
  }
}

TEST_F(FileNames, DevicesCreateNone) {
  for (const char* const name :
       {"NUL", "nul.txt", "con.png", "CON .png", "PRN", "AUX.a.b", "COM1", "com9.png",
        "COM\xC2\xB9.png", "LPT\xC2\xB3", "CONIN$", "conout$.png", "\\\\.\\NUL", "\\\\.\\pipe\\x",
        "\\\\.\\C:\\x.png", "x\\NUL"}) {
    expectNone(name);
  }
}

// The directory is put before every name, so that none begins at a drive, at a server or with the
// prefix of long paths.
TEST_F(FileNames, PlacesElsewhereCreateNone) {
  for (const char* const name :
       {"C:x.png", "c:\\x.png", "C:/x.png", "\\\\server\\share\\x.png", "//server/share/x.png",
        "\\\\?\\C:\\x.png", "\\\\?\\UNC\\server\\share\\x.png", "\\??\\C:\\x.png", "\\x\\y.png",
        "..\\x.png", "../x.png", "x\\..\\..\\y.png", "..", "...", ".. \\x.png", ". .\\x.png",
        "image.png::$DATA", "image.png:x", "::$INDEX_ALLOCATION"}) {
    expectNone(name);
  }
}

// The names that the system takes for one are one file, which goes at the end by whatever name.
TEST_F(FileNames, OfOneFileGiveOne) {
  for (const char* const name :
       {"image.png", "IMAGE.PNG", "image.png.", "image.png. ", "image.png  "}) {
    setBody("<img src=\"cid:a.png\">");
    context_.contentId = nullptr;
    context_.name = name;
    EXPECT_EQ(rewrite(kImage), StatusOk) << name;
    EXPECT_EQ(body_.view(), "<img src=\"" + std::string(name) + "\">");
    EXPECT_EQ(files(), "image.png") << name;
  }
}

TEST_F(FileNames, ThatAreTooLongCreateNone) {
  context_.contentId = nullptr;
  const std::string name(300, 'n');
  context_.name = name.c_str();
  EXPECT_EQ(rewrite(kImage), StatusPathOverflow);
  EXPECT_EQ(files(), "");
}

}  // namespace
}  // namespace tarn::test
