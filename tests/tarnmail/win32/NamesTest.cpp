// Names as only Windows has them.

#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "support/SampleMails.h"
#include "tarnmail/TarnmailFixture.h"

namespace tarn::test {
namespace {

using Names = TarnmailTest;
namespace fs = std::filesystem;

TEST_F(Names, TakeBothSeparators) {
  fs::create_directory(directory_.path() / Path("n\u00E4me"));
  for (const char* file : {"n\u00E4me\\to.eml", "n\u00E4me/to.eml"}) {
    mail(kPlainMail, file);
    EXPECT_EQ(output({"document", file}), kPlainMailDocument + '\0');
    EXPECT_EQ(nlohmann::json::parse(output({"info", file, "--json"}))["file"], file);
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

}  // namespace
}  // namespace tarn::test
