// Names as only Windows has them.

#include <gtest/gtest.h>

#include <algorithm>

#include "console/Json.h"
#include "support/Environment.h"
#include "support/SampleMails.h"
#include "tarnmail/ExampleDocuments.h"
#include "tarnmail/TarnmailFixture.h"
#include "tarnmail/win32/LongDirectory.h"

namespace tarn::test {
namespace {

using Names = TarnmailTest;
namespace fs = std::filesystem;

TEST_F(Names, TakeBothSeparators) {
  fs::create_directory(directory_.path() / Path("n\u00E4me"));
  for (const char* file : {"n\u00E4me\\to.eml", "n\u00E4me/to.eml"}) {
    mail(kPlainMail, file);
    EXPECT_EQ(output({"document", file}), kPlainMailDocument + '\0');
    EXPECT_EQ(host::ParsedJson<nlohmann::json>(output({"info", file, "--json"}))["file"], file);
  }
}

TEST_F(Names, HaveNoCase) {
  mail(kPlainMail, "Mail.eml");
  EXPECT_EQ(output({"document", "mAIL.EML"}), kPlainMailDocument + '\0');
  EXPECT_EQ(failure(2, {"document", "Mail.eml", "-o", "MAIL.eml"}),
            "MAIL.eml: is the mail file itself");
}

TEST_F(Names, TakeDrivesAndLongForms) {
  mail(kPlainMail);
  const fs::path file = directory_.path() / "mail.eml";
  EXPECT_EQ(output({"document", Utf8(file)}), kPlainMailDocument + '\0');
  std::string slashes = Utf8(file);
  std::replace(slashes.begin(), slashes.end(), '\\', '/');
  EXPECT_EQ(output({"document", slashes}), kPlainMailDocument + '\0');
  EXPECT_EQ(output({"document", "\\\\?\\" + Utf8(file)}), kPlainMailDocument + '\0');
}

TEST_F(Names, TakeLongFormsForWhatIsWritten) {
  const std::string front = "\\\\?\\" + Utf8(fs::path(directory_.path()).make_preferred());
  const std::string file = Example("html-inline-image.eml");
  const std::string document = InlineImageDocument("chart.q1@example.com_chart.png");
  output({"document", Example("nested-attachments.eml"), "-o", front + "\\out"});
  EXPECT_EQ(ReadWholeFile(directory_.path() / "out"), NestedDocument() + std::string(2, '\0'));
  // The system's temporary directory is of no use here.
  environment_.emplace_back(kTempVariable, Utf8(temporary_.path() / "none"));
  for (const char* end : {"", "\\", "\\sub\\.."}) {
    EXPECT_EQ(output({"document", "--temp-files", "--temp", front + end, file}), document) << end;
    EXPECT_EQ(directory_.listing(), "out");
  }
  EXPECT_EQ(failure(2, {"document", "--temp", front + "\\none", file}),
            front + "\\none: no such directory");
  EXPECT_EQ(failure(2, {"document", "--temp", front + "\\out", file}),
            front + "\\out: is not a directory");
}

TEST_F(Names, MayBeLong) {
  const LongDirectory deep;
  const std::string front = Utf8(deep.path());
  deep.write(L"mail.eml", kPlainMail);
  EXPECT_EQ(output({"document", front + "\\mail.eml"}), kPlainMailDocument + '\0');
  EXPECT_EQ(failure(2, {"document", front + "/mail.eml", "-o", front + "\\.\\mail.eml"}),
            front + "\\.\\mail.eml: is the mail file itself");
  output({"document", front + "\\mail.eml", "-o", front + "\\out"});
  EXPECT_EQ(deep.read(L"out"), kPlainMailDocument + '\0');
  deep.remove(L"out");
  deep.remove(L"mail.eml");
}

// The filter has room for paths of temporary files of 260 units, on every system.
TEST_F(Names, OfTemporaryDirectoriesMayNotBeLong) {
  const LongDirectory deep;
  const std::string file = Example("html-inline-image.eml");
  EXPECT_EQ(failure(1, {"document", "--temp-files", "--temp", Utf8(deep.path()), file}),
            file + ": a temporary file or directory could not be made (-1490)");
}

// Two names of one file in the place of links, which need a right to make.
TEST_F(Names, MayBeHardLinks) {
  mail(kPlainMail);
  fs::create_hard_link(directory_.path() / "mail.eml", directory_.path() / "link");
  EXPECT_EQ(output({"document", "link"}), kPlainMailDocument + '\0');
  EXPECT_EQ(failure(2, {"document", "link", "-o", "mail.eml"}),
            "mail.eml: is the mail file itself");
}

}  // namespace
}  // namespace tarn::test
