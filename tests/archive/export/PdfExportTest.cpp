#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "archive/export/ItemExport.h"
#include "archive/writers/FakeItem.h"
#include "support/TempDirectory.h"

namespace tarn::archive {
namespace {

class NoLayout final : public PageLayout {
 public:
  Outcome<std::string> pdf(std::string_view, const pages::PdfProperties&) override {
    return Trouble{TroubleKind::TooLarge, "its layout takes longer than 50 s"};
  }
};

TEST(PdfExportTest, SaysWhyAnItemHasNoPdf) {
  const test::TempDirectory directory;
  FakeContent content;
  content.bodies.text = "Hello";
  FakeItem item(content);
  NoLayout layout;
  StringSink mails;
  StringSink texts;
  ExportChoices choices;
  choices.forms = {ExportForm::Text, ExportForm::Pdf};
  choices.catalogue = false;
  const ItemTarget target = {"box", "box/item", "box/messages.mbox", directory.path() / "1", mails,
                             texts, &layout};
  const Outcome<ItemResult> result = ExportItem(item, choices, target);
  ASSERT_TRUE(result.ok());
  const nlohmann::json row = nlohmann::json::parse(result->rows);
  EXPECT_EQ(row["status"], "partial");
  EXPECT_EQ(row["reason"], "it has no PDF: its layout takes longer than 50 s");
  ASSERT_EQ(row["files"].size(), 1U);
  EXPECT_EQ(row["files"][0]["role"], "text");
  EXPECT_TRUE(std::filesystem::exists(directory.path() / "1/message.txt"));
  EXPECT_FALSE(std::filesystem::exists(directory.path() / "1/message.pdf"));
}

}  // namespace
}  // namespace tarn::archive
