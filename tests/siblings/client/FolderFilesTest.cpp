// The files beside a document: those of its folder, by plain names, and nothing else.

#include "siblings/client/FolderFiles.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "ScriptedHelperFixture.h"
#include "siblings/client/PageHelper.h"
#include "support/TempDirectory.h"

namespace tarn::pages {
namespace {

namespace fs = std::filesystem;

class FolderFilesTest : public test::ScriptedHelperTest {
 protected:
  FolderFilesTest() {
    folder_.write("image.png", "PNG");
    folder_.write("secret", "secret");
    fs::create_directory(folder_.path() / "mail");
    folder_.write("mail/image.png", "image of the mail");
    folder_.write("mail/empty", "");
    folder_.write("mail/\xC3\xBC.png", "umlaut");
    fs::create_symlink("image.png", folder_.path() / "mail" / "link");
    fs::create_symlink("/etc/passwd", folder_.path() / "mail" / "passwd");
    fs::create_directory(folder_.path() / "mail" / "folder");
    mkfifo((folder_.path() / "mail" / "pipe").c_str(), 0600);
  }

  std::string answerTo(const std::string& name, const std::string& way = "ask") {
    DocumentOnPaper asking = document("");
    const std::string script = "layOut " + way + " " + name;
    asking.bytes = script;
    asking.folder = folder_.path() / "mail";
    const std::string log = logOf(helper_, asking);
    return log.substr(log.rfind(": ") + 2);
  }

  const test::TempDirectory folder_;
  PageHelper helper_{options()};
};

TEST_F(FolderFilesTest, AreRead) {
  EXPECT_EQ(answerTo("image.png"), "\"image of the mail\" 17\n");
  EXPECT_EQ(answerTo("empty"), "\"\" 0\n");
  EXPECT_EQ(answerTo("\xC3\xBC.png"), "\"umlaut\" 6\n");
}

TEST_F(FolderFilesTest, AreNoOthers) {
  for (const char* const name : {"none", "../secret", "../mail/image.png", "./image.png",
                                 "folder/../image.png", "/etc/passwd", ".", "..", "/", "link",
                                 "passwd", "folder", "pipe", "image.png%", "image.png%.txt", "%"}) {
    SCOPED_TRACE(name);
    EXPECT_EQ(answerTo(name), "none\n");
  }
  EXPECT_EQ(answerTo(""), "none\n");
  EXPECT_EQ(answerTo(std::string(5'000, 'x')), "none\n");
}

TEST_F(FolderFilesTest, NothingOpenComesWithARefusal) {
  EXPECT_EQ(answerTo("image.png", "receive"), "found, a file\n");
  EXPECT_EQ(answerTo("none", "receive"), "not found, no file\n");
}

TEST_F(FolderFilesTest, AreNoneWithoutAFolder) {
  EXPECT_EQ(logOf(helper_, "layOut ask image.png"), "ask image.png: none\n");
  DocumentOnPaper asking = document("layOut ask image.png");
  asking.folder = folder_.path() / "no such folder";
  EXPECT_EQ(logOf(helper_, asking), "ask image.png: none\n");
  asking.folder = folder_.path() / "image.png";
  EXPECT_EQ(logOf(helper_, asking), "ask image.png: none\n");
}

TEST_F(FolderFilesTest, GoUpToALimit) {
  const fs::path file = folder_.path() / "mail" / "large";
  folder_.write("mail/large", "large");
  fs::resize_file(file, uint64_t{64} << 20);
  EXPECT_EQ(answerTo("large"), "\"large" + std::string(15, '\0') + "\" 67108864\n");
  fs::resize_file(file, (uint64_t{64} << 20) + 1);
  EXPECT_EQ(answerTo("large"), "none\n");
}

TEST_F(FolderFilesTest, ComeAsCopiesThatNobodyChanges) {
  const FolderFiles files(folder_.path() / "mail");
  const auto copy = files.copyOf("image.png");
  ASSERT_TRUE(copy);
  EXPECT_EQ(write(copy->file.get(), "x", 1), -1);
  EXPECT_EQ(ftruncate(copy->file.get(), 0), -1);
  // Neither does the copy lead back to the file.
  const std::string path = "/proc/self/fd/" + std::to_string(copy->file.get());
  EXPECT_NE(fs::read_symlink(path), folder_.path() / "mail" / "image.png");
}

TEST_F(FolderFilesTest, MayBeLinkedToAsAFolder) {
  fs::create_directory_symlink(folder_.path() / "mail", folder_.path() / "alias");
  const FolderFiles files(folder_.path() / "alias");
  EXPECT_TRUE(files.copyOf("image.png"));
}

}  // namespace
}  // namespace tarn::pages
