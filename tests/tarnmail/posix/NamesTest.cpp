// Names and directories as only POSIX has them. On Windows links need a right, and Wine makes none:
// win32/NamesTest.cpp has hard links in their place. What forbids to write into a directory there
// is its access list alone, which Wine as root does not follow.

#include <gtest/gtest.h>

#include "console/Json.h"
#include "support/SampleMails.h"
#include "tarnmail/TarnmailFixture.h"

namespace tarn::test {
namespace {

using Names = TarnmailTest;
namespace fs = std::filesystem;

TEST_F(Names, MayHaveQuotesAndLineEnds) {
  const std::string file = mail(kPlainMail, "a \"quoted\"\nn\u00E4me.eml");
  EXPECT_EQ(host::ParsedJson<nlohmann::json>(output({"info", file, "--json"}))["file"], file);
}

TEST_F(Names, MayHaveABackslash) {
  EXPECT_EQ(output({"document", mail(kPlainMail, "to\\bob.eml")}), kPlainMailDocument + '\0');
}

TEST_F(Names, MayBeLinks) {
  mail(kPlainMail);
  fs::create_symlink("mail.eml", directory_.path() / "link");
  EXPECT_EQ(output({"document", "link"}), kPlainMailDocument + '\0');
}

TEST_F(Names, OfADirectoryThatCannotBeWrittenTo) {
  fs::create_directory(directory_.path() / "sealed");
  fs::permissions(directory_.path() / "sealed", fs::perms::owner_read | fs::perms::owner_exec);
  const std::string file = Example("html-inline-image.eml");
  const std::string line =
      "no temporary folder can be made there: Permission denied; --temp names another place";
  EXPECT_EQ(failure(2, {"document", "--temp-files", "--temp", "sealed", file}),
            Utf8(fs::canonical(directory_.path() / "sealed")) + ": " + line);
  EXPECT_EQ(failure(2, {"info", "--temp", "sealed", file}),
            Utf8(fs::canonical(directory_.path() / "sealed")) + ": " + line);
  environment_.emplace_back("TMPDIR", Utf8(directory_.path() / "sealed"));
  EXPECT_EQ(failure(2, {"document", "--temp-files", file}),
            Utf8(directory_.path() / "sealed") + ": " + line);
}

// The filter is given text: it sees the file through a link in the folder of temporary files.
TEST_F(Names, MayBeNoText) {
  const std::string file = mail(kPlainMail, "caf\xE9 \xFF\xFE.eml");
  EXPECT_EQ(output({"document", file}), kPlainMailDocument + '\0');
  EXPECT_EQ(output({"attachments", file}), "No attachments\n");
  EXPECT_EQ(host::ParsedJson<nlohmann::json>(output({"info", file, "--json"}))["file"],
            "caf\uFFFD \uFFFD\uFFFD.eml");
  fs::create_directory(directory_.path() / "d\xE9");
  mail(kPlainMail, "d\xE9/mail.eml");
  EXPECT_EQ(output({"document", "d\xE9/mail.eml", "-o", "d\xE9/out"}), "");
  EXPECT_EQ(ReadWholeFile(directory_.path() / "d\xE9/out"), kPlainMailDocument + '\0');
  EXPECT_EQ(failure(2, {"document", "d\xE9/mail.eml", "-o", "d\xE9/../d\xE9/mail.eml"}),
            "d\\xe9/../d\\xe9/mail.eml: is the mail file itself");
  EXPECT_EQ(failure(2, {"document", "--temp", "d\xE9", file}), "d\\xe9: the name is not UTF-8");
}

TEST_F(Names, OfTheTemporaryDirectoryMayBeLinks) {
  fs::create_directory(directory_.path() / "there");
  fs::create_directory_symlink("there", directory_.path() / "link");
  const std::string file = Example("html-inline-image.eml");
  EXPECT_EQ(output({"info", "--temp", "link", file}), output({"info", file}));
  EXPECT_EQ(directory_.listing(), "link there");
}

}  // namespace
}  // namespace tarn::test
